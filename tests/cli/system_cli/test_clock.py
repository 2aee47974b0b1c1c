# SPDX-License-Identifier: GPL-2.0-or-later
"""The clock and the running time.  The clock that is set is the daemon's own in its box: programs that record take
the place of date and hwclock, and move what the daemon takes for the time."""
import calendar
import contextlib
import json
import os
import re
import struct
import time

import pytest
from calls import in_order, of
from olt import DEADLINE_S, OLT, wait_until
from proc_files import bound

ZONE_AHEAD_S = 3 * 3600
# The real date, under another name, reckons how far the asked time is ahead.
DATE = """#!/bin/sh
id -u >>/var/log/users
printf 'date' >>/var/log/programs
printf ' <%s>' "$@" >>/var/log/programs
echo >>/var/log/programs
wanted=$(/var/log/real-date -d "$2" +%s) || exit 1
echo $((wanted - $(/var/log/real-date +%s))) >/var/log/clock
echo "the clock is set"
"""
HWCLOCK = """#!/bin/sh
id -u >>/var/log/users
echo "hwclock $*" >>/var/log/programs
"""
# What the daemon takes for the time before it is set, whatever day it is on the machine: Mon Jun  1 12:00:00 2026 UTC.
START = 1780315200
SET = "time set year 2024 month 3 day 5 hour 7 minute 8 second 9"


@pytest.fixture(scope="module")
def olt(make_olt):
    olt = make_olt()
    olt.faults()
    (olt.state / "log" / "real-date").write_bytes(open("/usr/bin/date", "rb").read())
    (olt.state / "log" / "real-date").chmod(0o755)
    return olt.start(trace=True, env={"CALL_SHIM_CLOCK": "/var/log/clock", "TZ": "XXX-3"})


@pytest.fixture
def programs(olt):
    """What date and hwclock were called with, in their order.  The clock begins at START, and is the machine's again
    afterwards."""
    (olt.state / "log" / "clock").write_text(f"{START - int(time.time())}\n")
    with bound(olt, "/usr/bin/date", DATE, mode=0o755), bound(olt, "/usr/sbin/hwclock", HWCLOCK, mode=0o755):
        log = olt.state / "log" / "programs"
        yield lambda: log.read_text().splitlines() if log.exists() else []
        for name in ("programs", "clock", "users"):
            (olt.state / "log" / name).unlink(missing_ok=True)


def calls_during(olt, command):
    mark = len(olt.trace())
    text, rc = olt.run(command)
    assert rc == 0
    return text, [call for call in olt.trace()[mark:] if call.thread == "main"]


def stored(olt):
    """The difference as the database has it."""
    done = olt.exec(OLT, "sysrepocfg", "--export", "--module=olt-ntp", "--format=xml", check=True)
    return int(re.search(r"<ntp-diff-time>(-?\d+)</ntp-diff-time>", done.stdout)[1])


def seconds(text):
    """An asctime of the daemon as seconds since the epoch."""
    return calendar.timegm(time.strptime(text, "%a %b %d %H:%M:%S %Y")) - ZONE_AHEAD_S


# --- setting it


def test_the_clock_is_set_and_then_the_hardware_clock(olt, programs):
    text, calls = calls_during(olt, SET)
    assert [call.values["line"] for call in of(calls, "system|system_cmd|pal_system")] == [
        "date -s '20240305 7:8:9' >> /dev/null", "hwclock -w"]
    assert programs() == ["date <-s> <20240305 7:8:9>", "hwclock -w"]
    assert (olt.state / "log" / "users").read_text() == "0\n0\n"  # only root may set them
    # Some time may have passed before it was shown.
    shown = re.fullmatch(r"set time : (Tue Mar  5 07:0[89]:\d\d 2024)\n\r\n", text)
    assert shown and 0 <= seconds(shown[1]) - seconds("Tue Mar  5 07:08:09 2024") <= DEADLINE_S


def test_the_programs_have_none_of_the_daemons_descriptors(olt):
    listing = "#!/bin/bash\nfor fd in /proc/$$/fd/*; do readlink $fd; done >>/var/log/open\n"
    with bound(olt, "/usr/bin/date", listing, mode=0o755), bound(olt, "/usr/sbin/hwclock", listing, mode=0o755), \
            olt.telnet():
        assert olt.run(SET)[1] == 0
    opened = (olt.state / "log" / "open").read_text()
    assert opened.count("/dev/null") >= 2
    assert not re.search(r"sr_|socket:|pipe:|/diagd\.", opened), opened


def test_how_far_the_clock_was_moved_is_stored_behind_both_programs(olt, programs):
    text, calls = calls_during(olt, SET)
    order = [call for call in calls if re.fullmatch("time|system|db_olt_ntp.*", call.op)]
    if not of(calls, "db_olt_alarm_log_show_xml_threshold"):  # a pass of the thresholds has its own
        assert not [call for call in calls if call.op in ("raise", "lower", "seteuid")]
    assert [call.op for call in order] == ["time", "system", "system", "time", "db_olt_ntp_set_ntp_diff_time"]
    before, _, _, after, store = order
    difference = int(after.result) - int(before.result)
    assert store.result == "0" and store.values["width"] == "4" and store.values["apply"] == "1", store
    assert stored(olt) == difference
    assert abs(difference - (seconds("Tue Mar  5 07:08:09 2024") - START)) <= DEADLINE_S


def test_what_goes_beyond_32_bits_is_cut(olt, programs):
    _, calls = calls_during(olt, "time set year 2099 month 12 day 31 hour 23 minute 59 second 59")
    before, after = (int(call.result) for call in of(calls, "time"))
    assert programs()[0] == "date <-s> <20991231 23:59:59>"
    moved = seconds("Thu Dec 31 23:59:59 2099") - START
    assert moved > 0x7FFFFFFF and abs(after - before - moved) <= DEADLINE_S
    assert stored(olt) == after - before - (1 << 32)


def test_the_smallest_values_are_padded_in_the_date_only(olt, programs):
    assert olt.run("time set year 2000 month 1 day 1 hour 0 minute 0 second 0")[1] == 0
    assert programs() == ["date <-s> <20000101 0:0:0>", "hwclock -w"]


def test_a_day_that_does_not_exist_is_dates_to_refuse(olt, programs):
    text, calls = calls_during(olt, "time set year 2023 month 2 day 31 hour 1 minute 2 second 3")
    assert programs() == ["date <-s> <20230231 1:2:3>", "hwclock -w"]
    before, after = (int(call.result) for call in of(calls, "time"))
    assert text.startswith("set time : ") and text.endswith("\n\r\n") and stored(olt) == after - before


@pytest.mark.parametrize("command", [
    SET.replace("2024", "1999"), SET.replace("2024", "2100"), SET.replace("month 3", "month 0"),
    SET.replace("month 3", "month 13"), SET.replace("day 5", "day 32"), SET.replace("hour 7", "hour 24"),
    SET.replace("minute 8", "minute 60"), SET.replace("second 9", "second 60"), SET.replace("second 9", "second -1"),
    SET.replace("second 9", "second 9;reboot"), SET.replace("second 9", "second $(reboot)"),
    SET.replace("second 9", "second 9'"), SET.replace("2024", "2024`id`"), SET.replace("day 5", "day 5|id"),
    SET.replace("hour 7", "hour 0x7"), SET.replace("hour 7", "hour 7:1"), SET + " 10", SET.replace(" second 9", ""),
])
def test_what_is_no_time_runs_nothing(olt, programs, command):
    mark = len(olt.trace())
    assert olt.run(command)[1] != 0
    assert programs() == [] and not of(olt.trace()[mark:], "system|db_olt_ntp.*")


@pytest.mark.parametrize("words, asked", [
    ("year 02024 month 03 day 05 hour 07 minute 08 second 009", "20240305 7:8:9"),
    ("year 2024 month 11 day 12 hour 13 minute 14 second 15", "20241112 13:14:15"),
])
def test_numbers_are_decimal_however_they_are_written(olt, programs, words, asked):
    assert olt.run(f"time set {words}")[1] == 0
    assert programs()[0] == f"date <-s> <{asked}>"


@contextlib.contextmanager
def away(olt, *paths):
    """While it lasts, these programs cannot be run."""
    with contextlib.ExitStack() as stack:
        for path in paths:
            stack.enter_context(bound(olt, path, "", mode=0))
        yield


@pytest.mark.parametrize("missing", [["date", "hwclock"], ["date"], ["hwclock"]], ids=" ".join)
def test_without_a_program_the_difference_is_stored_and_the_time_shown(olt, programs, missing):
    said = len(olt.stderr())
    with away(olt, *(f"/usr/{'bin' if name == 'date' else 'sbin'}/{name}" for name in missing)):
        text, calls = calls_during(olt, SET)
    before, after = (int(call.result) for call in of(calls, "time"))
    in_order(calls, "system .*date", "system .*hwclock", "time", "db_olt_ntp_set_ntp_diff_time")
    assert stored(olt) == after - before
    assert (after < before) == ("date" not in missing)
    shown = re.fullmatch(r"set time : (.*)\n\r\n", text)
    assert seconds(shown[1]) == after
    assert [name for name in ("date", "hwclock") if f"{name}: " in olt.stderr()[said:]] == missing  # by the shell


@pytest.mark.parametrize("fault", ["system ret=-1 errno=11", "system nth=2 ret=-1 errno=12"])
def test_a_shell_that_cannot_be_started_changes_nothing_else(olt, programs, fault):
    olt.faults(fault)
    try:
        text, calls = calls_during(olt, SET)
    finally:
        olt.faults()
    assert text.startswith("set time : ") and of(calls, "db_olt_ntp_set_ntp_diff_time")


def test_a_difference_that_cannot_be_stored_is_no_obstacle(olt, programs):
    olt.faults("db_olt_ntp_set_ntp_diff_time ret=-1")
    try:
        text, _ = calls_during(olt, SET)
    finally:
        olt.faults()
    assert text.startswith("set time : Tue Mar  5 07:0")


def test_nobody_in_a_box_sets_the_clock_of_the_machine(olt):
    # Nothing is asked of the machine's clock that it has not already.
    script = "import time; time.clock_settime(time.CLOCK_REALTIME, time.clock_gettime(time.CLOCK_REALTIME))"
    for way in (olt.inside(), olt.inside("nsenter", f"--target={olt.exec('pidof', 'diagd').stdout.strip()}", "--all")):
        done = olt.exec(*way[len(olt.inside()):], "/usr/bin/python3", "-c", script)
        assert done.returncode != 0 and "PermissionError" in done.stderr
    capabilities = re.search(r"^CapBnd:\s*([0-9a-f]+)$", open(f"/proc/{olt.pid}/status").read(), re.MULTILINE)
    assert int(capabilities[1], 16) >> 25 & 1 == 0  # CAP_SYS_TIME


# --- showing it


def test_the_time_is_shown_in_the_zone_of_the_system_with_the_running_time(olt):
    with bound(olt, "/proc/uptime", "93784.55 1.0\n"):
        text, calls = calls_during(olt, "show time")
    shown = re.fullmatch(r"The current date/time is : (\w{3} \w{3} [ \d]\d \d\d:\d\d:\d\d \d{4})\n\r\n"
                         r"Syetem Running Time:    1 Days 2 Hours 3 Minutes 4 Seconds\r\n", text)
    assert seconds(shown[1]) == int(of(calls, "time")[0].result)


def zone_file(ahead_s):
    """A time zone (RFC 8536) with one offset for all times."""
    return b"TZif" + bytes(16) + struct.pack(">6L", 0, 0, 0, 0, 1, 4) + struct.pack(">lBB", ahead_s, 0, 0) + b"XXX\0"


def shown_time(olt):
    shown = json.loads(olt.run("show time json")[0])
    return calendar.timegm(tuple(shown["time" + part] for part in ("Year", "Month", "Day", "Hour", "Minute", "Second")))


def recorded_time(olt):
    """Of an alarm that is raised now."""
    olt.run("alarm-log debug send id 77 message now")
    record = re.match(r"\[(.*)\]", olt.run("show alarm-log tail 1")[0])
    return calendar.timegm(time.strptime(record[1], "%Y/%m/%d %H:%M:%S"))


@pytest.mark.parametrize("source", [shown_time, recorded_time])
def test_another_zone_of_the_system_is_followed(fresh_olt, source):
    for hours in (1, 3, 13):
        with bound(fresh_olt, "/etc/localtime", zone_file(3600 * hours)) as file:
            os.utime(file, (hours, hours))  # the library compares whole seconds
            wait_until(lambda: abs(source(fresh_olt) - time.time() - 3600 * hours) < 600, "the time of that zone")


def test_the_time_in_json_is_six_numbers(olt):
    text, calls = calls_during(olt, "show time json")
    now = time.gmtime(int(of(calls, "time")[0].result) + ZONE_AHEAD_S)
    assert text == (f'{{\n  "timeYear":{now.tm_year},\n  "timeMonth":{now.tm_mon},\n  "timeDay":{now.tm_mday},\n'
                    f'  "timeHour":{now.tm_hour},\n  "timeMinute":{now.tm_min},\n  "timeSecond":{now.tm_sec}\n}}\r\n')


def test_the_time_shown_is_the_one_that_was_set(olt, programs):
    assert olt.run(SET)[1] == 0
    shown = json.loads(olt.run("show time json")[0])
    assert [shown["time" + part] for part in ("Year", "Month", "Day", "Hour")] == [2024, 3, 5, 7]


@pytest.mark.parametrize("uptime, running", [
    ("93784.55 1.0\n", "1 Days 2 Hours 3 Minutes 4 Seconds"),
    ("0.99 0.50\n", "0 Days 0 Hours 0 Minutes 0 Seconds"),
    ("86399.99 1.0\n", "0 Days 23 Hours 59 Minutes 59 Seconds"),
    ("34560000.00 1.0\n", "400 Days 0 Hours 0 Minutes 0 Seconds"),
])
def test_the_running_time_is_told_in_days_hours_minutes_and_seconds(olt, uptime, running):
    with bound(olt, "/proc/uptime", uptime):
        assert olt.run("show sys running-time") == (f"Syetem Running Time:    {running}\r\n", 0)


def test_the_running_time_in_json_has_the_current_time_with_its_line_feed(olt):
    with bound(olt, "/proc/uptime", "93784.55 1.0\n"):
        text, calls = calls_during(olt, "show sys running-time json")
    shown = re.fullmatch(r'\{\n  "currentTime":"(.*)\\n",\n  "runningTime":"1 Days 2 Hours 3 Minutes 4 Seconds"\n\}\r\n', text)
    assert seconds(shown[1]) == int(of(calls, "time")[0].result)


@pytest.mark.parametrize("content, mode, error", [
    ("93784.55 1.0\n", 0, "Permission denied"), ("", 0o644, "Invalid argument"), ("now\n", 0o644, "Invalid argument")])
def test_a_running_time_that_cannot_be_read_is_said_and_counts_as_nothing(olt, content, mode, error):
    said = f"system_running_time_get error: {error}\r\n"
    before = olt.stdout().count(said)
    with bound(olt, "/proc/uptime", content, mode=mode):
        assert olt.run("show sys running-time") == ("Syetem Running Time:    0 Days 0 Hours 0 Minutes 0 Seconds\r\n", 0)
        text, rc = olt.run("show time")
    assert rc == 0 and text.endswith("Syetem Running Time:    0 Days 0 Hours 0 Minutes 0 Seconds\r\n")
    assert olt.stdout().count(said) == before + 2
