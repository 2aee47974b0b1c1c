# SPDX-License-Identifier: GPL-2.0-or-later
"""The fan commands: settings, displays, running configuration."""
import json

import pytest
from calls import of
from monitors import calls_of, steps

RULER = " --------------------------------------------\r\n"


@pytest.fixture(scope="module")
def olt(make_olt):
    """Its monitor never comes to its first pass."""
    own = make_olt()
    own.faults("nanosleep thread=fan_monitor ret=0 delay_ms=1000000")
    return own.start(trace=True)


@pytest.fixture(autouse=True)
def defaults(olt):
    for command in ("fan temperature 35", "fan mode auto", "fan speed auto"):
        assert olt.run(command) == ("", 0)
    olt.boardctl("temp", "set", 250)


def fresh(make_olt):
    own = make_olt()
    own.faults("nanosleep thread=fan_monitor ret=0 delay_ms=1000000")
    return own.start(trace=True)


def shown(state, current_state, speed, current_speed, temperature, threshold):
    return (
        " Chassis Fans State Information\r\n"
        + RULER
        + f" FAN state: {state}\r\n"
        f" Current FAN state: {current_state}\r\n"
        f" FAN speed: {speed}\r\n"
        f" Current FAN speed: {current_speed}\r\n"
        f" Current temperature:{temperature} .C\r\n"
        f" Open fan temperature:{threshold} .C\r\n"
        + RULER
    )


def test_before_the_first_pass_the_fans_read_open_and_low(make_olt):
    own = fresh(make_olt)
    assert own.run("show fan") == (shown("auto", "open", "auto", "low", "25.0", "35.0"), 0)
    text, rc = own.run("show fan json")
    assert rc == 0 and text.endswith("}\r\n")
    assert list(json.loads(text).items()) == [("fanTemperature", 35), ("fanMode", "auto"), ("fanSpeed", "auto"),
                                              ("currentFanMode", "open"), ("currentFanSpeed", "low")]
    assert own.run("show running-config fan") == ("!\r\n", 0)


def test_the_json_form_is_laid_out_one_member_a_line(olt):
    text, _ = olt.run("show fan json")
    assert text.startswith('{\n  "fanTemperature":35,\n  "fanMode":"auto",\n  "fanSpeed":"auto",\n')


def test_the_json_form_reads_no_sensor(olt):
    before = len(olt.trace())
    olt.run("show fan json")
    assert of(olt.trace()[before:], "misc_i2c_read") == []


@pytest.mark.parametrize("mode", ["auto", "open", "close"])
@pytest.mark.parametrize("speed", ["low", "medium", "high"])
def test_settings_are_shown(olt, mode, speed):
    olt.run(f"fan mode {mode}")
    olt.run(f"fan speed {speed}")
    olt.run("fan temperature 42")
    olt.boardctl("temp", "set", 355)
    assert olt.run("show fan")[0] == shown(mode, "open", speed, speed, "35.5", "42.0")
    members = json.loads(olt.run("show fan json")[0])
    assert (members["fanTemperature"], members["fanMode"], members["fanSpeed"], members["currentFanSpeed"]) == (
        42, mode, speed, speed)


@pytest.mark.parametrize("raw, text", [
    ("0x1900", "25.0"), ("0x2380", "35.5"), ("0x0000", "0.0"),
    ("0xff80", "0.5"),  # half a degree below zero: the sign goes with the whole degrees
    ("0xfd80", "-2.5"), ("0xe700", "-25.0"), ("0x7fff", "127.9"), ("0x8000", "-128.0"),
])
def test_show_temperature(olt, raw, text):
    olt.boardctl("temp", "raw", raw)
    assert olt.run("show temperature") == (f" Current temperature: {text} .C\r\n", 0)
    assert olt.run("show temperature json") == (f'{{\n  "temperature":"{text}"\n}}\r\n', 0)
    assert f" Current temperature:{text} .C\r\n" in olt.run("show fan")[0]


def test_a_sensor_that_fails_twice_costs_two_seconds(olt):
    olt.boardctl("temp", "set", 301)
    olt.boardctl("temp", "fail", 2)
    before = len(olt.trace())
    assert olt.run("show temperature") == (" Current temperature: 30.1 .C\r\n", 0)
    calls = [call for call in calls_of(olt, "main", before) if call.op in ("misc_i2c_read", "nanosleep")]
    assert [call.op for call in calls] == ["misc_i2c_read", "nanosleep", "misc_i2c_read", "nanosleep", "misc_i2c_read"]
    assert {call.values["ms"] for call in of(calls, "nanosleep")} == {"1000"}


def test_a_dead_sensor_shows_the_last_good_reading(olt):
    olt.boardctl("temp", "set", 315)
    olt.run("show temperature")
    olt.boardctl("temp", "set", 900)
    olt.boardctl("temp", "fail", "always")
    try:
        assert olt.run("show temperature") == (" Current temperature: 31.5 .C\r\n", 0)
    finally:
        olt.boardctl("temp", "fail", "off")


@pytest.mark.parametrize("command", ["fan temperature 40", "fan mode open", "fan mode close", "fan mode auto"])
def test_temperature_and_mode_touch_no_hardware(olt, command):
    before = len(olt.trace())
    assert olt.run(command) == ("", 0)
    calls = calls_of(olt, "main", before)
    assert steps(calls) == [] and of(calls, "misc_.*|semaphore_.*") == []


@pytest.mark.parametrize("word, code, current", [("low", 0, "low"), ("medium", 1, "medium"), ("high", 2, "high")])
def test_a_speed_is_written_at_once_in_the_boards_bracket(olt, word, code, current):
    before = len(olt.trace())
    assert olt.run(f"fan speed {word}") == ("", 0)
    assert steps(calls_of(olt, "main", before)) == [
        "take", "raise fan_speed_ctrl", "misc_cpld_i2c_open", "lower", f"write 5 {code}", "misc_cpld_i2c_close", "give"]
    assert olt.boardctl("reg", "get", 5) == f"0x{code:02x}\n"
    members = json.loads(olt.run("show fan json")[0])
    assert (members["fanSpeed"], members["currentFanSpeed"]) == (word, current)


def test_speed_auto_writes_5_and_leaves_the_current_speed(olt):
    olt.run("fan speed high")
    before = len(olt.trace())
    assert olt.run("fan speed auto") == ("", 0)
    assert "write 5 5" in steps(calls_of(olt, "main", before))
    members = json.loads(olt.run("show fan json")[0])
    assert (members["fanSpeed"], members["currentFanSpeed"]) == ("auto", "high")


def test_a_speed_that_cannot_be_written_is_a_silent_warning_and_changes_nothing(olt):
    olt.run("fan speed medium")
    settings = olt.run("show fan json")
    before = len(olt.trace())
    olt.faults("misc_cpld_i2c_open ret=-1 errno=5", "nanosleep thread=fan_monitor ret=0 delay_ms=1000000")
    try:
        assert olt.run("fan speed high") == ("", 1)
    finally:
        olt.faults("nanosleep thread=fan_monitor ret=0 delay_ms=1000000")
    assert steps(calls_of(olt, "main", before)) == ["take", "raise fan_speed_ctrl", "misc_cpld_i2c_open", "give", "lower"]
    assert olt.run("show fan json") == settings
    assert olt.boardctl("reg", "get", 5) == "0x01\n"


def test_a_speed_register_that_refuses_is_passed_over(olt):
    olt.boardctl("fault", "add", "cpld_write", "reg=5")
    try:
        assert olt.run("fan speed high") == ("", 0)
    finally:
        olt.boardctl("fault", "clear")
    assert json.loads(olt.run("show fan json")[0])["fanSpeed"] == "high"


@pytest.mark.parametrize("commands, lines", [
    ([], ""),
    (["fan temperature 35"], ""),
    (["fan temperature 20"], "fan temperature 20\r\n"),
    (["fan temperature 80"], "fan temperature 80\r\n"),
    (["fan mode close"], ""),
    (["fan mode auto"], ""),
    (["fan mode open"], "fan mode open\r\n"),
    (["fan speed auto"], ""),
    (["fan speed low"], "fan speed low\r\n"),
    (["fan speed medium"], "fan speed medium\r\n"),
    (["fan speed high"], "fan speed high\r\n"),
    (["fan speed low", "fan mode open", "fan temperature 44"], "fan temperature 44\r\nfan mode open\r\nfan speed low\r\n"),
])
def test_the_running_configuration_has_what_is_not_the_default(olt, commands, lines):
    for command in commands:
        olt.run(command)
    assert olt.run("show running-config fan") == ("!\r\n" + lines, 0)
    whole, rc = olt.run("show running-config", "enable")
    assert rc == 0
    assert ("!\r\n" + lines) in whole
    assert whole.count("fan ") == lines.count("fan ")


def test_the_configuration_file_replays_the_commands(cold_olt):
    cold_olt.configure("fan temperature 44", "fan mode open", "fan speed low")
    cold_olt.start()
    assert cold_olt.run("show running-config fan")[0] == "!\r\nfan temperature 44\r\nfan mode open\r\nfan speed low\r\n"


def test_what_is_written_is_read_at_the_next_start(fresh_olt):
    for command in ("fan temperature 50", "fan speed high"):
        fresh_olt.run(command)
    assert fresh_olt.run("write", "enable")[1] == 0
    fresh_olt.restart()
    assert fresh_olt.run("show running-config fan")[0] == "!\r\nfan temperature 50\r\nfan speed high\r\n"


@pytest.mark.parametrize("command", ["fan temperature 19", "fan temperature 81", "fan temperature", "fan mode on",
                                     "fan speed fast", "fan speed 1"])
def test_what_the_syntax_does_not_have_is_refused(olt, command):
    settings = olt.run("show fan json")
    assert olt.run(command)[1] != 0
    assert olt.run("show fan json") == settings


def test_words_may_be_abbreviated(olt):
    assert olt.run("fan sp med") == ("", 0)
    assert olt.run("fan mo o") == ("", 0)
    assert olt.run("show running-config fan")[0] == "!\r\nfan mode open\r\nfan speed medium\r\n"
