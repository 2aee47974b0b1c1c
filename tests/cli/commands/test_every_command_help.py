# SPDX-License-Identifier: GPL-2.0-or-later
"""`?` and TAB at every place of every command of every node, as a person at a terminal types them.

The commands come from the running daemon, so that one which is added is looked at, too (every_command.py)."""
import re

import pytest
from every_command import NODES, commands, lines_of
from syntax import typed

RUB_OUT = "\x15"
MARK = "~"  # is echoed where the cursor is


@pytest.fixture(scope="module")
def by_node(olt):
    return commands(olt)


@pytest.fixture
def terminal(olt):
    with olt.telnet() as session:
        session.run("terminal length 0")
        yield session


def stand_in(session, node):
    start, way, _ = NODES[node]
    steps = {"view": [], "enable": ["enable"], "config": ["enable", "configure terminal"],
             "diagnose": ["enable", "diagnose"]}[start]
    for step in [*steps, *([way] if way else [])]:
        session.run(step)


def offered_commands(session, syntaxes):
    """Those of a node's commands that are not hidden."""
    listed = {line.strip() for line in session.run("list").splitlines()}
    assert listed and listed <= set(syntaxes)
    return listed


def on_screen(text):
    """What a terminal shows of a text, which goes back to write over what it has written."""
    lines, column = [[]], 0
    for character in text:
        if character == "\n":
            lines.append([])
            column = 0
        elif character == "\b":
            column -= 1
        elif character != "\r":
            lines[-1][column : column + 1] = character
            column += 1
    return "\n".join("".join(line) for line in lines)


def press(session, line, key):
    """What the terminal shows when a key is pressed behind a line, up to the cursor; the line is not run."""
    session.send(line + key + MARK + RUB_OUT + "\r")
    shown = session.expect(rb"\r\n" + re.escape(session.prompt.encode()) + rb"[^\n]*" + MARK.encode()
                           + rb"[^\n]*\r\n" + re.escape(session.prompt.encode()) + b"$")
    return on_screen(shown[: shown.index(MARK)])


def places(syntaxes, visible):
    """Beginnings of lines, each with the words that can follow; and whether help offers those."""
    found = {}
    for syntax in syntaxes:
        for words in lines_of(syntax):
            for place in range(len(words) + 1):
                nexts = found.setdefault(typed(words[:place]), {})
                word = words[place] if place < len(words) else None
                nexts[word] = nexts.get(word, False) or syntax in visible
    return found


@pytest.mark.parametrize("node", NODES)
def test_help_offers_at_every_place_what_can_follow(terminal, by_node, node):
    stand_in(terminal, node)
    missing = []
    for beginning, nexts in places(by_node[node], offered_commands(terminal, by_node[node])).items():
        shown = press(terminal, f"{beginning} " if beginning else "", "?")
        for word, offered in nexts.items():
            what = word.shown if word else "<cr>"
            if offered and not re.search(rf"\n  {re.escape(what)}( |\n)", shown):
                missing.append(f"{beginning} ? does not offer {what}: {shown!r}")
    assert not missing, "\n".join(missing)


@pytest.mark.parametrize("node", NODES)
def test_tab_completes_every_keyword(terminal, by_node, node):
    stand_in(terminal, node)
    missing = []
    for beginning, nexts in places(by_node[node], offered_commands(terminal, by_node[node])).items():
        for word, offered in nexts.items():
            if not word or not word.keyword:
                continue
            part = f"{beginning} {word.text[:-1] or word.text}".lstrip()
            shown = press(terminal, part, "\t")
            if offered and not re.search(rf"[ \n]{re.escape(word.text)}( |\n|$)", shown):
                missing.append(f"{part} TAB does not give {word.text}: {shown!r}")
    assert not missing, "\n".join(missing)
