# SPDX-License-Identifier: GPL-2.0-or-later
"""Nodes and commands as the daemon installs them: place, grammar, visibility, help, order."""
from dataclasses import dataclass

import pytest
from calls import of

CONFIG, GPON, XGPON, DIAGNOSE, ALARM_LOG = 4, 124, 125, 133, 155
LEVELS = "<debug|info|notice|warning|major|critical|alert|emerg>"
LEVEL_HELP = [f"Specify log {level} level." for level in LEVELS.strip("<>").split("|")]
SHOW = "Show running system information"
NO = "Negate a command or set its defaults"
POSITION = "PON interface number,slot:<0>,port:<1-x>,x is 2,4,or 8."
DEBUG_HELP = (
    "Sending an alarmSending an alarm idSending an alarm id numberSending an alarm uplink-port"
    "Sending an alarm uplink-port numberSending an alarm ponSending an alarm pon numberSending an alarm onu"
    "Sending an alarm onu numberSending an alarm onu-portSending an alarm onu-port numberSending an alarm mac"
    "Sending an alarm mac stringSending an alarm stateSending an alarm state-idSending an alarm message"
    "Sending an alarm message string"
)


@dataclass(frozen=True)
class Command:
    node: int
    name: str
    grammar: str
    help: tuple[str, ...]
    hidden: bool = False


def command(node, name, grammar, *help_lines, hidden=False):
    return Command(node, f"{name}_cmd", grammar, help_lines, hidden)


# In the order in which they are installed.
COMMANDS = [
    command(CONFIG, "gpon_config_interface", "interface gpon <S/P>", "Interface information", "Specify gpon module.", POSITION),
    command(CONFIG, "xgpon_config_interface", "interface xgpon <S/P>", "Interface information", "Specify xgpon module.", POSITION),
    command(CONFIG, "show_alarm_log", f"show alarm-log [level {LEVELS}]",
            "Show information.", "Alarm log.", "Specify log level.", *LEVEL_HELP),
    command(CONFIG, "show_alarm_log_head", "show alarm-log head (1-1000)",
            "Show information.", "Alarm log.", "Oldest log.", "Specify oldest log count."),
    command(CONFIG, "show_alarm_log_tail", "show alarm-log tail (1-1000)",
            "Show information.", "Alarm log.", "Latest log.", "Specify latest log count."),
    command(CONFIG, "clear_alarm_log", f"clear alarm-log [level {LEVELS}]",
            "Show information.", "Alarm log.", "Specify log level.", *LEVEL_HELP),
    command(CONFIG, "clear_syslog", f"clear syslog [level {LEVELS}]",
            "Show information.", "Alarm log.", "Specify log level.", *LEVEL_HELP, hidden=True),
    command(CONFIG, "alarm_log_debug",
            "alarm-log debug send id (0-512) [uplink-port (1-128)] [pon (1-32)] [onu (1-256)] [onu-port (1-256)]"
            " [mac MAC] [state (1-512)] message MESSAGE",
            "alarm-log", "Debugging functions", DEBUG_HELP, hidden=True),
    command(DIAGNOSE, "show_debugging", "show debugging", SHOW, "State of each debugging option."),
    command(DIAGNOSE, "pon_reset", "pon reset", "pon", "reset pon chip"),
    command(DIAGNOSE, "gpio_system_reset", "system gpio reset", "system", "gpio", "reset system"),
    command(CONFIG, "show_version", "show version [json]", SHOW, "show version information", "JavaScript Object Notation"),
    command(DIAGNOSE, "fan_monitor_set", "[no] fan monitor", NO, "fan", "monitor"),
    command(DIAGNOSE, "usb_monitor_set", "[no] usb monitor", NO, "usb", "monitor"),
    command(DIAGNOSE, "power_monitor_set", "[no] power monitor", NO, "power", "power monitor"),
    command(DIAGNOSE, "transceiver_monitor_set", "[no] transceiver monitor", NO, "transceiver", "transceiver monitor"),
    command(DIAGNOSE, "show_diag_monitor", "show diag monitor", SHOW, "diag", "monitor information"),
    command(CONFIG, "transceiver_show", "show transceiver [json]", SHOW, "Transceiver information.", "JavaScript Object Notation"),
    command(CONFIG, "transceiver_detail_show", "show transceiver <detail|diagnosis>", SHOW, "Transceiver information.",
            "Show interface transceiver detail", "Show interface transceiver diagnosis"),
]
IDS = [entry.name for entry in COMMANDS]


def daemons_own(olt):
    calls = olt.trace()
    frame = [call.op for call in calls].index("frr_init")
    return calls[frame + 1 :]


@pytest.fixture(scope="module")
def installed(olt):
    """Every command that the daemon installed, in its order; libfrr's own come before."""
    found = []
    for call in of(daemons_own(olt), "install_element"):
        values = call.values
        *help_lines, rest = values["doc"].split("\n")
        assert rest == "", f"the help of {values['cmd']} does not end with a line feed"
        found.append(Command(int(values["node"]), values["cmd"], values["str"], tuple(help_lines), values["hidden"] == "1"))
    return found


@pytest.fixture(scope="module")
def olt(make_olt):
    return make_olt().start(trace=True)


@pytest.mark.parametrize("expected", COMMANDS, ids=IDS)
def test_a_command_is_installed_once_with_its_node_grammar_visibility_and_help(installed, expected):
    assert [entry for entry in installed if entry.name == expected.name] == [expected]


def test_commands_come_in_their_order(installed):
    names = {entry.name for entry in COMMANDS}
    assert [entry.name for entry in installed if entry.name in names] == IDS


def test_the_nodes_are_made_before_the_first_command_of_theirs(olt):
    own = {entry.name for entry in COMMANDS}
    steps = []
    for call in of(daemons_own(olt), "install_node|install_element"):
        values = call.values
        if call.op == "install_node" and int(values["node"]) in (ALARM_LOG, GPON, XGPON):
            steps.append((int(values["node"]), values["name"], values["prompt"]))
        elif values.get("cmd") in own:
            steps.append("command")
    assert steps[:3] == [
        (ALARM_LOG, "alarm-log", ""),
        (GPON, "gpon", "%s(config-gpon-%d/%d)# "),
        (XGPON, "xgpon", "%s(config-xgpon-%d/%d)# "),
    ]
    assert set(steps[3:]) == {"command"}


def test_the_interface_nodes_lie_under_configuration_and_the_alarm_log_node_under_none(olt):
    parents = {int(call.values["node"]): int(call.values["parent"]) for call in of(daemons_own(olt), "install_node")}
    assert (parents[GPON], parents[XGPON], parents[ALARM_LOG]) == (CONFIG, CONFIG, 0)


def test_the_diagnostics_node_is_the_librarys(olt):
    assert DIAGNOSE not in {int(call.values["node"]) for call in of(daemons_own(olt), "install_node")}


def test_the_debug_commands_help_runs_together_on_one_line(olt):
    doc = next(call.values["doc"] for call in of(daemons_own(olt), "install_element")
               if call.values["cmd"] == "alarm_log_debug_cmd")
    assert doc == f"alarm-log\nDebugging functions\n{DEBUG_HELP}\n"
    assert DEBUG_HELP.count("Sending an alarm") == 17


def listed(olt, node):
    text, rc = olt.run("list", node)
    assert rc == 0
    return [" ".join(line.split()) for line in text.splitlines()]


NODE_WORDS = {CONFIG: "config", DIAGNOSE: "diagnose"}


@pytest.mark.parametrize("expected", [entry for entry in COMMANDS if not entry.hidden],
                         ids=[entry.name for entry in COMMANDS if not entry.hidden])
def test_visible_commands_are_listed_where_they_belong(olt, expected):
    assert expected.grammar in listed(olt, NODE_WORDS[expected.node])


@pytest.mark.parametrize("words", ["clear sysl", "alarm-log d", "alarm"])
def test_hidden_commands_are_not_offered_by_help(olt, words):
    with olt.telnet() as session:
        session.run("enable")
        session.run("configure terminal")
        shown = session.type(words + "?")
    assert "syslog" not in shown and "debug" not in shown.replace(words, "")


@pytest.mark.parametrize("command_line", ["clear syslog", "clear syslog level info", "alarm-log debug send id 1 message x"])
def test_hidden_commands_typed_in_full_work(olt, command_line):
    assert olt.run(command_line)[1] == 0


@pytest.mark.parametrize("node", ["view", "enable"])
def test_commands_of_configuration_are_unknown_outside_it(olt, node):
    for words in ["show alarm-log", "show alarm-log head 1", "clear alarm-log", "clear syslog", "show version json"]:
        assert olt.run(words, node)[1] != 0
