# SPDX-License-Identifier: GPL-2.0-or-later
"""The power supply monitor: what it reports of the supplies and of a board that is too hot."""
import pytest
from calls import in_order, of
from monitors import calls_of, hurried, paused_ms, records, start_calls, steps, wait_call, wait_thread
from olt import wait_until

UP1, DOWN1 = (77, 2, "Power1 Up"), (77, 2, "Power1 Down")
UP2, DOWN2 = (78, 2, "Power2 Up"), (78, 2, "Power2 Down")
HOT = (96, 2, "Device temperature is too high,")
NO_STATUS = ("not get power state 2\r\n", "not get power state 2\r")
POLL = ["take", "read status", "give"]


@pytest.fixture
def olt(cold_olt):
    cold_olt.faults(*hurried("power_monitor"))
    return cold_olt


def started(olt, status):
    olt.boardctl("power", status)
    olt.start(trace=True)
    polled(olt, 2)
    return olt


def polled(olt, count=2):
    """Until the status was read some times from now on."""
    wait_call(olt, "power_monitor", "misc_cpld_i2c_power_state_get", since=len(olt.trace()), count=count + 1)


def change(olt, status):
    """The records that a change of the status byte makes."""
    before = len(olt.trace())
    olt.boardctl("power", status)
    polled(olt)
    return records(olt, "power_monitor", before)


def switch(olt, command):
    assert olt.run(command, "diagnose") == ("", 0)


def test_it_starts_with_a_handle_of_its_own_and_a_detached_thread(cold_olt):
    cold_olt.start(trace=True)
    calls = start_calls(cold_olt, "power_monitor")
    assert steps(calls) == ["raise power_monitor", "misc_cpld_i2c_open", "lower", "pthread_create", "pthread_detach"]
    assert of(calls, "misc_cpld_i2c_open")[0].values["bus"] == "0"
    wait_thread(cold_olt, "power_monitor")
    assert "Power Monitor       : Enable" in cold_olt.run("show diag monitor", "diagnose")[0]


def test_without_a_handle_there_is_no_monitor(cold_olt):
    cold_olt.faults("misc_cpld_i2c_open nth=2 ret=-1 errno=13")  # the USB monitor's comes first
    cold_olt.start(trace=True)
    assert cold_olt.stdout() == "open fan failed: Permission denied\r\n"
    assert steps(start_calls(cold_olt, "power_monitor")) == ["raise power_monitor", "misc_cpld_i2c_open", "lower"]
    assert "power_monitor" not in cold_olt.threads()
    assert "Power Monitor       : Disable" in cold_olt.run("show diag monitor", "diagnose")[0]


def test_a_thread_that_is_refused_is_told(cold_olt):
    cold_olt.faults("pthread_create nth=3 ret=-1 errno=11")
    cold_olt.start(trace=True)
    assert cold_olt.stdout() in ("power monitorfailed!\r\n", "power monitorfailed!\r")
    assert "power_monitor" not in cold_olt.threads()
    assert "Power Monitor       : Disable" in cold_olt.run("show diag monitor", "diagnose")[0]


def test_a_positive_result_of_the_threads_creation_is_no_failure(cold_olt):
    cold_olt.faults("pthread_create nth=3 ret=11")
    cold_olt.start(trace=True)
    assert cold_olt.stdout() == ""
    assert "Power Monitor       : Enable" in cold_olt.run("show diag monitor", "diagnose")[0]


@pytest.mark.slow
def test_a_look_every_two_seconds_the_first_after_two(cold_olt):
    cold_olt.start(trace=True)
    begin = of(start_calls(cold_olt, "power_monitor"), "lower")[0].time_ms  # the thread runs before its creation is told
    wait_call(cold_olt, "power_monitor", "misc_cpld_i2c_power_state_get", count=3)
    calls = calls_of(cold_olt, "power_monitor")
    reads = [index for index, call in enumerate(calls) if call.op == "misc_cpld_i2c_power_state_get"][:3]
    for earlier, later in zip([0, *reads], reads):
        assert paused_ms(calls[earlier:later]) == 2000
    times = [begin, *(calls[index].time_ms for index in reads)]
    assert all(later - earlier >= 2000 for earlier, later in zip(times, times[1:]))


@pytest.mark.parametrize("status, expected", [
    (0x03, [UP1, UP2]), (0x01, [UP1]), (0x02, [UP2]), (0x07, [UP1, UP2, HOT]), (0x04, [HOT]), (0xF8, []),
])
def test_the_first_look_reports_what_is_up_and_the_next_ones_nothing(olt, status, expected):
    started(olt, status)
    polled(olt, 3)
    assert records(olt, "power_monitor") == expected


def test_every_change_of_a_supply_is_reported(olt):
    started(olt, 0x03)
    assert change(olt, 0x02) == [DOWN1]
    assert change(olt, 0x03) == [UP1]
    assert change(olt, 0x01) == [DOWN2]
    assert change(olt, 0x02) == [DOWN1, UP2]
    shown = olt.run("show alarm-log")[0]
    for text in ("Power1 Down", "Power1 Up", "Power2 Down", "Power2 Up"):
        assert text in shown


def test_over_temperature_is_reported_alike_when_it_comes_and_when_it_goes(olt):
    started(olt, 0x03)
    for count, status in enumerate((0x07, 0x03), 1):
        assert change(olt, status) == [HOT]
        said = steps(calls_of(olt, "power_monitor"))
        assert said.count(HOT[2]) == said.count("write 14 1") == count
        at = max(index for index, step in enumerate(said) if step == HOT[2])
        assert said[at - 3 : at + 4] == [*POLL, HOT[2], "take", "write 14 1", "give"]
    assert olt.boardctl("reg", "get", 14) == "0x01\n"


def test_a_status_without_a_bit_is_told_each_time_and_forgotten(olt):
    started(olt, 0x03)
    before = len(olt.trace())
    olt.boardctl("power", 0x00)
    wait_until(lambda: olt.stdout().count("not get power state 2\r") >= 3, "each look is told")
    assert set(olt.stdout().splitlines(keepends=True)) <= set(NO_STATUS)
    assert records(olt, "power_monitor", before) == []
    assert change(olt, 0x03) == [], "nothing changed against what was seen last"


def test_a_status_that_cannot_be_read_is_passed_over_in_silence(olt):
    started(olt, 0x03)
    before = len(olt.trace())
    olt.boardctl("fault", "add", "cpld_read", "reg=2")
    polled(olt, 3)
    olt.boardctl("power", 0x02)
    olt.boardctl("fault", "clear")
    wait_until(lambda: records(olt, "power_monitor", before) == [DOWN1], "the change shows afterwards")
    assert olt.stdout() == ""


def test_what_changes_while_it_is_switched_off_is_reported_afterwards(olt):
    started(olt, 0x03)
    switch(olt, "no power monitor")
    wait_call(olt, "power_monitor", "nanosleep", since=len(olt.trace()), count=2)
    before = len(olt.trace())
    olt.boardctl("power", 0x01)
    wait_call(olt, "power_monitor", "nanosleep", since=before, count=5)
    assert steps(calls_of(olt, "power_monitor", before)) == [], "no look at all"
    switch(olt, "power monitor")
    wait_until(lambda: records(olt, "power_monitor", before) == [DOWN2], "the change is reported")
    assert steps(calls_of(olt, "power_monitor", before))[:4] == [*POLL, "Power2 Down"], "at the first look"


def test_a_record_or_a_register_that_fails_changes_nothing(olt):
    olt.boardctl("fault", "add", "cpld_write", "reg=14")
    olt.faults(*hurried("power_monitor"), "cli_log ret=-1")
    started(olt, 0x07)
    polled(olt, 3)
    said = steps(calls_of(olt, "power_monitor"))
    assert said.count("write 14 1") == 1 and said.count("Power1 Up") == 1
    assert "power_monitor" in olt.threads()


def test_its_handle_stays_open_and_the_semaphore_is_paired(olt):
    started(olt, 0x07)
    calls = calls_of(olt, "power_monitor")
    assert of(calls, "misc_cpld_i2c_open|misc_cpld_i2c_close|raise") == []
    held = 0
    for call in calls:
        held += {"semaphore_p": 1, "semaphore_v": -1}.get(call.op, 0)
        assert held in (0, 1)
        if call.op in ("nanosleep", "cli_log"):
            assert held == 0


def test_a_board_that_answers_late_is_waited_for_without_the_command_line(olt):
    started(olt, 0x03)
    olt.boardctl("fault", "add", "cpld_read", "reg=2", "delay=50")
    polled(olt, 2)
    assert olt.run("show version")[1] == 0
    in_order(calls_of(olt, "power_monitor"), r"cli_log id=77 ", r"cli_log id=78 ")
