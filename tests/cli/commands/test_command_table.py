# SPDX-License-Identifier: GPL-2.0-or-later
"""Nodes and commands as the daemon installs them: those of the table, all of them, in their order, and no others.

Scripts and operators rely on each word, and of commands that begin alike the one that is installed first gives the
help."""
import re
from collections import Counter
from dataclasses import replace

import pytest
from alarm_words import GROUPS
from calls import of
from command_table import ALARM_LOG, COMMANDS, CONFIG, DIAGNOSE, FAN, GPON, OWN_NODES, XGPON, Command

FAN_COMMANDS = 6
# As a session is told to stand in them.
STANDING = {CONFIG: "config", GPON: "gpon 0/1", XGPON: "xgpon 0/1", DIAGNOSE: "diagnose"}


def name_of(command):
    return f"{command.name}-{command.node}"


@pytest.fixture(scope="module")
def olt(make_olt):
    return make_olt().start(trace=True)


@pytest.fixture(scope="module")
def own_calls(olt):
    """What the daemon installs itself; libfrr's own come before."""
    calls = of(olt.trace(), "frr_init|install_node|install_element")
    return calls[[call.op for call in calls].index("frr_init") + 1 :]


@pytest.fixture(scope="module")
def installed(own_calls):
    found = []
    for call in of(own_calls, "install_element"):
        values = call.values
        *help_lines, rest = values["doc"].split("\n")
        assert rest == "", f"the help of {values['cmd']} does not end with a line feed"
        found.append(Command(int(values["node"]), values["cmd"], values["str"], tuple(help_lines), values["hidden"] == "1"))
    return found


@pytest.mark.parametrize("expected", COMMANDS, ids=map(name_of, COMMANDS))
def test_a_command_is_installed_once_with_its_node_syntax_visibility_and_help(installed, expected):
    (found,) = [command for command in installed if name_of(command) == name_of(expected)]
    assert found == (expected if expected.help else replace(expected, help=found.help))


def test_the_commands_come_in_the_order_of_the_table_and_there_are_no_others(installed):
    assert list(map(name_of, installed)) == list(map(name_of, COMMANDS))


def test_one_command_in_two_nodes_is_one_element(own_calls):
    """115 elements that are offered and 25 hidden ones are installed 150 times."""
    elements = [call.values for call in of(own_calls, "install_element")]
    hidden = {values["cmd"]: values["hidden"] == "1" for values in elements}
    assert Counter(hidden.values()) == {False: 115, True: 25}
    assert Counter(int(values["node"]) for values in elements) == {CONFIG: 91, DIAGNOSE: 41, GPON: 9, XGPON: 9}


def test_every_word_has_its_help(installed):
    """A line for each word and each choice, or libfrr has none to show.  Those of the test record run together."""
    for command in installed:
        if command.name != "alarm_log_debug_cmd":
            assert len(command.help) == len(re.split(r"[ |]", command.syntax)) and all(command.help), command


def test_the_test_records_help_runs_together_on_one_line(installed):
    (command,) = [command for command in installed if command.name == "alarm_log_debug_cmd"]
    assert command.help[:2] == ("alarm-log", "Debugging functions") and len(command.help) == 3
    assert command.help[2].count("Sending an alarm") == 17


def test_no_command_lacks_help_but_the_test_records(olt):
    """libfrr notes each command whose help has too few lines."""
    complaints = [line for line in (olt.log() + olt.stderr()).splitlines() if "docstring" in line]
    assert len(complaints) <= 1 and all("alarm-log debug send" in line for line in complaints)


def test_the_nodes_are_made_before_the_first_command_of_theirs(own_calls):
    steps = []
    for call in own_calls:
        values = call.values
        if call.op == "install_node":
            steps.append((int(values["node"]), values["name"], values["prompt"]))
        elif int(values["node"]) != DIAGNOSE:  # the registers' commands, before the alarm log's
            steps.append("command")
    assert steps[: FAN_COMMANDS + 4] == [
        (FAN, "fan", ""),
        *["command"] * FAN_COMMANDS,
        (ALARM_LOG, "alarm-log", ""),
        (GPON, "gpon", "%s(config-gpon-%d/%d)# "),
        (XGPON, "xgpon", "%s(config-xgpon-%d/%d)# "),
    ]
    assert set(steps[FAN_COMMANDS + 4 :]) == {"command"}


def test_the_daemon_makes_its_own_nodes_only_the_diagnostics_node_is_the_librarys(own_calls):
    nodes = [(int(call.values["node"]), call.values["name"]) for call in of(own_calls, "install_node")]
    assert nodes == OWN_NODES


def test_the_interface_nodes_lie_under_configuration_and_the_alarm_log_node_under_none(own_calls):
    parents = {int(call.values["node"]): int(call.values["parent"]) for call in of(own_calls, "install_node")}
    assert (parents[GPON], parents[XGPON], parents[ALARM_LOG], parents[FAN]) == (CONFIG, CONFIG, 0, 0)


@pytest.mark.parametrize("node", STANDING, ids=STANDING.values())
def test_visible_commands_are_listed_where_they_belong_and_hidden_ones_are_not(olt, node):
    text, rc = olt.run("list", STANDING[node])
    assert rc == 0
    listed = [" ".join(line.split()) for line in text.splitlines()]
    of_node = [command for command in COMMANDS if command.node == node]
    assert [command.syntax for command in of_node if not command.hidden and command.syntax not in listed] == []
    assert [command.syntax for command in of_node if command.hidden and command.syntax in listed] == []


@pytest.mark.parametrize("words", ["clear sysl", "alarm-log d", "alarm"])
def test_hidden_commands_are_not_offered_by_help(olt, words):
    with olt.telnet() as session:
        session.run("enable")
        session.run("configure terminal")
        shown = session.type(words + "?")
    assert "syslog" not in shown and "debug" not in shown.replace(words, "")


@pytest.mark.parametrize("line", ["clear syslog", "clear syslog level info", "alarm-log debug send id 1 message x", "reload"])
def test_hidden_commands_typed_in_full_work(olt, line):
    assert olt.run(line)[1] == 0


@pytest.mark.parametrize("group, klass", GROUPS)
def test_every_name_of_a_group_is_offered_by_help(olt, group, klass):
    with olt.telnet() as session:
        session.run("enable")
        session.run("configure terminal")
        offered = set(session.type(f"alarm-log {klass} ?").split())
    assert set(GROUPS[group, klass]) <= offered


@pytest.mark.parametrize("node", ["view", "enable"])
def test_commands_of_configuration_are_unknown_outside_it(olt, node):
    for words in ["show alarm-log", "show alarm-log head 1", "clear alarm-log", "clear syslog", "show version json"]:
        assert olt.run(words, node)[1] != 0
