# SPDX-License-Identifier: GPL-2.0-or-later
"""Whole sessions as an operator sees them on the terminal, prompt by prompt: the files in golden/.

The telnet server makes CR LF of every line feed, so carriage returns are left out of the comparison.
"""
import re
from pathlib import Path

from alarm_store import AlarmStore, Record

GOLDEN = Path(__file__).parent
PROMPT = re.compile(r"(olt(?:\([^)]*\))?[>#] )(.*)")


def steps(text):
    """Prompt, what is typed, and what is shown, one after another."""
    found = []
    for line in text.splitlines():
        match = PROMPT.fullmatch(line)
        if match:
            found.append((match[1], match[2], []))
        else:
            found[-1][2].append(line)
    return found


def replay(olt, name):
    *typed, last = steps((GOLDEN / name).read_text())
    with olt.telnet() as session:
        for prompt, command, expected in typed:
            assert session.prompt == prompt
            shown = session.run(command).replace("\r", "").splitlines()
            assert shown == expected, command
        assert session.prompt == last[0]


def test_nodes_version_and_monitor_switches(olt):
    replay(olt, "basics.txt")


def test_alarm_records_listed_and_cleared(olt):
    store = AlarmStore(olt.pid)
    store.chain([
        Record("power 1 is down", 4, 77, (2026, 3, 2, 9, 41, 17)),
        Record("board is 71.5 C", 5, 102, (2026, 3, 2, 9, 41, 19)),
        Record("reset by command", 1, 29, (2026, 3, 2, 9, 41, 23)),
        Record("power 1 is up", 4, 77, (2026, 3, 2, 9, 42, 0)),
    ])
    replay(olt, "alarm_log.txt")


def test_modules_that_a_new_board_comes_with(olt):
    # Of the externally calibrated module, byte 95 is the check code (0xCC) and the low half of an offset of 0.8125.
    olt.populate()
    replay(olt, "transceiver.txt")


def test_identification_of_those_modules_and_the_choice_of_their_pin(olt):
    olt.populate()
    replay(olt, "identification.txt")
