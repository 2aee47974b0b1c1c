# SPDX-License-Identifier: GPL-2.0-or-later
"""The four monitor switches and the list of debug switches."""
import itertools

import pytest
from calls import in_order, of
from traced_fixtures import olt  # noqa: F401

NAMES = {"fan": "FAN Monitor         ", "usb": "USB Monitor         ", "power": "Power Monitor       ",
         "transceiver": "Transceiver Monitor "}


@pytest.fixture(autouse=True)
def all_on(olt):
    for name in NAMES:
        switch(olt, f"{name} monitor")


def switch(olt, command):
    assert olt.run(command, "diagnose") == ("", 0)


def states(olt):
    text, rc = olt.run("show diag monitor", "diagnose")
    assert rc == 0
    return text


def table(**off):
    return "".join(f"{label}: {'Disable' if name in off else 'Enable'}\r\n" for name, label in NAMES.items())


def test_all_switched_on_read_enable(olt):
    assert states(olt) == (
        "FAN Monitor         : Enable\r\n"
        "USB Monitor         : Enable\r\n"
        "Power Monitor       : Enable\r\n"
        "Transceiver Monitor : Enable\r\n"
    )


def test_all_switched_off_read_disable(olt):
    for name in NAMES:
        switch(olt, f"no {name} monitor")
    assert states(olt) == (
        "FAN Monitor         : Disable\r\n"
        "USB Monitor         : Disable\r\n"
        "Power Monitor       : Disable\r\n"
        "Transceiver Monitor : Disable\r\n"
    )


@pytest.mark.parametrize("off", [combination for size in range(1, 4) for combination in itertools.combinations(NAMES, size)],
                         ids="-".join)
def test_each_switch_is_its_own(olt, off):
    for name in off:
        switch(olt, f"no {name} monitor")
    assert states(olt) == table(**dict.fromkeys(off))


def test_switching_twice_is_switching_once(olt):
    for command in ["no usb monitor", "no usb monitor"]:
        switch(olt, command)
    assert states(olt) == table(usb=0)
    for command in ["usb monitor", "usb monitor"]:
        switch(olt, command)
    assert states(olt) == table()


def test_words_may_be_abbreviated(olt):
    switch(olt, "no fa mon")
    assert states(olt) == table(fan=0)
    switch(olt, "fa m")
    assert states(olt) == table()


def test_switches_are_the_daemons_not_the_sessions(olt):
    with olt.vty("diagnose") as one, olt.vty("diagnose") as two:
        assert one.run("no power monitor") == ("", 0)
        assert two.run("show diag monitor") == (table(power=0), 0)


@pytest.mark.parametrize("command", ["fan monitor", "no fan monitor", "usb monitor", "power monitor", "transceiver monitor",
                                     "show diag monitor", "show debugging", "pon reset", "system gpio reset"])
@pytest.mark.parametrize("node", ["view", "enable", "config", "gpon 0/3"])
def test_these_are_commands_of_the_diagnostics_node_alone(olt, command, node):
    assert olt.run(command, node)[1] != 0


def test_a_switch_is_neither_configuration_nor_in_the_database(olt):
    def configuration():
        text, rc = olt.run("show running-config", "enable")
        assert rc == 0
        return text

    before, calls = configuration(), len(olt.trace())
    for name in NAMES:
        switch(olt, f"no {name} monitor")
    assert configuration() == before
    assert of(olt.trace()[calls:], r"db_olt_\w+_(set|del)_\w+|db_apply_\w+") == []


def test_a_restart_forgets_the_switches(make_olt):
    """They start disabled until their monitors turn them on; what an operator switched is not kept."""
    own = make_olt().start()
    fresh = states(own)
    for name in NAMES:
        switch(own, f"no {name} monitor" if f"{NAMES[name]}: Enable" in fresh else f"{name} monitor")
    assert states(own) != fresh
    own.restart()
    assert states(own) == fresh


def test_the_transceiver_monitor_stays_off_until_it_has_been_started(cold_olt):
    """A database that refuses the alarm log's defaults keeps thresholds from being watched."""
    cold_olt.faults("db_olt_alarm_log_set_alarm_name nth=1 ret=-1")
    cold_olt.start()
    assert "\r\nTransceiver Monitor : Disable\r\n" in states(cold_olt)
    cold_olt.faults()
    cold_olt.restart()
    assert "\r\nTransceiver Monitor : Enable\r\n" in states(cold_olt)


# --- debug switches of the board libraries


def debugging(olt, **on):
    """What `show debugging` prints with these libraries' flags on."""
    olt.faults(*(f"misc_{name}_debug_get ret={value}" for name, value in on.items()))
    try:
        return olt.run("show debugging", "diagnose")
    finally:
        olt.faults()


def test_nothing_is_printed_while_all_debugging_is_off(olt):
    assert debugging(olt) == ("", 0)


def test_all_debugging_on_is_listed_phy_i2c_cpld(olt):
    assert debugging(olt, phy=1, i2c=1, cpld=1) == (
        "PHY debugging is ON\r\nI2C debugging is ON\r\nCPLD debugging is ON\r\n", 0)


@pytest.mark.parametrize("library, label", [("phy", "PHY"), ("i2c", "I2C"), ("cpld", "CPLD")])
@pytest.mark.parametrize("value", [1, 2, 255])
def test_each_flag_has_its_own_line(olt, library, label, value):
    assert debugging(olt, **{library: value}) == (f"{label} debugging is ON\r\n", 0)


def test_the_libraries_are_asked_phy_i2c_cpld_each_once(olt):
    before = len(olt.trace())
    debugging(olt)
    calls = [call for call in olt.trace()[before:] if call.op.endswith("_debug_get") and call.op.startswith("misc_")]
    in_order(calls, "misc_phy_debug_get", "misc_i2c_debug_get", "misc_cpld_debug_get")
    assert len(calls) == 3
