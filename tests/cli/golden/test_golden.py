# SPDX-License-Identifier: GPL-2.0-or-later
"""Whole sessions as an operator sees them on the terminal, prompt by prompt: the *.txt files beside this one.

A transcript is written by hand, from what has to be shown.  Its lines are those of a terminal, and these:

    # ...                    a remark, at the start of the file
    $ boardctl WORD...       done to the board meanwhile, before the next prompt
    $ modules                the modules that a new OLT comes with are plugged
    $ records                four records are in the alarm store
    {time} {date} {number} {any}  in a shown line: a time of day, a date, a number, whatever there is up to the line's end
    {lines}                  a shown line alone: any number of lines

The telnet server makes CR LF of every line feed, so carriage returns are left out of the comparison.
"""
import re
from pathlib import Path

import pytest
from alarm_store import AlarmStore, Record
from command_table import COMMANDS
from syntax import pattern

GOLDEN = Path(__file__).parent
TRANSCRIPTS = sorted(path.name for path in GOLDEN.glob("*.txt"))
PROMPT = re.compile(r"(olt(?:\([^)]*\))?[>#] )(.*)")
MASKS = {"{time}": r"\d\d:\d\d:\d\d", "{date}": r"\d{4}[-/]\d\d[-/]\d\d", "{number}": r"-?\d+(?:\.\d+)?", "{any}": r".*",
         "{lines}\n": r"(?:.*\n)*"}


def steps(text):
    """Prompt, what is typed, what is shown, and what is done to the board before it, one after another."""
    found, meanwhile = [], []
    for line in text.splitlines():
        match = PROMPT.fullmatch(line)
        if match:
            found.append((match[1], match[2], [], meanwhile))
            meanwhile = []
        elif line.startswith("$ "):
            meanwhile.append(line.split()[1:])
        elif found:
            found[-1][2].append(line)
        else:
            assert line.startswith("# "), line
    return found


def typed_lines(name):
    return [typed for _, typed, _, _ in steps((GOLDEN / name).read_text())]


def do(olt, words):
    match words:
        case ["boardctl", *arguments]:
            olt.boardctl(*arguments)
        case ["modules"]:
            olt.populate()
        case ["records"]:
            AlarmStore(olt.pid).chain([
                Record("power 1 is down", 4, 77, (2026, 3, 2, 9, 41, 17)),
                Record("board is 71.5 C", 5, 102, (2026, 3, 2, 9, 41, 19)),
                Record("reset by command", 1, 29, (2026, 3, 2, 9, 41, 23)),
                Record("power 1 is up", 4, 77, (2026, 3, 2, 9, 42, 0)),
            ])
        case _:
            raise AssertionError(f"nothing is known of {words}")


def matches(shown, expected):
    """Whether the lines shown are those expected, masks filled."""
    text = "".join(line + "\n" for line in expected)
    parts = re.split("(" + "|".join(map(re.escape, MASKS)) + ")", text)
    wanted = "".join(MASKS.get(part, re.escape(part)) for part in parts)
    return re.fullmatch(wanted, "".join(line + "\n" for line in shown)) is not None


@pytest.mark.parametrize("name", TRANSCRIPTS)
def test_a_session_goes_as_written(fresh_olt, name):
    *typed, last = steps((GOLDEN / name).read_text())
    with fresh_olt.telnet() as session:
        for prompt, command, expected, meanwhile in typed:
            for words in meanwhile:
                do(fresh_olt, words)
            assert session.prompt == prompt
            shown = session.run(command).replace("\r", "").splitlines()
            if not matches(shown, expected):
                assert shown == expected, command
        assert session.prompt == last[0]


@pytest.mark.parametrize("shown, expected, same", [
    (["a", "b"], ["a", "b"], True),
    (["a", "b"], ["a"], False),
    (["a.b"], ["axb"], False),
    (["axb"], ["a.b"], False),
    (["at 09:41:17 on 2026/03/02"], ["at {time} on {date}"], True),
    (["at 9:41"], ["at {time}"], False),
    (["-1.50 V"], ["{number} V"], True),
    (["x V"], ["{number} V"], False),
    (["a", "", "b", "c"], ["a", "{lines}", "c"], True),
    (["a", "b"], ["a", "{lines}", "c"], False),
    (["{", "}"], ["{", "}"], True),
])
def test_masks_stand_for_what_they_say_and_for_nothing_else(shown, expected, same):
    assert matches(shown, expected) == same


@pytest.mark.parametrize("family", dict.fromkeys(command.family for command in COMMANDS))
def test_every_family_of_commands_is_in_a_transcript(family):
    """Most of its commands that are offered, that is."""
    lines = {line for name in TRANSCRIPTS for line in typed_lines(name)}
    offered = {command.syntax for command in COMMANDS if command.family == family and not command.hidden}
    missing = {syntax for syntax in offered if not any(pattern(syntax).fullmatch(line) for line in lines)}
    assert len(missing) <= len(offered) // 2, missing
