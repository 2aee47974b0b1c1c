# SPDX-License-Identifier: GPL-2.0-or-later
"""Nodes and commands as the daemon installs them: place, grammar, visibility, help, order."""
from dataclasses import dataclass

import pytest
from alarm_words import GROUPS, THRESHOLD_ALARMS
from calls import of

CONFIG, FAN, GPON, XGPON, DIAGNOSE, ALARM_LOG = 4, 97, 124, 125, 133, 155
FAN_COMMANDS = 6
LEVELS = "<debug|info|notice|warning|major|critical|alert|emerg>"
LEVEL_HELP = [f"Specify log {level} level." for level in LEVELS.strip("<>").split("|")]
ACTION = "<print|record|trap|remote|all>"
ACTION_HELP = ["Print in the daemon's log.", "Record in the alarm log.", "Send a trap.", "Send to the remote log servers.",
               "All four actions."]
SWITCH = "<enable|disable>"
SWITCH_HELP = ["Enable the action.", "Disable the action."]
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


def server_commands(family, old_word, address):
    """Those that set and delete the log server of an address family; old_word names it in the older forms."""
    server, sever = f"Specify remote server {family}.", f"Specify remote sever {family}."
    what, remote, port = "Specify alarm log information.", "Specify remote sever.", "Specify remote server port."
    off = "Disable alarm log remote server."
    return [
        command(CONFIG, f"config_alarm_log_server_{family}", f"alarm-log remote server {family} {address} port (1-65535)",
                what, remote, remote, server, server, port, port),
        command(CONFIG, f"config_syslog_server_{family}", f"syslog server {old_word} {address} port (1-65535)",
                what, remote, server, server, port, port, hidden=True),
        command(CONFIG, f"delete_alarm_log_server_{family}", f"no alarm-log remote server {family}",
                off, what, remote, remote, sever),
        command(CONFIG, f"delete_syslog_server_{family}", f"no syslog server {old_word}",
                off, what, remote, sever, hidden=True),
    ]


def one_alarm_commands(group, klass):
    """Those on one alarm or event of a group: action, older action, level."""
    names = GROUPS[group, klass]
    levelled = [name for name in names if name not in THRESHOLD_ALARMS]

    def words(offered):
        return f"{klass} <{'|'.join(offered)}>"

    def help_of(offered):
        return [f"Configuration of {klass}s.", *(f"Specify {name} {klass}." for name in offered)]

    return [
        command(CONFIG, f"alarm_log_{group}_{klass}_action", f"alarm-log {words(names)} {SWITCH} {ACTION}",
                "Alarm log.", *help_of(names), *SWITCH_HELP, *ACTION_HELP),
        command(CONFIG, f"alarm_{group}_{klass}_action", f"{words(levelled)} {ACTION} {SWITCH}",
                *help_of(levelled), *ACTION_HELP, *SWITCH_HELP, hidden=True),
        command(CONFIG, f"alarm_log_{group}_{klass}_level", f"alarm-log {words(levelled)} level {LEVELS}",
                "Alarm log.", *help_of(levelled), "Specify log level.", *LEVEL_HELP),
    ]


CLASS_HELP = ["Configuration of alarms.", "Configuration of events."]

# In the order in which they are installed.
COMMANDS = [
    command(CONFIG, "fan_temperature_ctrl", "fan temperature (20-80)", "Specify olt fan management.",
            "Specify the temperature the fans to work.", "Specify temperature value."),
    command(CONFIG, "fan_mode_ctrl", "fan mode <auto|open|close>", "Specify olt fan management.", "Specify fan working mode.",
            "Specify auto mode.", "Open the fan.", "Close the fan."),
    command(CONFIG, "fan_speed_ctrl", "fan speed <low|medium|high|auto>", "fan config.", "fan speed.", "fan speed low.",
            "fan speed medium.", "fan speed high.", "fan speed auto."),
    command(CONFIG, "show_temperature", "show temperature [json]", SHOW, "Device temperature", "JavaScript Object Notation"),
    command(CONFIG, "show_fan", "show fan [json]", SHOW, "Specify fan information", "JavaScript Object Notation"),
    command(CONFIG, "show_fan_running_config", "show running-config fan", SHOW,
            "running configuration (same as write terminal)", "fan"),
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
    command(CONFIG, "enable_alarm_log_server", f"alarm-log remote server <ipv4|ipv6> {SWITCH}",
            "Specify alarm log information.", "Specify remote sever.", "Specify remote sever.", "Specify remote server ipv4.",
            "Specify remote server ipv6.", "Specify remote server enable.", "Specify remote server disable."),
    *server_commands("ipv4", "ip", "<A.B.C.D>"),
    *server_commands("ipv6", "ipv6", "X:X::X:X"),
    command(CONFIG, "show_alarm_log_server", "show alarm-log remote server [ipv4|ipv6]",
            "Show information.", "Specify alarm log information.", "Specify remote sever.", "Specify remote sever.",
            "Specify remote sever ipv4.", "Specify remote sever ipv6."),
    command(CONFIG, "config_alarm_log_flash", f"alarm-log flash level {LEVELS}",
            "Alarm log.", "Specify log flash.", "Specify log level.", *LEVEL_HELP),
    command(CONFIG, "config_syslog_flash", f"syslog flash level {LEVELS}",
            "Alarm log.", "Specify log flash.", "Specify log level.", *LEVEL_HELP, hidden=True),
    command(CONFIG, "show_alarm_log_flash", "show alarm-log flash level",
            "Show information.", "Alarm log.", "Specify log flash.", "Specify log level."),
    command(CONFIG, "save_alarm_log_flash", "save alarm-log flash", "Save log to flash.", "Alarm log.", "Specify log flash."),
    command(CONFIG, "clear_alarm_log_flash", "clear alarm-log flash",
            "Clear log from flash.", "Alarm log.", "Specify log flash."),
    command(CONFIG, "show_alarm_log_cfg", "show alarm-log <alarm|event|pon|onu|global|route|all> configuration",
            "Show information.", "Alarm log.", "Every alarm.", "Every event.", "Alarms and events of PON ports.",
            "Alarms and events of ONUs.", "Alarms and events of the whole device.", "Alarms and events of routing.",
            "Every alarm and event.", "Configuration of alarms and events."),
    command(CONFIG, "show_alarm_log_cfg_name", "show alarm-log configuration name WORD",
            "Show information.", "Alarm log.", "Configuration of alarms and events.", "Specify by name.",
            "Name of the alarm or event."),
    command(CONFIG, "show_alarm_log_cfg_id", "show alarm-log configuration id (0-65535)",
            "Show information.", "Alarm log.", "Configuration of alarms and events.", "Specify by id.",
            "Id of the alarm or event."),
    *(one for group in ("global", "pon", "onu", "routing") for klass in ("alarm", "event")
      for one in one_alarm_commands(group, klass)),
    command(CONFIG, "alarm_log_all_action", f"alarm-log <alarm|event> all {SWITCH} {ACTION}",
            "Alarm log.", *CLASS_HELP, "Every alarm or event of the class.", *SWITCH_HELP, *ACTION_HELP),
    command(CONFIG, "alarm_all_action", f"<alarm|event> all {ACTION} {SWITCH}",
            *CLASS_HELP, "Every alarm or event of the class.", *ACTION_HELP, *SWITCH_HELP, hidden=True),
    command(CONFIG, "alarm_name_action", f"<alarm|event> name WORD {ACTION} {SWITCH}",
            *CLASS_HELP, "Specify by name.", "Name of the alarm or event.", *ACTION_HELP, *SWITCH_HELP, hidden=True),
    command(CONFIG, "alarm_event_all_action", f"alarm-event config_all {ACTION} {SWITCH}",
            "Configuration of alarms and events.", "Every alarm and event.", *ACTION_HELP, *SWITCH_HELP, hidden=True),
    command(CONFIG, "alarm_event_default_action", f"alarm-event default {ACTION}",
            "Configuration of alarms and events.", "Set to the defaults.", *ACTION_HELP, hidden=True),
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
    command(CONFIG, "show_top", "show top", SHOW, "show system task"),
    command(CONFIG, "show_task", "show task [running]", SHOW, "show system task", "running system taskk"),
    command(CONFIG, "show_sys_ps", "show sys ps", SHOW, "Show sys", "Show system process and pthread information."),
    command(CONFIG, "show_sys_arp", "show sys arp", SHOW, "Show sys", "Show system arp information."),
    command(CONFIG, "show_ipv6_neigh_table", "show ipv6 neighbors", SHOW, "IPv6 information",
            "Show IPv6 neighbor cache entries."),
    command(CONFIG, "show_sys_cpu", "show sys cpu", SHOW, "Show sys", "Show system cpu information."),
    command(CONFIG, "show_sys_cpu_usage", "show sys cpu-usage [json]", SHOW, "Show sys", "Show cpu performance statistics.",
            "JavaScript Object Notation"),
    command(CONFIG, "show_sys_mem", "show sys mem [json]", SHOW, "Show sys", "Show system memory information.",
            "JavaScript Object Notation"),
    command(CONFIG, "show_sys_ipcs", "show ipcs", SHOW, "Show information on IPC facilities."),
    command(CONFIG, "show_sys_netstat", "show netstat", SHOW, "Show all sockets information."),
    command(CONFIG, "show_sys_iptables", "show iptables", SHOW, "Show iptable rules information."),
    command(CONFIG, "show_sys_ip6tables", "show ip6tables", SHOW, "Show ip6table rules information."),
    command(CONFIG, "config_time",
            "time set year (2000-2099) month (1-12) day (1-31) hour (0-23) minute (0-59) second (0-59)",
            "Specify system time configuration.", "Set system time.",
            *(text for unit in ("year", "month", "day", "hour", "minute", "second")
              for text in (f"Specify {unit}.", f"Specify {unit} value" + (" from 2000." if unit == "year" else ".")))),
    command(CONFIG, "show_time", "show time [json]", SHOW, "Specify system time.", "JavaScript Object Notation"),
    command(CONFIG, "show_sys_running_time", "show sys running-time [json]", SHOW, "Show sys", "Show system run time.",
            "JavaScript Object Notation"),
    command(CONFIG, "interface_idprom_show", "show idprom interface <gigabitEthernet|gpon> <S/P> [<vendor|manufacture>]", SHOW,
            "show IDPROMs for interfaces.", "Specify an interface for idprom display.", "GigabitEthernet IEEE 802.3z",
            "GPON information", POSITION, "Vendor information", "Manufacture information"),
    command(CONFIG, "interface_xgpon_idprom_show", "show idprom interface xgpon <S/P> [<vendor|manufacture>]", SHOW,
            "show IDPROMs for interfaces.", "Specify an interface for idprom display.", "XGPON information", POSITION,
            "Vendor information", "Manufacture information"),
    command(CONFIG, "transceiver_show", "show transceiver [json]", SHOW, "Transceiver information.", "JavaScript Object Notation"),
    command(CONFIG, "transceiver_detail_show", "show transceiver <detail|diagnosis>", SHOW, "Transceiver information.",
            "Show interface transceiver detail", "Show interface transceiver diagnosis"),
    command(DIAGNOSE, "debug_transceiver", "[no] debug transceiver", NO, "Debugging functions", "Transceiver DEBUG"),
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
        if call.op == "install_node" and int(values["node"]) in (FAN, ALARM_LOG, GPON, XGPON):
            steps.append((int(values["node"]), values["name"], values["prompt"]))
        elif values.get("cmd") in own:
            steps.append("command")
    assert steps[: FAN_COMMANDS + 1] == [(FAN, "fan", ""), *["command"] * FAN_COMMANDS]
    assert steps[FAN_COMMANDS + 1 : FAN_COMMANDS + 4] == [
        (ALARM_LOG, "alarm-log", ""),
        (GPON, "gpon", "%s(config-gpon-%d/%d)# "),
        (XGPON, "xgpon", "%s(config-xgpon-%d/%d)# "),
    ]
    assert set(steps[FAN_COMMANDS + 4 :]) == {"command"}


def test_the_interface_nodes_lie_under_configuration_and_the_alarm_log_node_under_none(olt):
    parents = {int(call.values["node"]): int(call.values["parent"]) for call in of(daemons_own(olt), "install_node")}
    assert (parents[GPON], parents[XGPON], parents[ALARM_LOG], parents[FAN]) == (CONFIG, CONFIG, 0, 0)


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


@pytest.mark.parametrize("group, klass", GROUPS)
def test_every_name_of_a_group_is_offered_by_help(olt, group, klass):
    with olt.telnet() as session:
        session.run("enable")
        session.run("configure terminal")
        offered = set(session.type(f"alarm-log {klass} ?").split())
    assert set(GROUPS[group, klass]) <= offered


def test_no_command_lacks_help_but_the_test_records(olt):
    """libfrr notes each command whose help has too few lines."""
    complaints = [line for line in (olt.log() + olt.stderr()).splitlines() if "docstring" in line]
    assert len(complaints) <= 1 and all("alarm-log debug send" in line for line in complaints)


@pytest.mark.parametrize("node", ["view", "enable"])
def test_commands_of_configuration_are_unknown_outside_it(olt, node):
    for words in ["show alarm-log", "show alarm-log head 1", "clear alarm-log", "clear syslog", "show version json"]:
        assert olt.run(words, node)[1] != 0
