# SPDX-License-Identifier: GPL-2.0-or-later
"""The threshold monitor's optical part: which modules it reads in a pass, what it reports of them."""
import contextlib

import pytest
from calls import of
from module_memory import path, plug, qsfp
from threshold_fixtures import FETCH, PON_ALARMS, a_pass, at_rest, enable, olt, reported, start_hurried, watch  # noqa: F401

LM75_READ = "misc_i2c_read"


@pytest.fixture
def cages(olt):
    """Empty cages, and a daemon that knows nothing of any optical alarm yet."""
    for port in range(1, 9):
        olt.boardctl("unplug", "gpon", port)
    olt.stop()
    start_hurried(olt)


@contextlib.contextmanager
def paused(olt):
    """What is changed while it lasts is seen by the optical part at once, in one pass."""
    assert olt.run("no transceiver monitor", "diagnose") == ("", 0)
    yield
    assert olt.run("transceiver monitor", "diagnose") == ("", 0)


def on_board(calls):
    """The accesses to the CPLD and the modules: operation, register or channel."""
    keys = {"misc_cpld_i2c_open": None, "misc_cpld_i2c_read_byte": "reg", "misc_cpld_channel_select": "channel",
            "misc_i2c_read": ("addr", "reg", "len")}
    found = []
    for call in calls:
        if call.op in keys:
            key = keys[call.op]
            what = tuple(call.values[k] for k in key) if isinstance(key, tuple) else call.values.get(key)
            found.append((call.op, what))
    return found


def test_a_port_without_an_enabled_alarm_is_not_read(olt, cages):
    plug(olt, "gpon", 1, *path())
    assert on_board(a_pass(olt)) == []


# value names with the module's readings
READINGS = [("0.00 dBm", "0"), ("10.00 mA", "10"), ("3.30 V", "3.3"), ("25.50 .C", "25.5")]


@pytest.mark.parametrize("index", range(8))
def test_each_alarm_compares_its_own_reading_in_both_directions(olt, cages, index):
    shown, value = READINGS[index // 2]
    unit = shown.split()[1]
    word, step = ("above", 1) if index % 2 == 0 else ("below", -1)
    number = float(value)
    plug(olt, "gpon", 3, *path())
    enable(olt, "gpon 0/3", PON_ALARMS[index], number, number)
    assert reported(olt) == [(9 + index, f"GPON 0/3 {shown} is {word} threshold {number:.2f} {unit}")]
    enable(olt, "gpon 0/3", PON_ALARMS[index], number + 2 * step, number)
    assert reported(olt) == []
    enable(olt, "gpon 0/3", PON_ALARMS[index], number + 2 * step, number + step)
    assert reported(olt) == [(9 + index, f"GPON 0/3 {shown} from {word} threshold returns to normal")]
    assert reported(olt) == []


def test_an_xgpon_port_has_its_own_alarms_and_the_other_path_of_a_combo_module(olt, cages):
    plug(olt, "gpon", 2, *path(), *path(1577, voltage=32000))
    enable(olt, "gpon 0/2", "pon-vcc-low", "3.3", "3.4")
    enable(olt, "xgpon 0/2", "pon-vcc-low", "3.25", "3.3")
    assert reported(olt) == [(14, "GPON 0/2 3.30 V is below threshold 3.30 V"),
                                    (14, "XGPON 0/2 3.20 V is below threshold 3.25 V")]
    enable(olt, "gpon 0/2", "pon-vcc-low", "3.1", "3.2")
    enable(olt, "xgpon 0/2", "pon-vcc-low", "3.1", "3.15")
    assert reported(olt) == [(14, "GPON 0/2 3.30 V from below threshold returns to normal"),
                                    (14, "XGPON 0/2 3.20 V from below threshold returns to normal")]


def test_ports_are_taken_gpon_first_then_xgpon_alarms_in_order(olt, cages):
    for port in (8, 1):
        plug(olt, "gpon", port, qsfp())
    with paused(olt):
        for node in ("xgpon 0/1", "gpon 0/8", "xgpon 0/8", "gpon 0/1"):
            for name in reversed(PON_ALARMS):
                limit = "-100" if name.endswith("high") else "100"
                enable(olt, node, name, limit, limit)
    found = reported(olt)
    assert [(text.split()[:2], alarm) for alarm, text in found] == [
        ([kind, f"0/{port}"], 9 + index) for kind in ("GPON", "XGPON") for port in (1, 8) for index in range(8)]


def test_a_pass_with_no_16_and_128_alarms_makes_exactly_the_required_accesses(olt, cages):
    for port in range(1, 9):
        plug(olt, "gpon", port, *path(), *path(1577))

    def port_reads(kind, port):
        word = [("misc_i2c_read", ("0x50", "60", "2"))]
        def values(id_page, page):
            return [("misc_i2c_read", (id_page, "92", "1"))] + [
                ("misc_i2c_read", (page, str(register), "1")) for register in range(96, 106)]
        other = [("misc_i2c_read", ("0x58", "60", "2"))]
        paths = (word + values("0x50", "0x51") + other) if kind == "gpon" else (word + other + values("0x58", "0x59"))
        return [("misc_cpld_i2c_open", None), ("misc_cpld_i2c_read_byte", "11"),
                ("misc_cpld_channel_select", str(port - 1)), ("misc_i2c_read", ("0x50", "0", "1")), *paths]

    required = [access for kind in ("gpon", "xgpon") for port in range(1, 9) for access in port_reads(kind, port)]

    assert on_board(a_pass(olt)) == []
    for count, names in ((16, PON_ALARMS[:1]), (128, PON_ALARMS)):
        with paused(olt):
            for port in range(1, 9):
                for kind in ("gpon", "xgpon"):
                    for name in names:
                        enable(olt, f"{kind} 0/{port}", name, 0, 0)
        assert on_board(a_pass(olt)) == required, count


def test_an_empty_cage_is_tried_for_each_of_its_alarms_and_changes_nothing(olt, cages):
    for name in PON_ALARMS:
        enable(olt, "gpon 0/4", name, 0, 0)
    calls = a_pass(olt)
    assert on_board(calls) == [("misc_cpld_i2c_open", None), ("misc_cpld_i2c_read_byte", "11")] * 8
    assert reported(olt) == []
    olt.wait_free("board")


def test_a_read_that_fails_is_tried_again_at_the_next_alarm(olt, cages):
    plug(olt, "gpon", 5, *path())
    with paused(olt):
        for name in ("pon-vcc-high", "pon-temp-high"):
            enable(olt, "gpon 0/5", name, 1, 1)
        mark = len(olt.trace())
        olt.faults("misc_cpld_channel_select nth=1 count=1 ret=-1 errno=5")
    a_pass(olt)
    assert reported(olt) == [(15, "GPON 0/5 25.50 .C is above threshold 1.00 .C"),
                             (13, "GPON 0/5 3.30 V is above threshold 1.00 V")]
    # In the first pass the first alarm was left out and the second judged.
    calls = [call for call in olt.trace()[mark:] if call.op in ("misc_cpld_i2c_open", "cli_log", FETCH)]
    while calls[0].op == FETCH:
        del calls[0]
    assert [call.op for call in calls[:6]] == ["misc_cpld_i2c_open", "misc_cpld_i2c_open", "cli_log", FETCH,
                                               "misc_cpld_i2c_open", "cli_log"]


def test_a_reachable_module_without_values_reads_as_zero_not_as_the_port_before(olt, cages):
    plug(olt, "gpon", 1, *path())
    plug(olt, "gpon", 2, *path(identifier=0x0E))
    for port in (1, 2):
        enable(olt, f"gpon 0/{port}", "pon-vcc-low", 1, 2)
    assert reported(olt) == [(14, "GPON 0/1 3.30 V from below threshold returns to normal"),
                                    (14, "GPON 0/2 0.00 V is below threshold 1.00 V")]


def test_no_light_is_below_every_threshold(olt, cages):
    plug(olt, "gpon", 6, *path(tx=0))
    enable(olt, "gpon 0/6", "pon-txpower-high", 4, 3)
    enable(olt, "gpon 0/6", "pon-txpower-low", -40, -39)
    assert reported(olt) == [(9, "GPON 0/6 -inf dBm from above threshold returns to normal"),
                                    (10, "GPON 0/6 -inf dBm is below threshold -40.00 dBm")]


def test_a_power_that_is_no_number_changes_nothing(olt, cages):
    # Calibrated to less than no light: the offset's word is negative.
    constants = (0x0100, 0, 0x0100, 0x8000, 0x0100, 0, 0x0100, 0, 0x0100, 0)
    plug(olt, "gpon", 7, *path(monitoring=0x10, tx=1, constants=constants))
    enable(olt, "gpon 0/7", "pon-txpower-high", 4, 3)
    enable(olt, "gpon 0/7", "pon-txpower-low", -40, -39)
    enable(olt, "gpon 0/7", "pon-vcc-low", 1, 2)
    assert reported(olt) == [(14, "GPON 0/7 3.30 V from below threshold returns to normal")]


def test_receive_power_is_never_compared(olt, cages):
    plug(olt, "gpon", 8, *path(rx=0))
    for name in PON_ALARMS:
        enable(olt, "gpon 0/8", name, *((100, 99) if name.endswith("high") else (-100, -99)))
    assert not any("-inf" in text for _, text in reported(olt))
    with paused(olt):  # a module that goes while it is read has no values
        olt.boardctl("unplug", "gpon", 8)
        plug(olt, "gpon", 8, *path(rx=65535))
    assert reported(olt) == []


def test_disabling_and_enabling_keeps_a_raised_alarm(olt, cages):
    plug(olt, "gpon", 1, *path())
    enable(olt, "gpon 0/1", "pon-temp-high", 20, 10)
    assert reported(olt) == [(15, "GPON 0/1 25.50 .C is above threshold 20.00 .C")]
    assert olt.run("alarm-log threshold pon-temp-high disable", "gpon 0/1") == ("", 0)
    assert reported(olt) == []
    enable(olt, "gpon 0/1", "pon-temp-high", 25, 24)
    assert reported(olt) == []
    enable(olt, "gpon 0/1", "pon-temp-high", 40, 30)
    assert reported(olt) == [(15, "GPON 0/1 25.50 .C from above threshold returns to normal")]


def test_the_switch_stops_the_optical_part_alone(olt, cages):
    plug(olt, "gpon", 1, *path())
    enable(olt, "gpon 0/1", "pon-temp-high", 20, 10)
    enable(olt, "xgpon 0/1", "pon-temp-high", 20, 10)
    watch(olt, "temp-high")
    assert olt.run("no transceiver monitor", "diagnose") == ("", 0)
    try:
        calls = a_pass(olt)
    finally:
        olt.run("transceiver monitor", "diagnose")
    assert [access for access, _ in on_board(calls)] == [LM75_READ]
    assert len(of(a_pass(olt), "misc_cpld_i2c_open")) == 2
