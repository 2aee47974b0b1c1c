# SPDX-License-Identifier: GPL-2.0-or-later
"""The whole list of commands that the daemon installs: node, grammar and visibility, in their order.

Scripts and operators rely on each word, and of commands that begin alike the one that is installed first gives the
help."""
from alarm_words import GROUPS, THRESHOLD_ALARMS

CONFIG, FAN, GPON, XGPON, DIAGNOSE, ALARM_LOG = 4, 97, 124, 125, 133, 155
VISIBLE, HIDDEN = False, True

# Nodes that the daemon makes, in their order; it only installs into the others.
OWN_NODES = [(FAN, "fan"), (ALARM_LOG, "alarm-log"), (GPON, "gpon"), (XGPON, "xgpon")]

LEVEL = "<debug|info|notice|warning|major|critical|alert|emerg>"
ACTION = "<print|record|trap|remote|all>"
SWITCH = "<enable|disable>"
BOARD_ALARM = "<temp-high|temp-low|cpu-usage-high|mem-usage-high>"
PON_ALARM = ("<pon-txpower-high|pon-txpower-low|pon-txbias-high|pon-txbias-low|pon-vcc-high|pon-vcc-low"
             "|pon-temp-high|pon-temp-low>")
OPTICAL_NAME = "<tx_power_high|tx_power_low|tx_bias_high|tx_bias_low|vcc_high|vcc_low|temp_high|temp_low>"
SERVER = "<A.B.C.D|X:X::X:X>"


def in_node(node, *grammars, hidden=VISIBLE):
    return [(node, grammar, hidden) for grammar in grammars]


def config(*grammars):
    return in_node(CONFIG, *grammars)


def diagnose(*grammars):
    return in_node(DIAGNOSE, *grammars)


def hidden(grammar, node=CONFIG):
    return in_node(node, grammar, hidden=HIDDEN)


def of_ports(grammar, visibility=VISIBLE):
    """In both interface nodes, one after the other."""
    return [(GPON, grammar, visibility), (XGPON, grammar, visibility)]


def of_group(group, klass):
    """Action, older action and level of the alarms or events of a group."""
    names = GROUPS[group, klass]
    levelled = "|".join(name for name in names if name not in THRESHOLD_ALARMS)
    return [
        *config(f"alarm-log {klass} <{'|'.join(names)}> {SWITCH} {ACTION}"),
        *hidden(f"{klass} <{levelled}> {ACTION} {SWITCH}"),
        *config(f"alarm-log {klass} <{levelled}> level {LEVEL}"),
    ]


FANS = config(
    "fan temperature (20-80)",
    "fan mode <auto|open|close>",
    "fan speed <low|medium|high|auto>",
    "show temperature [json]",
    "show fan [json]",
    "show running-config fan",
)

REGISTERS = diagnose(
    "phy read PHY_ID_HEX REG_HEX [<ieee|rdb|clause45 DEVAD>]",
    "phy write PHY_ID_HEX REG_HEX VALUE_HEX",
    "phy info PHY_ID_HEX",
    "phy reset PHY_ID_HEX",
    "phy dump PHY_ID_HEX [<ieee|rdb|clause45>]",
    "[no] debug phy",
    "i2c (0-3) read SLAVE_ADDR_HEX REG_ADDR_HEX [LENGTH_DEC]",
    "i2c (0-3) write SLAVE_ADDR_HEX REG_ADDR_HEX VALUE_HEX",
    "[no] debug i2c",
)

ALARM_RECORDS = [
    *config(
        "interface gpon <S/P>",
        "interface xgpon <S/P>",
        f"show alarm-log [level {LEVEL}]",
        "show alarm-log head (1-1000)",
        "show alarm-log tail (1-1000)",
        f"clear alarm-log [level {LEVEL}]",
    ),
    *hidden(f"clear syslog [level {LEVEL}]"),
]

LOG_SERVERS_AND_FLASH = [
    *config(f"alarm-log remote server <ipv4|ipv6> {SWITCH}"),
    *config("alarm-log remote server ipv4 <A.B.C.D> port (1-65535)"),
    *hidden("syslog server ip <A.B.C.D> port (1-65535)"),
    *config("no alarm-log remote server ipv4"),
    *hidden("no syslog server ip"),
    *config("alarm-log remote server ipv6 X:X::X:X port (1-65535)"),
    *hidden("syslog server ipv6 X:X::X:X port (1-65535)"),
    *config("no alarm-log remote server ipv6"),
    *hidden("no syslog server ipv6"),
    *config("show alarm-log remote server [ipv4|ipv6]", f"alarm-log flash level {LEVEL}"),
    *hidden(f"syslog flash level {LEVEL}"),
    *config("show alarm-log flash level", "save alarm-log flash", "clear alarm-log flash"),
]

ALARM_ACTIONS = [
    *config(
        "show alarm-log <alarm|event|pon|onu|global|route|all> configuration",
        "show alarm-log configuration name WORD",
        "show alarm-log configuration id (0-65535)",
    ),
    *(command for group in ("global", "pon", "onu", "routing") for klass in ("alarm", "event")
      for command in of_group(group, klass)),
    *config(f"alarm-log <alarm|event> all {SWITCH} {ACTION}"),
    *hidden(f"<alarm|event> all {ACTION} {SWITCH}"),
    *hidden(f"<alarm|event> name WORD {ACTION} {SWITCH}"),
    *hidden(f"alarm-event config_all {ACTION} {SWITCH}"),
    *hidden(f"alarm-event default {ACTION}"),
]

THRESHOLDS = [
    *config(f"alarm-log threshold {BOARD_ALARM} enable WORD WORD", f"alarm-log threshold {BOARD_ALARM} disable"),
    *hidden(f"alarm {BOARD_ALARM} {ACTION} enable WORD WORD"),
    *hidden(f"alarm {BOARD_ALARM} {ACTION} disable"),
    *config("show running-config alarm-log"),
    *hidden("alarm-log debug send id (0-512) [uplink-port (1-128)] [pon (1-32)] [onu (1-256)] [onu-port (1-256)]"
            " [mac MAC] [state (1-512)] message MESSAGE"),
    *of_ports(f"alarm-log threshold {PON_ALARM} enable WORD WORD"),
    *of_ports(f"alarm-log threshold {PON_ALARM} disable"),
    *of_ports(f"alarm pon optical {OPTICAL_NAME} disable", HIDDEN),
    *of_ports(f"alarm pon optical {OPTICAL_NAME} enable WORD WORD", HIDDEN),
    *of_ports(f"no alarm-log threshold {PON_ALARM} enable WORD WORD"),
    *of_ports("show alarm-log threshold configuration [json]"),
]

BASICS = [
    *diagnose("show debugging", "pon reset", "system gpio reset"),
    *config("show version [json]"),
    *diagnose(
        "[no] fan monitor",
        "[no] usb monitor",
        "[no] power monitor",
        "[no] transceiver monitor",
        "show diag monitor",
    ),
]

BOARD = [
    *config("reboot"),
    *hidden("reload"),
    *diagnose(
        "system led on",
        "usb led <on|off>",
        "pon led <on|off> [(1-8)]",
        "pon power <on|off> [(1-8)]",
        "pon tx <on|off> [(1-8)]",
        "sfp power <on|off> [(1-6)]",
        "show pon led",
        "show pon power",
        "show pon tx",
        "show sfp power",
        "show optical transceiver [interface <gigabitEthernet|gpon> <S/P>]",
        "show optical transceiver interface xgpon <S/P>",
    ),
    *config(
        "show optical transceiver interface <gigabitEthernet|gpon> <S/P>",
        "show optical transceiver interface xgpon <S/P>",
    ),
    *of_ports("show pon optical transceiver"),
    *diagnose("fan mode <open|close>", "fan speed <low|medium|high>", "show logic version", "show device type"),
    *config("show sys power [json]"),
    *diagnose(
        "show sys power [json]",
        f"cpld upgrade tftp FILENAME {SERVER}",
        f"cpld upgrade ftp FILENAME {SERVER} USERNAME PASSWORD",
        "cpld upgrade usb FILENAME",
        "cpld restore",
    ),
    *hidden("cpld erase", DIAGNOSE),
    *diagnose("[no] debug cpld"),
]

SYSTEM = config(
    "show top",
    "show task [running]",
    "show sys ps",
    "show sys arp",
    "show ipv6 neighbors",
    "show sys cpu",
    "show sys cpu-usage [json]",
    "show sys mem [json]",
    "show ipcs",
    "show netstat",
    "show iptables",
    "show ip6tables",
    "time set year (2000-2099) month (1-12) day (1-31) hour (0-23) minute (0-59) second (0-59)",
    "show time [json]",
    "show sys running-time [json]",
)

TRANSCEIVERS = [
    *config(
        "show idprom interface <gigabitEthernet|gpon> <S/P> [<vendor|manufacture>]",
        "show idprom interface xgpon <S/P> [<vendor|manufacture>]",
        "show transceiver [json]",
        "show transceiver <detail|diagnosis>",
    ),
    *of_ports("transceiver rssi-txdis <rssi|txdis>"),
    *of_ports("show transceiver rssi-txdis"),
    *diagnose("[no] debug transceiver"),
]

COMMANDS = [*FANS, *REGISTERS, *ALARM_RECORDS, *LOG_SERVERS_AND_FLASH, *ALARM_ACTIONS, *THRESHOLDS, *BASICS, *BOARD,
            *SYSTEM, *TRANSCEIVERS]
