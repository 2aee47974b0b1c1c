# SPDX-License-Identifier: GPL-2.0-or-later
"""Signals: reading the configuration again, rotating the log, ending."""
import os
import signal
from pathlib import Path

import pytest
from calls import of
from monitors import wait_thread
from olt import wait_until
from semaphore_holder import alarms_held, board_held

RUNNING = "show running-config"


def running(olt):
    text, rc = olt.run(RUNNING, "enable")
    assert rc == 0
    return text.splitlines()


def levelled(olt):
    """Lets every log line begin with its level."""
    assert olt.run("log record-priority")[1] == 0


def rewrite(olt, old, new):
    path = olt.state / "conf" / "diagd.conf"
    text = path.read_text()
    assert old in text
    path.write_text(text.replace(old, new))


def test_hangup_reads_the_configuration_on_top_of_what_runs(fresh_olt):
    olt = fresh_olt
    levelled(olt)
    assert olt.run("log timestamp precision 3")[1] == 0
    pid = olt.pid
    rewrite(olt, "hostname olt\n", "hostname renamed\n")
    olt.send_signal(signal.SIGHUP)
    wait_until(lambda: "hostname renamed" in running(olt), "the new name is in force")
    assert "log timestamp precision 3" in running(olt)
    assert olt.pid == pid and olt.daemon.poll() is None
    with olt.telnet() as session:
        assert session.prompt == "renamed> "
    lines = [line for line in olt.log().splitlines() if line.endswith("SIGHUP received")]
    assert len(lines) == 1 and "informational:" in lines[0] and "DIAGD" in lines[0]


def test_hangup_reads_the_default_file_for_no_session(cold_olt):
    cold_olt.start(trace=True)
    before = len(cold_olt.trace())
    cold_olt.send_signal(signal.SIGHUP)
    cold_olt.wait_log("SIGHUP received")
    reads = wait_until(lambda: [call for call in cold_olt.trace()[before:] if call.op == "vty_read_config"],
                       "the configuration is read")
    assert [read.arguments for read in reads] == ['config=0 config_file=NULL default="/etc/frr/diagd.conf"']


def test_hangup_with_a_missing_or_broken_file_leaves_the_daemon_running(fresh_olt):
    olt = fresh_olt
    path = olt.state / "conf" / "diagd.conf"
    text = path.read_bytes()
    for content in (b"hostname one\nno such command at all\nhostname two\n", b"\xff\xfe\0\0" * 100, b"x" * 100000, b""):
        path.write_bytes(content)
        count = olt.log().count("SIGHUP received")
        olt.send_signal(signal.SIGHUP)
        wait_until(lambda: olt.log().count("SIGHUP received") == count + 1, "the signal is seen")
        assert olt.run("show version")[1] == 0
    path.write_bytes(text)


def test_many_hangups_in_a_row_are_survived(fresh_olt):
    olt = fresh_olt
    before = olt.settled_fds()
    for _ in range(50):
        olt.send_signal(signal.SIGHUP)
    olt.wait_log("SIGHUP received")
    assert olt.run("show version")[1] == 0
    olt.wait_no_more_fds(before)


def test_user_signal_1_makes_the_log_file_anew(fresh_olt):
    olt = fresh_olt
    olt.send_signal(signal.SIGHUP)
    olt.wait_log("SIGHUP received")
    log = olt.state / "log" / "diagd.log"
    log.rename(olt.state / "log" / "diagd.log.1")
    pid = olt.pid
    olt.send_signal(signal.SIGUSR1)
    wait_until(log.exists, "the log file is there again")
    olt.send_signal(signal.SIGHUP)
    olt.wait_log("SIGHUP received")
    assert olt.pid == pid and olt.daemon.poll() is None
    assert olt.run("show version")[1] == 0


@pytest.mark.parametrize("number", [signal.SIGTERM, signal.SIGINT], ids=["terminate", "interrupt"])
def test_the_daemon_ends_with_0_and_closes_its_database_once(cold_olt, number):
    cold_olt.start(trace=True)
    levelled(cold_olt)
    before = len(cold_olt.trace())
    assert cold_olt.kill(number) == 0
    lines = [line for line in cold_olt.log().splitlines() if line.endswith("Terminating on signal")]
    assert len(lines) == 1 and "notifications:" in lines[0]
    ops = [call.op for call in cold_olt.trace()[before:]]
    assert ops.count("database_disconnect") == 1
    assert "zclient_stop" not in ops and "zclient_free" not in ops


@pytest.mark.parametrize("number", [signal.SIGTERM, signal.SIGINT], ids=["terminate", "interrupt"])
def test_semaphores_and_alarms_stay_for_the_other_daemons(fresh_olt, number):
    olt = fresh_olt
    olt.run("alarm-log debug send id 77 message kept")
    assert olt.kill(number) == 0
    olt.wait_free("board")
    olt.wait_free("alarm")
    assert olt.exec("test", "-s", "/dev/shm/tq_alarm_log").returncode == 0
    olt.start()
    assert olt.run("show alarm-log")[0].count("    kept\n") == 1


def test_open_sessions_do_not_keep_the_daemon_from_ending(fresh_olt):
    with fresh_olt.vty(), fresh_olt.vty("diagnose"), fresh_olt.telnet():
        assert fresh_olt.kill(signal.SIGTERM) == 0


def test_a_broken_connection_does_not_end_the_daemon(fresh_olt):
    """A client that is gone before its answer: the write fails, it must not be a deadly signal."""
    for _ in range(5):
        session = fresh_olt.vty()
        session.send("show running-config")
        session.send("show version")
        session.close()
    assert fresh_olt.run("show version")[1] == 0


def test_ending_twice_is_ending_once(fresh_olt):
    pid = fresh_olt.pid
    os.kill(pid, signal.SIGTERM)
    try:
        os.kill(pid, signal.SIGTERM)
    except ProcessLookupError:
        pass
    assert fresh_olt.wait_end() == 0


MONITORS = ("fan_monitor", "power_monitor", "reset_monitor", "usb_monitor")


def test_signals_are_the_event_loops_alone(fresh_olt):
    """A monitor that took one would only wake up from a pause; the loop would never hear of it."""
    for name in MONITORS:
        wait_thread(fresh_olt, name)
    blocked = {}
    for task in Path(f"/proc/{fresh_olt.pid}/task").iterdir():
        status = dict(line.split(":\t", 1) for line in (task / "status").read_text().splitlines())
        # A sanitizer has a thread of its own, which bears the program's name as the main thread does.
        is_main = task.name == str(fresh_olt.pid)
        blocked["main" if is_main else status["Name"]] = int(status["SigBlk"], 16)
    for number in (signal.SIGHUP, signal.SIGUSR1, signal.SIGINT, signal.SIGTERM):
        bit = 1 << (number - 1)
        assert [name for name in MONITORS if not blocked[name] & bit] == []
        assert not blocked["main"] & bit


END = pytest.mark.parametrize("number", [signal.SIGTERM, signal.SIGINT], ids=["terminate", "interrupt"])


@END
def test_a_monitor_that_waits_for_the_alarm_store_does_not_keep_the_daemon_from_ending(cold_olt, number):
    olt = cold_olt
    olt.start(trace=True)
    olt.wait_log("Power1 Up")
    with alarms_held(olt):
        olt.boardctl("power", 0x02)
        wait_until(lambda: olt.sem_waiters("alarm") >= 1, "a monitor waits for the store")
        before = len(olt.trace())
        assert olt.run("show version")[1] == 0
        assert olt.kill(number) == 0
        assert len(of(olt.trace()[before:], "database_disconnect")) == 1
        assert olt.sem_value("alarm") == 0, "it is still somebody else's"
    assert olt.log().count("Terminating on signal\n") == 1
    olt.wait_free("alarm")
    olt.start()
    assert olt.run("alarm-log debug send id 77 message after-the-end")[1] == 0
    assert "    after-the-end\n" in olt.run("show alarm-log")[0]


@pytest.mark.slow
def test_a_store_that_comes_free_at_the_end_is_left_whole(fresh_olt):
    """The monitor that waits for it gets it while the daemon ends, or never."""
    olt = fresh_olt
    for supplies in (0x02, 0x03, 0x02, 0x03):
        wait_until(lambda: olt.run("show alarm-log")[0].count("Power2 Up"), "the first look at the supplies")
        with alarms_held(olt) as release:
            olt.boardctl("power", supplies)
            wait_until(lambda: olt.sem_waiters("alarm") >= 1, "a monitor waits for the store")
            olt.send_signal(signal.SIGTERM)
            release()
        assert olt.wait_end() == 0
        olt.wait_free("alarm")
        olt.start()
    *lines, count = olt.run("show alarm-log")[0].splitlines()
    assert count == f"alarm log count: {len(lines)}"
    assert all(line.endswith((" Up", " Down", "!")) for line in lines), lines


@END
def test_a_monitor_that_waits_for_the_board_does_not_keep_the_daemon_from_ending(fresh_olt, number):
    with board_held(fresh_olt):
        wait_until(lambda: fresh_olt.sem_waiters("board") >= 1, "a monitor waits for the board")
        assert fresh_olt.kill(number) == 0
    fresh_olt.wait_free("board")


def test_a_database_that_does_not_let_go_does_not_keep_the_daemon_from_ending(cold_olt):
    cold_olt.faults("database_disconnect delay_ms=600000")
    cold_olt.start(trace=True)
    assert cold_olt.kill(signal.SIGTERM) == 0


@END
def test_a_command_that_waits_for_the_alarm_store_does_not_keep_the_daemon_from_ending(fresh_olt, number):
    with alarms_held(fresh_olt), fresh_olt.vty() as session:
        session.send("show alarm-log tail 1")
        wait_until(lambda: fresh_olt.sem_waiters("alarm") >= 1, "the command waits")
        assert fresh_olt.kill(number) == 0
    fresh_olt.wait_free("alarm")


def test_what_the_event_loop_does_is_finished_before_the_end(cold_olt):
    olt = cold_olt
    olt.faults("misc_cpld_i2c_open thread=main delay_ms=1000")
    olt.start(trace=True)
    before = len(olt.trace())
    with olt.vty("diagnose") as session:
        session.send("show logic version")
        wait_until(lambda: [call for call in of(olt.trace()[before:], "semaphore_p") if call.thread == "main"],
                   "the command has the board")
        olt.send_signal(signal.SIGTERM)
        assert olt.wait_end() == 0
    ops = [call.op for call in olt.trace()[before:] if call.thread == "main"]
    assert ops.index("semaphore_v") < ops.index("database_disconnect")
