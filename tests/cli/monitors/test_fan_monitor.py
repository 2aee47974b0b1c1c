# SPDX-License-Identifier: GPL-2.0-or-later
"""The fan monitor: what it does to the board, when, and what it makes of a board that fails."""
import json

import pytest
from semaphore_holder import board_held
from calls import in_order, of
from monitors import calls_of, hurried, paused_ms, records, start_calls, steps, wait_call, wait_passes, wait_thread
from olt import wait_until

ALARM_OPEN, ALARM_CLOSE = (0, 1, "Open!"), (0, 0, "Close!")


@pytest.fixture
def olt(cold_olt):
    """Its fan monitor in a hurry; the temperature of the test's choice comes before the start."""
    cold_olt.faults(*hurried("fan_monitor"))
    return cold_olt


def at(olt, tenths):
    """A pass that began after the temperature was set is over."""
    olt.boardctl("temp", "set", tenths)
    wait_passes(olt, "fan_monitor")


def fans(olt):
    return json.loads(olt.run("show fan json")[0])


def is_open(olt):
    return olt.boardctl("reg", "get", 4) == "0x01\n"


def test_fan_control_starts_with_settings_commands_buses_thread(cold_olt):
    cold_olt.start(trace=True)
    calls = calls_of(cold_olt, "main")
    in_order(calls, r'install_node node=97 name="fan" parent=0 prompt="" ', r"install_element node=4 cmd=fan_temperature_ctrl_cmd ",
             r"install_element node=4 cmd=fan_mode_ctrl_cmd ", r"install_element node=4 cmd=fan_speed_ctrl_cmd ",
             r"install_element node=4 cmd=show_temperature_cmd ", r"install_element node=4 cmd=show_fan_cmd ",
             r"install_element node=4 cmd=show_fan_running_config_cmd ", r'raise reason="fan_monitor_init"',
             r"misc_i2c_device_init bus=2 ", r"misc_i2c_device_init bus=0 ", r"lower ", r"pthread_create ", r"pthread_detach ",
             r'raise reason="usb_monitor"')
    wait_thread(cold_olt, "fan_monitor")
    assert "FAN Monitor         : Enable" in cold_olt.run("show diag monitor", "diagnose")[0]
    assert not [call for call in of(calls, "install_element") if call.values["node"] == "97"]


@pytest.mark.parametrize("bus, opened", [(1, 1), (2, 2)])
def test_without_a_bus_there_is_no_fan_control_but_its_commands(cold_olt, bus, opened):
    cold_olt.faults(f"misc_i2c_device_init nth={bus} ret=-1 errno=6")
    cold_olt.start(trace=True)
    calls = start_calls(cold_olt, "fan_monitor_init")
    assert steps(calls) == ["raise fan_monitor_init", "lower"]
    assert len(of(calls, "misc_i2c_device_init")) == opened
    assert "fan_monitor" not in cold_olt.threads()
    assert "FAN Monitor         : Disable" in cold_olt.run("show diag monitor", "diagnose")[0]
    assert cold_olt.run("show fan json")[1] == 0
    assert cold_olt.stdout() == ""


def test_a_thread_that_is_refused_is_told(cold_olt):
    cold_olt.faults("pthread_create nth=1 ret=-1 errno=11")
    cold_olt.start(trace=True)
    assert cold_olt.stdout() in ("fan_monitor_thread init failed!\r\n", "fan_monitor_thread init failed!\r")
    assert "fan_monitor" not in cold_olt.threads()
    assert "FAN Monitor         : Disable" in cold_olt.run("show diag monitor", "diagnose")[0]
    wait_thread(cold_olt, "power_monitor")


def test_a_positive_result_of_the_threads_creation_is_no_failure(cold_olt):
    cold_olt.faults("pthread_create nth=1 ret=11")
    cold_olt.start(trace=True)
    assert cold_olt.stdout() == ""
    assert "FAN Monitor         : Enable" in cold_olt.run("show diag monitor", "diagnose")[0]
    assert steps(start_calls(cold_olt, "fan_monitor_init"))[-1] == "pthread_create", "nothing to detach"


@pytest.mark.slow
def test_the_first_pass_comes_after_5_seconds_and_the_next_ones_every_5(cold_olt):
    cold_olt.start(trace=True)
    begin = of(start_calls(cold_olt, "fan_monitor_init"), "lower")[0].time_ms  # the thread runs before its creation is told
    wait_call(cold_olt, "fan_monitor", "misc_i2c_read", count=2)
    calls = calls_of(cold_olt, "fan_monitor")
    first, second = [index for index, call in enumerate(calls) if call.op == "misc_i2c_read"][:2]
    assert paused_ms(calls[:first]) == paused_ms(calls[first:second]) == 5000
    assert calls[first].time_ms - begin >= 5000
    assert calls[second].time_ms - calls[first].time_ms >= 5000


def test_a_cold_board_closes_the_fans_once_and_sets_the_speed_every_pass(olt):
    olt.boardctl("temp", "set", 270)
    olt.start(trace=True)
    wait_call(olt, "fan_monitor", "misc_i2c_read", count=4)
    said = steps(calls_of(olt, "fan_monitor"))
    speed = ["read sensor", "take", "write 5 0", "give"]
    assert said[:12] == [*speed, "take", "write 4 0", "give", "Close!", *speed]
    assert said[12:16] == speed
    assert records(olt, "fan_monitor") == [ALARM_CLOSE]
    assert (fans(olt)["currentFanMode"], fans(olt)["currentFanSpeed"]) == ("close", "low")


def test_a_warm_board_opens_the_fans_once(olt):
    olt.boardctl("temp", "set", 360)
    olt.start(trace=True)
    wait_call(olt, "fan_monitor", "misc_i2c_read", count=4)
    said = steps(calls_of(olt, "fan_monitor"))
    assert said[:8] == ["read sensor", "take", "write 5 0", "give", "take", "write 4 1", "give", "Open!"]
    assert said.count("write 4 1") == 1
    assert records(olt, "fan_monitor") == [ALARM_OPEN]
    assert fans(olt)["currentFanMode"] == "open"
    assert "Open!" in olt.run("show alarm-log")[0]


@pytest.mark.parametrize("tenths, level, name", [(500, 0, "low"), (501, 1, "medium"), (650, 1, "medium"), (651, 2, "high")])
def test_the_automatic_speed_follows_the_temperature(olt, tenths, level, name):
    olt.boardctl("temp", "set", tenths)
    olt.start(trace=True)
    wait_call(olt, "fan_monitor", "misc_cpld_i2c_set_byte", count=2)
    assert f"write 5 {level}" in steps(calls_of(olt, "fan_monitor"))
    assert olt.boardctl("reg", "get", 5) == f"0x{level:02x}\n"
    assert fans(olt)["currentFanSpeed"] == name


def test_a_hot_period_is_followed_by_longer_cooling(olt):
    olt.boardctl("temp", "set", 360)
    olt.start(trace=True)
    wait_call(olt, "fan_monitor", "cli_log")
    for tenths, expected in [(400, True), (321, True), (320, False), (321, True), (320, False), (350, True)]:
        at(olt, tenths)
        assert is_open(olt) is expected, tenths
    olt.run("fan temperature 35")
    for tenths, expected in [(271, True), (270, False)]:
        at(olt, tenths)
        assert is_open(olt) is expected, tenths
    assert set(records(olt, "fan_monitor")) == {ALARM_OPEN, ALARM_CLOSE}


def test_a_temperature_command_is_obeyed_at_the_next_pass(olt):
    olt.boardctl("temp", "set", 300)
    olt.start(trace=True)
    wait_call(olt, "fan_monitor", "cli_log")
    at(olt, 300)
    was_open = is_open(olt)  # 30.0 is within the hysteresis of 35.0
    olt.run("fan temperature 60")
    at(olt, 300)
    assert (was_open, is_open(olt)) == (True, False)
    olt.run("fan temperature 30")
    at(olt, 300)
    assert is_open(olt)


def test_fixed_mode_and_speed_need_no_sensor(olt):
    olt.configure("fan mode open", "fan speed high")
    olt.faults()  # the configuration is read before the first pass
    olt.start(trace=True)
    olt.faults(*hurried("fan_monitor"))
    wait_call(olt, "fan_monitor", "cli_log")
    wait_passes(olt, "fan_monitor", 4)
    assert steps(calls_of(olt, "fan_monitor")) == ["take", "write 4 1", "give", "Open!"]
    assert olt.boardctl("reg", "get", 5) == "0x02\n"
    olt.run("fan mode close")
    wait_until(lambda: records(olt, "fan_monitor")[-1] == ALARM_CLOSE, "the fans close")
    assert not is_open(olt)


@pytest.mark.parametrize("setting", ["fan mode open", "fan speed high"])
def test_either_being_automatic_needs_the_sensor(olt, setting):
    olt.configure(setting)
    olt.start(trace=True)
    wait_call(olt, "fan_monitor", "misc_i2c_read", count=2)


def test_speed_auto_is_replaced_with_a_level_at_the_next_pass(olt):
    olt.start(trace=True)
    olt.run("fan speed high")
    before = len(olt.trace())
    olt.run("fan speed auto")

    def written():
        return [int(call.values["val"], 0) for call in of(olt.trace()[before:], "misc_cpld_i2c_set_byte")
                if call.values["reg"] == "5"]

    wait_until(lambda: len(written()) >= 2, "the level")
    assert written()[:2] == [5, 0]
    assert olt.boardctl("reg", "get", 5) == "0x00\n"


def test_its_handle_stays_open(olt):
    olt.start(trace=True)
    wait_call(olt, "fan_monitor", "misc_cpld_i2c_set_byte", count=3)
    assert of(calls_of(olt, "fan_monitor"), "misc_cpld_i2c_open|misc_cpld_i2c_close|raise") == []


def test_switched_off_it_touches_nothing(olt):
    olt.start(trace=True)
    wait_call(olt, "fan_monitor", "cli_log")
    olt.run("no fan monitor", "diagnose")
    wait_passes(olt, "fan_monitor", 1)
    before = len(olt.trace())
    wait_passes(olt, "fan_monitor", 2)
    assert steps(calls_of(olt, "fan_monitor", before)) == []
    before = len(olt.trace())
    olt.run("fan monitor", "diagnose")
    wait_call(olt, "fan_monitor", "misc_i2c_read", since=before)


@pytest.mark.slow
def test_switched_on_again_it_is_back_within_a_second(cold_olt):
    cold_olt.start(trace=True)
    cold_olt.run("no fan monitor", "diagnose")
    wait_until(lambda: paused_ms(calls_of(cold_olt, "fan_monitor")) >= 7000, "the time of its first pass is past")
    assert steps(calls_of(cold_olt, "fan_monitor")) == []
    before = len(cold_olt.trace())
    cold_olt.run("fan monitor", "diagnose")
    wait_call(cold_olt, "fan_monitor", "misc_i2c_read")
    calls = cold_olt.trace()[before:]
    answered = next((i for i, call in enumerate(calls) if call.op == "db_disconnect_free_with_vty"), len(calls))
    read = next(i for i, call in enumerate(calls) if call.op == "misc_i2c_read" and call.thread == "fan_monitor")
    pauses = [call for call in calls[answered:read] if call.op == "nanosleep" and call.thread == "fan_monitor"]
    # The pause that was on when the command came, and one that had ended without being written down yet.
    assert len([call for call in pauses if call.result == "0"]) <= 2


def test_a_register_that_refuses_is_taken_as_written(olt):
    olt.boardctl("temp", "set", 360)
    olt.boardctl("fault", "add", "cpld_write")
    olt.start(trace=True)
    wait_call(olt, "fan_monitor", "misc_i2c_read", count=3)
    assert steps(calls_of(olt, "fan_monitor")).count("write 4 1") == 1
    assert fans(olt)["currentFanMode"] == "open"
    assert records(olt, "fan_monitor") == [ALARM_OPEN]


def test_a_sensor_that_breaks_leaves_the_fans_as_the_last_reading_wants_them(olt):
    olt.boardctl("temp", "set", 660)
    olt.start(trace=True)
    wait_call(olt, "fan_monitor", "cli_log")
    olt.boardctl("temp", "fail", "always")
    at(olt, 200)
    assert is_open(olt)
    assert olt.boardctl("reg", "get", 5) == "0x02\n"
    olt.boardctl("temp", "fail", "off")
    wait_until(lambda: not is_open(olt), "the sensor is heard again")


def test_a_sensor_that_is_dead_from_the_start_opens_the_fans_until_it_answers(olt):
    olt.boardctl("temp", "fail", "always")
    olt.configure("fan temperature 80")
    olt.start(trace=True)
    wait_call(olt, "fan_monitor", "cli_log")
    assert records(olt, "fan_monitor") == [ALARM_OPEN]
    assert (olt.boardctl("reg", "get", 4), olt.boardctl("reg", "get", 5)) == ("0x01\n", "0x02\n")
    assert olt.run("show temperature") == (" Current temperature: 127.0 .C\r\n", 0)
    olt.boardctl("temp", "set", 200)
    olt.boardctl("temp", "fail", "off")
    wait_until(lambda: not is_open(olt), "the sensor is heard")


def test_a_silent_board_leaves_the_daemon_usable_and_the_thread_alive(olt):
    olt.start(trace=True)
    wait_call(olt, "fan_monitor", "cli_log")
    olt.boardctl("fault", "add", "any", "errno=110")
    wait_passes(olt, "fan_monitor", 3)
    assert olt.run("show version")[1] == 0
    assert "fan_monitor" in olt.threads()
    olt.boardctl("fault", "clear")
    at(olt, 700)
    assert is_open(olt)


def test_the_semaphore_is_paired_and_free_while_it_sleeps(olt):
    olt.start(trace=True)
    wait_call(olt, "fan_monitor", "misc_i2c_read", count=6)
    held = 0
    for call in calls_of(olt, "fan_monitor"):
        if call.op == "semaphore_p":
            held += 1
        elif call.op == "semaphore_v":
            held -= 1
        elif call.op in ("nanosleep", "misc_i2c_read", "cli_log"):
            assert held == 0
        assert held in (0, 1)


def test_the_end_of_the_daemon_leaves_the_fans_as_they_are(olt):
    olt.boardctl("temp", "set", 660)
    olt.start(trace=True)
    wait_call(olt, "fan_monitor", "cli_log")
    assert olt.stop() == 0
    assert (olt.boardctl("reg", "get", 4), olt.boardctl("reg", "get", 5)) == ("0x01\n", "0x02\n")


@pytest.mark.slow
def test_the_loop_closes_on_a_board_that_is_heated(olt):
    olt.start(trace=True)
    olt.boardctl("time", "scale", 200)
    olt.boardctl("heat", 30)
    wait_until(lambda: is_open(olt), "the fans open")

    def temperature():
        return float(olt.run("show temperature")[0].split()[2])

    wait_until(lambda: temperature() > 50, "30 W are more than slow fans can hold at 50 degrees")
    wait_passes(olt, "fan_monitor", 10)
    assert temperature() < 60, "without the fans it would be 85"
    olt.boardctl("heat", 0)
    wait_until(lambda: records(olt, "fan_monitor")[-1] == ALARM_CLOSE, "the fans close")
    assert not is_open(olt)


def test_a_speed_chosen_while_the_sensor_is_read_stands(cold_olt):
    cold_olt.faults(*hurried("fan_monitor"), "misc_i2c_read thread=fan_monitor delay_ms=1500")
    cold_olt.start(trace=True)
    wait_call(cold_olt, "fan_monitor", "misc_i2c_read")
    mark = len(cold_olt.trace())
    wait_call(cold_olt, "fan_monitor", "nanosleep", since=mark, count=4)  # the next reading is about to begin
    assert cold_olt.run("fan speed high") == ("", 0)
    wait_call(cold_olt, "fan_monitor", "misc_i2c_read", since=mark)
    wait_passes(cold_olt, "fan_monitor", count=1)
    assert cold_olt.boardctl("reg", "get", 5) == "0x02\n"
    assert fans(cold_olt)["currentFanSpeed"] == "high"


def test_a_speed_chosen_while_a_pass_waits_for_the_board_stands(cold_olt):
    cold_olt.faults("nanosleep thread=fan_monitor ret=0 delay_ms=300")  # time to have the command wait first
    cold_olt.start(trace=True)
    assert cold_olt.run("no power monitor", "diagnose") == ("", 0)  # it would wait as well
    wait_call(cold_olt, "fan_monitor", "misc_cpld_i2c_set_byte", since=len(cold_olt.trace()))
    with board_held(cold_olt) as give_back, cold_olt.vty() as session:
        session.send("fan speed high")
        wait_until(lambda: cold_olt.sem_waiters("board") == 2, "the command and then the pass wait")
        give_back()
        assert session.receive() == ("", 0)
    wait_passes(cold_olt, "fan_monitor", count=1)
    assert cold_olt.boardctl("reg", "get", 5) == "0x02\n"
    assert fans(cold_olt)["currentFanSpeed"] == "high"


SLOW_SENSOR = "misc_i2c_read thread=fan_monitor ret=-1 errno=5 delay_ms=700"


@pytest.mark.parametrize("command", ["fan mode open", "fan temperature 20"])
def test_a_mode_or_temperature_chosen_while_the_sensor_is_read_is_in_force_at_the_end_of_the_pass(olt, command):
    olt.boardctl("temp", "set", 270)
    olt.start(trace=True)
    wait_call(olt, "fan_monitor", "cli_log")
    assert records(olt, "fan_monitor") == [ALARM_CLOSE]
    olt.faults(*hurried("fan_monitor"), SLOW_SENSOR)
    before = len(olt.trace())
    wait_until(lambda: [call for call in of(calls_of(olt, "fan_monitor", before), "misc_i2c_read") if call.result == "-1"],
               "the first of three attempts fails")
    assert olt.run(command) == ("", 0)
    chosen = len(olt.trace())
    wait_until(lambda: ALARM_OPEN in records(olt, "fan_monitor"), "the fans open")
    said = steps(calls_of(olt, "fan_monitor", chosen))
    attempts = said[: said.index("Open!")].count("read sensor")
    assert attempts <= 3, f"what is left of one pass, whose attempts are three: {said}"


def test_a_mode_chosen_while_a_pass_waits_for_the_board_stands(cold_olt):
    cold_olt.faults("nanosleep thread=fan_monitor ret=0 delay_ms=100")
    cold_olt.configure("fan speed high")  # the board is asked for the fans' power alone
    cold_olt.boardctl("temp", "set", 270)
    cold_olt.start(trace=True)
    assert cold_olt.run("no power monitor", "diagnose") == ("", 0)  # it would wait as well
    wait_call(cold_olt, "fan_monitor", "cli_log")
    with board_held(cold_olt) as give_back:
        cold_olt.boardctl("temp", "set", 360)
        wait_until(lambda: cold_olt.sem_waiters("board") == 1, "the pass waits")
        assert cold_olt.run("fan mode close") == ("", 0)
        give_back()
    wait_passes(cold_olt, "fan_monitor", count=1)
    assert records(cold_olt, "fan_monitor") == [ALARM_CLOSE]
    assert not is_open(cold_olt)
