# SPDX-License-Identifier: GPL-2.0-or-later
"""The threshold monitor: what it reads of the board in a pass, what it reports, when it passes."""
import random

import pytest
from alarm_fixtures import store  # noqa: F401
from alarm_words import ACTIONS
from calls import of
from module_memory import path, plug
from olt import NO_QUARANTINE, wait_until
from proc_files import bound, busy, meminfo, stat_line
from threshold_fixtures import (ARM, BOARD_ALARMS, FETCH, MONITOR, a_pass, at_rest, enable, olt,  # noqa: F401
                                reported, set_temperature, start_hurried, store_thresholds, watch)

LM75_READ = "misc_i2c_read"
SWITCH_READS = [f"db_olt_alarm_log_get_action_{action} id={alarm}" for alarm in range(102, 106) for action in ACTIONS]


def temperature(olt, tenths):
    """Sets the board's temperature; what is reported about it."""
    set_temperature(olt, tenths)
    return reported(olt)


def fresh_state(olt, name):
    """Brings the alarm into the normal state, from whatever it was left in."""
    thresholds = (-1000, -999) if name == "temp-low" else (1000, 999)
    store_thresholds(olt, **{name: thresholds})
    watch(olt, name)
    reported(olt)


# --- the board


def test_a_pass_reads_thresholds_then_the_switches_of_each_alarm_and_arms_the_timer_at_its_end(olt):
    calls = [str(call).split(" -> ")[0] for call in a_pass(olt)]
    assert [call.split(" val=")[0].strip() for call in calls] == [
        FETCH, *SWITCH_READS, f'{ARM} function="{MONITOR}" seconds=3 argument=0']


def test_passes_run_on_the_main_thread(olt):
    a_pass(olt)
    assert {call.thread for call in of(olt.trace(), FETCH)} == {"main"}


def test_with_every_action_off_nothing_is_sampled_or_reported(olt):
    store_thresholds(olt, **{"temp-high": (1, 1), "cpu-usage-high": (0, 0), "mem-usage-high": (0, 0)})
    calls = a_pass(olt)
    assert of(calls, f"{LM75_READ}|fopen|nanosleep|cli_log") == []


@pytest.mark.parametrize("action", ACTIONS)
def test_any_one_action_makes_an_alarm_watched(olt, action):
    watch(olt, "temp-high", action)
    assert len(of(a_pass(olt), LM75_READ)) == 1


@pytest.mark.parametrize("name, samples", [
    ("temp-high", [LM75_READ]),
    ("temp-low", [LM75_READ]),
    ("cpu-usage-high", ["fopen", "fclose", "nanosleep", "fopen", "fclose"]),
    ("mem-usage-high", ["fopen", "fclose", "fopen", "fclose"]),
])
def test_each_alarm_is_sampled_behind_its_own_switches(olt, name, samples):
    watch(olt, name)
    calls = a_pass(olt)
    last_switch = next(i for i, call in enumerate(calls) if call.op == "db_olt_alarm_log_get_action_remote"
                       and call.values["id"] == str(BOARD_ALARMS[name]))
    found = [call.op for call in calls if call.op in ("fopen", "fclose", "nanosleep", LM75_READ)]
    assert found == samples
    assert calls[last_switch + 1].op == samples[0]


def test_both_temperature_alarms_read_the_sensor_themselves(olt):
    watch(olt, "temp-high")
    watch(olt, "temp-low")
    reads = of(a_pass(olt), LM75_READ)
    assert len(reads) == 2
    assert {(call.values["addr"], call.values["reg"], call.values["len"]) for call in reads} == {("0x48", "0", "2")}


def test_a_high_alarm_is_reported_at_its_threshold_and_once_below_the_clear_threshold(olt):
    fresh_state(olt, "temp-high")
    store_thresholds(olt, **{"temp-high": (70, 65)})
    assert temperature(olt, 699) == []
    assert temperature(olt, 700) == [(102, "70.00 .C is above threshold 70.00 .C")]
    assert temperature(olt, 800) == []
    assert temperature(olt, 699) == []
    assert temperature(olt, 650) == []
    assert temperature(olt, 649) == [(102, "64.90 .C from above threshold returns to normal")]
    assert temperature(olt, 649) == []


def test_a_low_alarm_is_reported_at_its_threshold_and_once_above_the_clear_threshold(olt):
    fresh_state(olt, "temp-low")
    store_thresholds(olt, **{"temp-low": (5, 10)})
    assert temperature(olt, 51) == []
    assert temperature(olt, 50) == [(103, "5.00 .C is below threshold 5.00 .C")]
    assert temperature(olt, -400) == []
    assert temperature(olt, 100) == []
    assert temperature(olt, 101) == [(103, "10.10 .C from below threshold returns to normal")]


@pytest.mark.parametrize("name, alarm, clear", [("temp-high", 30, 27), ("temp-low", 22, 25)])
def test_a_random_walk_is_reported_as_a_model_says(olt, name, alarm, clear):
    fresh_state(olt, name)
    store_thresholds(olt, **{name: (alarm, clear)})
    sign, word = (1, "above") if name == "temp-high" else (-1, "below")
    walk, value, raised = random.Random(11), 250, False
    for _ in range(25):
        value += walk.randint(-30, 30)
        expected = []
        if sign * (value - 10 * alarm) >= 0 and not raised:
            raised, expected = True, [f"{value / 10:.2f} .C is {word} threshold {alarm}.00 .C"]
        elif sign * (10 * clear - value) > 0 and raised:
            raised, expected = False, [f"{value / 10:.2f} .C from {word} threshold returns to normal"]
        assert temperature(olt, value) == [(BOARD_ALARMS[name], text) for text in expected], value


def test_a_reading_just_below_zero_loses_its_sign(olt):
    fresh_state(olt, "temp-low")
    store_thresholds(olt, **{"temp-low": (0, 0)})
    assert temperature(olt, -5) == []
    store_thresholds(olt, **{"temp-low": (0.5, 0.6)})
    assert temperature(olt, -5) == [(103, "0.50 .C is below threshold 0.50 .C")]


def test_a_reading_of_a_degree_below_zero_keeps_it(olt):
    fresh_state(olt, "temp-low")
    store_thresholds(olt, **{"temp-low": (0, 0)})
    assert temperature(olt, -25) == [(103, "-2.50 .C is below threshold 0.00 .C")]


def test_without_thresholds_a_watched_high_alarm_is_raised_at_once(olt):
    fresh_state(olt, "temp-high")
    store_thresholds(olt, **{"temp-high": (None, None)})
    assert reported(olt) == [(102, "25.00 .C is above threshold 0.00 .C")]


def test_thresholds_that_cannot_be_read_are_zero_for_the_pass(olt):
    fresh_state(olt, "temp-high")
    store_thresholds(olt, **{"temp-high": (70, 65)})
    assert reported(olt) == []
    olt.faults(f"{FETCH} ret=-4")
    assert reported(olt) == [(102, "25.00 .C is above threshold 0.00 .C")]
    assert reported(olt) == []
    olt.faults()
    assert reported(olt) == [(102, "25.00 .C from above threshold returns to normal")]


def test_switches_that_cannot_be_read_are_off(olt):
    fresh_state(olt, "temp-high")
    olt.faults(*(f"db_olt_alarm_log_get_action_{action} ret=-4" for action in ACTIONS))
    assert of(a_pass(olt), LM75_READ) == []


def test_a_broken_sensor_reads_as_it_did_last_after_three_attempts(olt):
    fresh_state(olt, "temp-low")
    store_thresholds(olt, **{"temp-low": (30, 31)})
    olt.boardctl("temp", "set", 250)
    assert "25.0" in olt.run("show temperature")[0]
    olt.boardctl("temp", "fail", "always")
    try:
        calls = a_pass(olt)
        assert reported(olt) == [(103, "25.00 .C is below threshold 30.00 .C")]
    finally:
        olt.boardctl("temp", "fail", "off")
    assert [call.op for call in calls if call.op in (LM75_READ, "nanosleep")] == [LM75_READ, "nanosleep"] * 3
    assert [call.values["ms"] for call in of(calls, "nanosleep")] == ["1000"] * 3


def test_processor_usage_is_compared_with_one_decimal(olt):
    fresh_state(olt, "cpu-usage-high")
    with busy(olt, 1000, 953):
        store_thresholds(olt, **{"cpu-usage-high": (4.8, 4.7)})
        assert reported(olt) == []
        store_thresholds(olt, **{"cpu-usage-high": (4.7, 4.7)})
        assert reported(olt) == [(104, "4.70 % is above threshold 4.70 %")]
        store_thresholds(olt, **{"cpu-usage-high": (5, 4.8)})
        assert reported(olt) == [(104, "4.70 % from above threshold returns to normal")]


def test_processor_usage_that_cannot_be_sampled_is_nothing(olt):
    fresh_state(olt, "cpu-usage-high")
    with bound(olt, "/proc/stat", stat_line(1, 1), mode=0):
        store_thresholds(olt, **{"cpu-usage-high": (0, 0)})
        assert reported(olt) == [(104, "0.00 % is above threshold 0.00 %")]


def test_memory_usage_is_compared_as_it_is(olt):
    fresh_state(olt, "mem-usage-high")
    with bound(olt, "/proc/meminfo", meminfo(1000, 250)) as file:
        store_thresholds(olt, **{"mem-usage-high": (75, 70)})
        assert reported(olt) == [(105, "75.00 % is above threshold 75.00 %")]
        with open(file, "r+") as same_file:
            same_file.write(meminfo(1000, 301))
        assert reported(olt) == [(105, "69.90 % from above threshold returns to normal")]


def test_memory_usage_that_is_no_number_changes_nothing(olt):
    fresh_state(olt, "mem-usage-high")
    with bound(olt, "/proc/meminfo", meminfo(0, 0)):
        store_thresholds(olt, **{"mem-usage-high": (None, None)})
        assert reported(olt) == []
        store_thresholds(olt, **{"mem-usage-high": (1000, 999)})


def test_the_record_carries_the_alarms_id_and_nothing_else(olt, store):
    fresh_state(olt, "temp-high")
    store.empty()
    mark = len(olt.trace())
    store_thresholds(olt, **{"temp-high": (20, 19)})
    a_pass(olt)
    call = of(olt.trace()[mark:], "cli_log")[0]
    assert bytes.fromhex(call.values["rec"]) == (102).to_bytes(2, "little") + bytes(30)
    assert [(record.alarm_id, record.message, record.level) for record in store.records()] == [
        (102, "25.00 .C is above threshold 20.00 .C", 4)]


def test_new_thresholds_leave_a_raised_alarm_raised(olt):
    fresh_state(olt, "temp-high")
    store_thresholds(olt, **{"temp-high": (20, 19)})
    assert len(reported(olt)) == 1
    store_thresholds(olt, **{"temp-high": (80, 10)})
    assert reported(olt) == []
    store_thresholds(olt, **{"temp-high": (80, 70)})
    assert reported(olt) == [(102, "25.00 .C from above threshold returns to normal")]


def test_an_unwatched_alarm_keeps_its_state(olt):
    fresh_state(olt, "temp-high")
    store_thresholds(olt, **{"temp-high": (20, 19)})
    assert len(reported(olt)) == 1
    assert olt.run("alarm-log alarm temp-high disable record") == ("", 0)
    assert temperature(olt, 100) == []
    set_temperature(olt, 250)
    watch(olt, "temp-high")
    assert reported(olt) == []


def test_failing_actions_do_not_stop_the_monitor(olt):
    fresh_state(olt, "temp-high")
    olt.faults("cli_log ret=-10")
    store_thresholds(olt, **{"temp-high": (20, 19)})
    assert len(reported(olt)) == 1
    olt.faults()
    assert reported(olt) == []


# --- the timer


def test_the_first_pass_reports_values_on_the_normal_side_once(make_olt):
    own = make_olt()
    own.configure("alarm-log alarm temp-low enable record")
    store_thresholds(own, **{"temp-low": (5, 10)})
    start_hurried(own)
    wait_until(lambda: len(of(own.trace(), FETCH)) >= 5, "some passes")
    assert reported(own) == [(103, "25.00 .C from below threshold returns to normal")]


def rounds_of(calls):
    """Passes: arming of the timer, what came before that, and the fetch that it leads to."""
    calls = [call for call in calls if call.thread == "main"]
    arms = [at for at, call in enumerate(calls) if call.op == ARM and call.values["function"] == MONITOR]
    fetches = [call for call in calls if call.op == FETCH]
    return [(calls[at], calls[at - 1], fetch) for at, fetch in zip(arms, fetches)]


def test_passes_come_three_seconds_after_the_end_of_the_one_before(make_olt):
    own = make_olt()
    own.faults(f"{FETCH} delay_ms=500 nth=1000")  # so that the table is looked at
    own.start(trace=True)
    assert "Transceiver Monitor : Enable\r\n" in own.run("show diag monitor", "diagnose")[0]
    own.faults("db_olt_alarm_log_get_action_remote nth=4 count=1 ret=0 delay_ms=700")
    rounds = wait_until(lambda: len(calls := rounds_of(own.trace())) >= 3 and calls, "two passes")
    for arm, end, fetch in rounds:
        assert fetch.time_ms - end.time_ms >= 2950  # the timer runs before its arming is told
        assert arm.values == {"function": MONITOR, "seconds": "3", "argument": "0"}


@pytest.mark.slow
def test_many_passes_leave_nothing_behind(make_olt):
    own = start_hurried(make_olt(), ms=1, env=NO_QUARANTINE)
    store_thresholds(own, **{name: (2, 1) for name in BOARD_ALARMS})
    watch(own, "temp-high")
    plug(own, "gpon", 1, *path())
    enable(own, "gpon 0/1", "pon-vcc-low", 1, 2)

    def passes():
        return len(of(own.trace(), FETCH))

    def resident_kb():
        with open(f"/proc/{own.pid}/statm") as file:
            return int(file.read().split()[1]) * 4

    wait_until(lambda: passes() > 100, "100 passes")
    memory, files, seen = resident_kb(), own.fds(), passes()
    wait_until(lambda: passes() > seen + 500, "500 more")
    assert resident_kb() - memory < 256
    wait_until(lambda: len(own.fds()) == len(files), "the same descriptors")


def test_the_monitor_goes_on_while_the_database_is_away(olt):
    def sensor_reads():
        return [call for call in of(a_pass(olt), LM75_READ) if call.values["addr"] == "0x48"]

    watch(olt, "temp-high")
    olt.faults(f"{FETCH} ret=-4", *(f"db_olt_alarm_log_get_action_{action} ret=-4" for action in ACTIONS),
               "cli_log ret=-4")
    for _ in range(3):
        assert sensor_reads() == []
    olt.faults()
    assert len(sensor_reads()) == 1
