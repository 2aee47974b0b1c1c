# SPDX-License-Identifier: GPL-2.0-or-later
"""The board's commands as they are installed: node, grammar, help, visibility, order."""
import pytest
from calls import of

CONFIG, GPON, XGPON, DIAGNOSE = 4, 124, 125, 133
SHOW = "Show running system information"


def row(node, name, grammar, *help_lines, hidden="0"):
    return (str(node), f"{name}_cmd", hidden, grammar, "".join(line + "\n" for line in help_lines))


def ports(unit, what, index, name):
    return row(DIAGNOSE, name, f"{unit} {what} <on|off> [({index})]", f"{unit} config.", f"{unit} {what}.",
               f"{unit} {what} on.", f"{unit} {what} off.", f"{unit} index.")


def power_status(node):
    return row(node, "show_system_power", "show sys power [json]", "show information.", "system information.",
               "system power status.", "JavaScript Object Notation")


def optics(node, name, grammar, *kinds):
    return row(node, name, grammar, SHOW, "Show optical information.", "Show optical transceiver information.",
               "Show interface optical transceiver information.", *kinds,
               "PON interface number,slot:<0>,port:<1-x>,x is 2,4,or 8.")


def interface_optics(node):
    return row(node, "show_pon_transceiver_optical", "show pon optical transceiver", SHOW, "PON information",
               "Show optical information.", "Show optical transceiver information.")


def upgrade(source, name, arguments, *help_lines):
    return row(DIAGNOSE, name, f"cpld upgrade {source} {arguments}", "CPLD configuration.", "CPLD upgrade.",
               f"CPLD upgrade by {source}.", "CPLD upgrade filename.", *help_lines)


GIGABIT_OR_GPON = ("GigabitEthernet IEEE 802.3z", "GPON information")
COMMANDS = [
    row(CONFIG, "reboot_device", "reboot", "reboot device"),
    row(CONFIG, "reboot_system", "reload", "reboot device", hidden="1"),
    row(DIAGNOSE, "system_led", "system led on", "system config.", "system led config.", "system led enable."),
    row(DIAGNOSE, "usb_led", "usb led <on|off>", "usb config.", "usb led.", "usb led on.", "usb led off."),
    ports("pon", "led", "1-8", "pon_led"),
    ports("pon", "power", "1-8", "pon_power_config"),
    ports("pon", "tx", "1-8", "pon_tx_config"),
    ports("sfp", "power", "1-6", "sfp_power_config"),
    row(DIAGNOSE, "show_pon_led", "show pon led", SHOW, "pon config.", "pon led."),
    row(DIAGNOSE, "show_pon_power", "show pon power", SHOW, "pon config.", "pon power."),
    row(DIAGNOSE, "show_pon_tx", "show pon tx", SHOW, "pon config.", "pon tx."),
    row(DIAGNOSE, "show_sfp_power", "show sfp power", SHOW, "sfp config.", "sfp power."),
    optics(DIAGNOSE, "show_port_laser", "show optical transceiver [interface <gigabitEthernet|gpon> <S/P>]",
           *GIGABIT_OR_GPON),
    optics(DIAGNOSE, "show_xgpon_laser", "show optical transceiver interface xgpon <S/P>", "XGPON information"),
    optics(CONFIG, "show_transceiver_optical", "show optical transceiver interface <gigabitEthernet|gpon> <S/P>",
           *GIGABIT_OR_GPON),
    optics(CONFIG, "show_xgpon_transceiver_optical", "show optical transceiver interface xgpon <S/P>", "XGPON information"),
    interface_optics(GPON),
    interface_optics(XGPON),
    row(DIAGNOSE, "fan_mode", "fan mode <open|close>", "fan config.", "fan mode.", "fan open.", "fan close."),
    row(DIAGNOSE, "fan_speed", "fan speed <low|medium|high>", "fan config.", "fan speed.", "fan speed low.",
        "fan speed medium.", "fan speed high."),
    row(DIAGNOSE, "show_logic_version", "show logic version", SHOW, "system logic information.",
        "system logic version information."),
    row(DIAGNOSE, "show_device_type", "show device type", SHOW, "system device information.",
        "system device type information."),
    power_status(CONFIG),
    power_status(DIAGNOSE),
    upgrade("tftp", "cpld_upgrade_tftp", "FILENAME <A.B.C.D|X:X::X:X>", "tftp server ip address.",
            "tftp server ipv6 address."),
    upgrade("ftp", "cpld_upgrade_ftp", "FILENAME <A.B.C.D|X:X::X:X> USERNAME PASSWORD", "ftp server ip address.",
            "ftp server ipv6 address.", "ftp username.", "ftp password."),
    upgrade("usb", "cpld_upgrade_by_usb", "FILENAME"),
    row(DIAGNOSE, "cpld_restore", "cpld restore", "CPLD configuration.", "CPLD restore from backup file."),
    row(DIAGNOSE, "cpld_erase", "cpld erase", "CPLD configuration.", "CPLD erase.", hidden="1"),
    row(DIAGNOSE, "debug_cpld", "[no] debug cpld", "Negate a command or set its defaults", "Debugging functions",
        "CPLD DEBUG"),
]


@pytest.fixture(scope="module")
def olt(make_olt):
    return make_olt().start(trace=True)


@pytest.fixture(scope="module")
def installed(olt):
    return [tuple(call.values[key] for key in ("node", "cmd", "hidden", "str", "doc"))
            for call in of(olt.trace(), "install_element")]


@pytest.mark.parametrize("expected", COMMANDS, ids=[f"{entry[1]}-{entry[0]}" for entry in COMMANDS])
def test_a_command_is_installed_once_in_its_node_with_its_words_and_help(installed, expected):
    assert [entry for entry in installed if entry[:2] == expected[:2]] == [expected]


def test_the_commands_come_in_their_order(installed):
    names = {entry[:2] for entry in COMMANDS}
    assert [entry[:2] for entry in installed if entry[:2] in names] == [entry[:2] for entry in COMMANDS]


def test_erasing_is_not_offered(olt):
    listed = [" ".join(line.split()) for line in olt.run("list", "diagnose")[0].splitlines()]
    assert "cpld restore" in listed and "cpld erase" not in listed


def test_reload_is_not_offered_but_works(olt):
    listed = [" ".join(line.split()) for line in olt.run("list")[0].splitlines()]
    assert "reboot" in listed and "reload" not in listed
    assert olt.run("reload") == ("", 0)


@pytest.mark.parametrize("node, command", [
    ("diagnose", "pon led on 9"), ("diagnose", "pon led on 0"), ("diagnose", "sfp power on 7"),
    ("diagnose", "pon tx on x"), ("diagnose", "system led off"), ("diagnose", "fan mode on"),
    ("diagnose", "fan speed 1"), ("enable", "reboot"), ("config", "usb led on"), ("enable", "show sys power"),
    ("diagnose", "show sys power xml"), ("config", "show optical transceiver"), ("config", "show pon optical transceiver"),
    ("diagnose", "show pon optical transceiver"), ("gpon 0/1", "show optical transceiver"),
    ("config", "show optical transceiver interface gpon 1"), ("config", "show optical transceiver interface ge 0/1"),
    ("enable", "show optical transceiver interface gpon 0/1"),
    ("config", "cpld restore"), ("diagnose", "cpld upgrade tftp f.jed"),
    ("diagnose", "cpld upgrade tftp f.jed host"), ("diagnose", "cpld upgrade tftp f.jed 10.0.0.256"),
    ("diagnose", "cpld upgrade tftp f.jed 1::2::3"), ("diagnose", "cpld upgrade ftp f.jed 10.0.0.1 joe"),
    ("diagnose", "cpld upgrade usb"), ("config", "cpld erase")])
def test_what_is_no_command_there_is_rejected(olt, node, command):
    before = len(olt.trace())
    assert olt.run(command, node)[1] != 0
    assert not [call for call in of(olt.trace()[before:], "misc_cpld_.*") if call.thread == "main"]
