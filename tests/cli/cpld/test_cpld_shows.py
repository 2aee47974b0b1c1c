# SPDX-License-Identifier: GPL-2.0-or-later
"""Displays of registers, identification, power state, and the CPLD library's debug switch."""
import json

import pytest
from calls import of
from cpld import board_session, run
from traced_fixtures import no_faults  # noqa: F401

REGISTERS = [("show pon led", "PON LED Status", "show_pon_led", 10), ("show pon power", "PON Power Status", "show_pon_power", 11),
             ("show pon tx", "PON TX Status", "show_pon_tx", 8), ("show sfp power", "SFP Power Status", "show_sfp_power", 12)]


@pytest.fixture(scope="module")
def olt(traced_olt):
    traced_olt.boardctl("reg", "plain", "on")
    return traced_olt


@pytest.mark.parametrize("command, name, label, register", REGISTERS)
@pytest.mark.parametrize("value, shown", [(0x0F, "0xf"), (0, "0x0"), (0xFF, "0xff"), (0xA0, "0xa0")])
def test_a_register_is_shown_in_hexadecimal_without_leading_zeros(olt, command, name, label, register, value, shown):
    olt.boardctl("reg", "set", register, value)
    assert run(olt, command) == (f"{name}: {shown}\r\n", 0, board_session(label, f"R({register})"))


@pytest.mark.parametrize("command, name, label, register", REGISTERS)
def test_a_register_that_cannot_be_read_is_shown_as_0(olt, command, name, label, register):
    olt.boardctl("reg", "set", register, 0xFF)
    olt.faults("misc_cpld_i2c_read_byte ret=-1 errno=5 thread=main")
    assert run(olt, command)[:2] == (f"{name}: 0x0\r\n", 0)


@pytest.mark.parametrize("command, verb, work, label, good, bad", [
    ("show logic version", "logic", "logic version", "show_logic_version", "Current Logic Version: {:#x}\r\n",
     "not get logic version\r\n"),
    ("show device type", "devtype", "device type", "show_device_type", "Current device is: {:#x}\r\n",
     "not get device type\r\n")])
def test_identification_is_shown_or_said_to_be_missing(olt, command, verb, work, label, good, bad):
    for value in (0x21, 5, 0):
        olt.boardctl(verb, value)
        shown = good.format(value) if value else good.replace("{:#x}", "0x0")
        assert run(olt, command) == (shown, 0, board_session(label, work))
    operation = "misc_cpld_i2c_" + work.replace(" ", "_") + "_get"
    for failure in (-1, 1):
        olt.faults(f"{operation} ret={failure}")
        assert run(olt, command) == (bad, 0, board_session(label, work))


@pytest.mark.parametrize("node", ["config", "diagnose"])
@pytest.mark.parametrize("state, shown, first, second", [
    (0x00, "0x00", "off", "off"), (0x01, "0x01", "on", "off"), (0x02, "0x02", "off", "on"), (0x03, "0x03", "on", "on"),
    (0xFC, "0xfc", "off", "off")])
def test_power_supplies_are_shown_as_text_and_json(olt, node, state, shown, first, second):
    olt.boardctl("power", state)
    assert run(olt, "show sys power", node) == (
        f" System power status({shown}): \r\n Power1 :  {first}\r\n Power2 :  {second}\r\n", 0,
        board_session("show_system_power", "power state"))
    text, rc, steps = run(olt, "show sys power json", node)
    assert rc == 0 and steps == board_session("show_system_power", "power state")
    assert text == '{{\n  "power1":{},\n  "power2":{}\n}}\r\n'.format(
        *("true" if supply == "on" else "false" for supply in (first, second)))


def test_a_power_state_that_cannot_be_read_is_said_in_text_and_false_in_json(olt):
    olt.boardctl("power", 3)
    olt.faults("misc_cpld_i2c_power_state_get ret=-1 thread=main")
    assert run(olt, "show sys power")[:2] == ("not get power state\r\n", 0)
    text, rc, _ = run(olt, "show sys power json")
    assert rc == 0 and json.loads(text) == {"power1": False, "power2": False}


def test_the_json_form_leaks_nothing_over_many_calls(olt):
    def resident_kb():
        return int(next(line for line in open(f"/proc/{olt.pid}/status") if line.startswith("VmRSS")).split()[1])

    with olt.vty("config") as session:
        for _ in range(200):
            session.run("show sys power json")
        before = resident_kb()
        for _ in range(1000):
            session.run("show sys power json")
        assert resident_kb() - before < 200


def test_the_librarys_debug_switch_follows_the_command(olt):
    for command, value in (("debug cpld", 1), ("no debug cpld", 0)):
        before = len(olt.trace())
        assert olt.run(command, "diagnose") == ("", 0)
        calls = of(olt.trace()[before:], "misc_cpld_debug_set")
        assert [int(call.values["on"]) for call in calls] == [value]
        assert ("CPLD debugging is ON\r\n" in olt.run("show debugging", "diagnose")[0]) == bool(value)
