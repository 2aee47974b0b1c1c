# SPDX-License-Identifier: GPL-2.0-or-later
"""Every command of every node is run on a daemon: it answers as to a right line and leaves the daemon in order.

The commands come from the running daemon, so that one which is added is run, too (every_command.py)."""
import re
from collections import Counter

import pytest
from every_command import (LEAVES_OPEN, NODES, NOT_SANITIZED, REFUSED, SLOW, commands, descriptors, lines_of,
                           wrong_lines_of)
from syntax import typed
from olt import BUILD, SANITIZER_REPORTS, wait_until
from vty import AMBIGUOUS, DEADLINE_S, INCOMPLETE, NO_MATCH, SUCCESS, SessionClosed

NOT_UNDERSTOOD = {NO_MATCH: "unknown", AMBIGUOUS: "ambiguous", INCOMPLETE: "incomplete"}


@pytest.fixture
def populated_olt(fresh_olt):
    """An OLT with modules of all kinds."""
    fresh_olt.populate()
    return fresh_olt


def complaint_of(olt, node, line):
    """What is wrong with the answer to a line, if anything."""
    start, way, _ = NODES[node]
    allowed = sum(seconds for pattern, seconds, _ in SLOW if re.search(pattern, line))
    with olt.vty(start, timeout=DEADLINE_S + 10 * allowed) as session:
        if way:
            assert session.run(way)[1] == SUCCESS
        try:
            text, status = session.run(line)
        except SessionClosed:
            return "the session is closed"
        except TimeoutError:
            return "no answer"
    if status in NOT_UNDERSTOOD:
        return f"{NOT_UNDERSTOOD[status]}: {text!r}"
    if status != SUCCESS and not any(re.search(pattern, line) for pattern, _ in REFUSED):
        return f"refused, {status}: {text!r}"
    return None


def test_every_node_is_one_that_these_tests_can_stand_in(fresh_olt):
    assert set(commands(fresh_olt)) == set(NODES)


def run_every_command(olt, node, refusals=True):
    """Runs every command of a node, and asserts that each leaves the daemon in order.  refusals: they count, too."""
    lines = [typed(words) for syntax in commands(olt)[node] for words in lines_of(syntax)]
    if BUILD.name == "asan":
        lines = [line for line in lines if not any(re.fullmatch(pattern, line) for pattern, _ in NOT_SANITIZED)]
    complaints, left_open = [], Counter()
    with olt.telnet() as bystander:
        pid, before = olt.pid, descriptors(olt)
        for line in lines:
            complaint = complaint_of(olt, node, line)
            if complaint and (refusals or not complaint.startswith("refused")):
                complaints.append(f"{line}: {complaint}")
            assert olt.daemon.poll() is None, f"the daemon ended with {olt.daemon.returncode} at {line!r}"
            wait_until(lambda: olt.sem_value("board") == 1, f"the board is free after {line!r}")
            bystander.run("! " + line)  # a comment: nothing but a prompt comes back
            left_open.update(target for pattern, target, _ in LEAVES_OPEN if re.fullmatch(pattern, line))
    assert not complaints, "\n".join(complaints)
    undo = NODES[node][2]
    if undo:
        assert olt.run(undo) == ("", SUCCESS)
    stays = before + left_open
    wait_until(lambda: descriptors(olt) <= stays, f"all but {left_open} is closed, not {descriptors(olt) - stays},")
    assert olt.daemon_pid() == pid
    assert not any(report in olt.stderr() for report in SANITIZER_REPORTS), olt.stderr()


@pytest.mark.parametrize("node", NODES)
def test_every_command_is_understood_and_leaves_the_daemon_in_order(populated_olt, node):
    run_every_command(populated_olt, node)


@pytest.mark.slow  # the sensor is asked for three seconds
@pytest.mark.parametrize("node", ["config", "gpon", "xgpon", "diagnose"])
def test_every_command_leaves_the_daemon_in_order_when_no_part_of_the_board_answers(populated_olt, node):
    populated_olt.boardctl("fault", "add", "any", "errno=5")
    run_every_command(populated_olt, node, refusals=False)


@pytest.mark.parametrize("node", NODES)
def test_a_number_an_address_or_a_port_that_does_not_fit_is_rejected_everywhere(olt, node):
    lines = {line for syntax in commands(olt)[node] for line in wrong_lines_of(syntax)}
    with olt.vty(NODES[node][0]) as session:
        way = NODES[node][1]
        if way:
            assert session.run(way)[1] == SUCCESS
        taken = [line for line in sorted(lines) if session.run(line)[1] not in NOT_UNDERSTOOD]
    assert not taken


@pytest.mark.parametrize("node", ["view", "enable"])
@pytest.mark.parametrize("line", ["exit", "quit"])
def test_a_session_of_a_terminal_ends_where_there_is_nothing_above(olt, node, line):
    """On the socket, where the box's shell goes on, the same lines do nothing."""
    with olt.telnet() as session:
        if node == "enable":
            session.run("enable")
        session.send(line + "\r")
        with pytest.raises(SessionClosed):
            session.expect(rb"[>#] $")
