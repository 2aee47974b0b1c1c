# SPDX-License-Identifier: GPL-2.0-or-later
"""The alarm log's defaults that every start puts into the database, and what happens when it refuses one."""
import re

import pytest
from alarm_fixtures import LIBRARIES, SANITIZED, catalogue, edit_database  # noqa: F401
from alarm_words import ACTIONS, ALARM_COUNT
from calls import of
from olt import wait_until
from threshold_fixtures import ARM, FETCH, MONITOR

SETTERS = "db_olt_alarm_log_set_.*|db_apply_.*"
TEXTS = ["name", "desc", "level", "type", "class"]
SINKS = [
    ("db_olt_alarm_log_set_alarm_log_flash_level", 'val="warning" width=16 apply=1'),
    ("db_olt_alarm_log_set_remote_server_ipv4_enable", "val=0 width=16 apply=1"),
    ("db_olt_alarm_log_set_remote_server_ipv6_enable", "val=0 width=16 apply=1"),
]


def made(calls):
    return [(call.op, call.arguments) for call in calls]


def defaults_set(olt):
    """The changes of the start, up to the end of the defaults."""
    calls = olt.trace()
    end = next(i for i, call in enumerate(calls) if call.op == "misc_i2c_device_init")
    return of(calls[:end], f"{SETTERS}|{ARM}")


@pytest.fixture(scope="module")
def olt(make_olt):
    return make_olt().start(trace=True)


def test_every_alarm_is_set_from_the_catalogue_and_applied_with_its_last_value(olt, catalogue):  # noqa: F811
    calls = made(defaults_set(olt))
    assert len(catalogue) == ALARM_COUNT
    sizes = {"name": 32, "desc": 32, "level": 16, "type": 16, "class": 8}
    for entry in catalogue:
        ours, calls = calls[:9], calls[9:]
        texts = {"name": entry["name"], "desc": entry["description"], "level": entry["level"], "type": entry["type"],
                 "class": entry["class"]}
        for (op, arguments), field in zip(ours, TEXTS):
            assert op == f"db_olt_alarm_log_set_alarm_{field}"
            assert arguments == f'id={entry["id"]} val="{texts[field]}" size={sizes[field]} apply=0'
        for (op, arguments), action in zip(ours[5:], ACTIONS):
            value = entry["actions"] >> ACTIONS.index(action) & 1
            apply = int(action == "remote")
            assert op == f"db_olt_alarm_log_set_action_{action}"
            assert arguments == f'id={entry["id"]} val={value} size=1 apply={apply}'
    assert calls == [*SINKS, (ARM, f'function="{MONITOR}" seconds=3 argument=0')]


def test_the_monitor_is_switched_on(olt):
    assert "Transceiver Monitor : Enable\r\n" in olt.run("show diag monitor", "diagnose")[0]


def test_a_start_puts_every_level_and_action_back(olt):
    before = olt.run("show alarm-log all configuration")
    assert len(before[0].splitlines()) == ALARM_COUNT + 1
    for command in ("alarm-log alarm all disable all", "alarm-log event all enable remote",
                    "alarm-log alarm fan level emerg", "alarm-log alarm temp-high enable all",
                    "alarm-log flash level debug", "alarm-log remote server ipv4 enable",
                    "alarm-log remote server ipv6 enable"):
        assert olt.run(command) == ("", 0)
    assert olt.run("show alarm-log all configuration") != before
    olt.restart(trace=True)
    assert olt.run("show alarm-log all configuration") == before
    assert olt.run("show running-config alarm-log") == (
        "alarm-log remote server ipv4 disable\r\nalarm-log remote server ipv6 disable\r\n"
        "alarm-log flash level warning\r\n", 0)


def test_servers_and_thresholds_survive_a_start(fresh_olt):
    olt = fresh_olt
    assert olt.run("alarm-log remote server ipv4 10.0.0.1 port 514") == ("", 0)
    edit_database(olt, '<alarm-log xmlns="urn:norvale:yang:olt-alarm-log"><threshold><temp-low>'
                          "<alarm-threshold>5</alarm-threshold><clear-threshold>10</clear-threshold>"
                          "</temp-low></threshold></alarm-log>")
    olt.restart()
    olt.run("alarm-log alarm temp-low enable print")
    text = olt.run("show running-config alarm-log")[0]
    assert "alarm-log remote server ipv4 10.0.0.1 port 514\r\n" in text
    assert "alarm-log threshold temp-low enable 5 10\r\n" in text


FAILURES = [
    *((f"db_olt_alarm_log_set_alarm_{field}", what)
      for field, what in zip(TEXTS, ["name", "description", "level", "type", "class"])),
    *((f"db_olt_alarm_log_set_action_{action}", action) for action in ACTIONS),
]


@pytest.mark.parametrize("nth", [1, 57, ALARM_COUNT])
@pytest.mark.parametrize("op, what", FAILURES)
def test_the_first_alarm_value_that_is_refused_ends_it(failing, op, what, nth):
    calls, stderr = failing(f"{op} nth={nth} ret=-7")
    assert stderr == [f"set alarm log {what} failed : {failing.text(-7)}"]
    assert calls[-1].op == op and calls[-1].values["id"] == str(nth - 1)


@pytest.mark.parametrize("place, what", [(0, "flash level"), (1, "remote server"), (2, "remote server")])
def test_a_sink_that_is_refused_ends_it(failing, place, what):
    calls, stderr = failing(f"{SINKS[place][0]} ret=-5")
    assert stderr == [f"set alarm log {what} failed : {failing.text(-5)}"]
    assert made(calls[-1 - place :]) == SINKS[: place + 1]


@pytest.fixture(scope="module")
def failing(make_olt):
    """A function that starts the daemon with a fault and gives the calls that set the defaults and what was said; the
    monitor must then not be there."""
    olt = make_olt()

    def start(fault):
        if olt.daemon:
            olt.stop()
        said = len(olt.stderr())
        olt.faults(fault)
        olt.start(trace=True)
        calls = defaults_set(olt)
        assert of(calls, ARM) == []
        assert "Transceiver Monitor : Disable\r\n" in olt.run("show diag monitor", "diagnose")[0]
        return calls, re.findall("^set alarm log .*", olt.stderr()[said:], re.M)

    def text(code):
        done = olt.exec("env", *SANITIZED, "/usr/bin/python3", "-c",
                        "import ctypes; api = ctypes.CDLL('" + LIBRARIES + "/libtqapi.so');"
                        f"api.tq_strerror.restype = ctypes.c_char_p; print(api.tq_strerror({code}).decode())", check=True)
        return done.stdout.strip()

    start.text = text
    start.olt = olt
    return start


def test_the_monitor_never_runs_after_a_failed_start(failing):
    failing("db_olt_alarm_log_set_alarm_name nth=3 ret=-4")
    olt = failing.olt
    started = olt.trace()[-1].time_ms

    def later():  # some call more than a period after the start
        olt.run("show version")
        calls = olt.trace()
        return calls[-1].time_ms > started + 4000 and calls

    calls = wait_until(later, "four seconds pass")
    assert of(calls, FETCH) == []
    assert olt.run("alarm-log threshold temp-high enable 70 65") == ("", 0)
