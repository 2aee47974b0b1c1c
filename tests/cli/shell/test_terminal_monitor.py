# SPDX-License-Identifier: GPL-2.0-or-later
"""The daemon's log as it is written: diagsh -m, and `terminal monitor` of a session."""
import contextlib
import os
import re
import select
import signal
import subprocess
import time
from pathlib import Path

import pytest
from olt import BUILD, wait_until
from vty import DEADLINE_S, SUCCESS

DIAGSH = str(BUILD / "bin" / "diagsh")
UNAVAILABLE, USAGE = 69, 64
STAMP = re.compile(r"\d{4}/\d\d/\d\d \d\d:\d\d:\d\d DIAGD: ")


def sockets_of(pid):
    return sum(link.startswith("socket:") for link in descriptors(pid))


def descriptors(pid):
    """What the open descriptors of the process lead to; one that it closes meanwhile is left out."""
    for entry in Path(f"/proc/{pid}/fd").iterdir():
        with contextlib.suppress(FileNotFoundError):
            yield os.readlink(entry)


class Monitor:
    """diagsh -m from outside the box, as an operator runs it."""

    def __init__(self, olt):
        self.process = subprocess.Popen([DIAGSH, "-s", str(olt.state), "-m"], stdin=subprocess.DEVNULL,
                                        stdout=subprocess.PIPE, stderr=subprocess.PIPE)
        self.seen = b""
        # Its session and the log; the daemon sends to the latter before it hands it over.
        wait_until(lambda: sockets_of(self.process.pid) == 2, "the monitor has the log")

    def lines_until(self, text):
        """All lines so far, the last with this text in it."""
        deadline = time.monotonic() + DEADLINE_S
        while not re.search(re.escape(text.encode()) + rb".*\n", self.seen):
            ready, _, _ = select.select([self.process.stdout], [], [], max(deadline - time.monotonic(), 0))
            assert ready, f"{text!r} did not come; got {self.seen!r}"
            chunk = os.read(self.process.stdout.fileno(), 65536)
            assert chunk, f"the monitor ended; got {self.seen!r}, {self.process.stderr.read()!r}"
            self.seen += chunk
        return self.seen.decode("latin-1").splitlines()

    def end(self):
        """Waits for its end; returns its status and what it said on standard error."""
        _, errors = self.process.communicate(timeout=DEADLINE_S)
        return self.process.returncode, errors.decode()

    def close(self):
        if self.process.poll() is None:
            self.process.kill()
        self.process.communicate()


@pytest.fixture
def monitor_of():
    monitors = []

    def start(olt):
        monitors.append(Monitor(olt))
        return monitors[-1]

    yield start
    for monitor in monitors:
        monitor.close()


def file_alarm(olt, message):
    assert olt.run(f"alarm-log debug send id 0 message {message}")[1] == SUCCESS


def line_with(lines, text):
    found = [line for line in lines if text in line]
    assert len(found) == 1, lines
    return found[0]


def test_alarm_is_seen_with_its_level_as_the_log_file_has_it(olt, monitor_of):
    monitor = monitor_of(olt)
    for level in ("major", "critical"):
        olt.run(f"alarm-log alarm fan level {level}")
        file_alarm(olt, f"hello_{level}")
        line = line_with(monitor.lines_until(f"hello {level}"), f"hello {level}")
        assert STAMP.match(line)
        assert line[STAMP.match(line).end():] == f"alarm fan ({level}): hello {level}"
        olt.wait_log(line + "\n")


def test_alarm_whose_print_is_off_is_not_seen(olt, monitor_of):
    monitor = monitor_of(olt)
    olt.run("alarm-log alarm fan disable print")
    file_alarm(olt, "quiet")
    olt.run("alarm-log alarm fan enable print")
    file_alarm(olt, "loud")
    lines = monitor.lines_until("loud")
    assert line_with(lines, "loud")
    assert not [line for line in lines if "quiet" in line]


def test_what_was_logged_before_is_not_shown(olt, monitor_of):
    file_alarm(olt, "earlier")
    monitor = monitor_of(olt)
    file_alarm(olt, "later")
    assert not [line for line in monitor.lines_until("later") if "earlier" in line]


def test_every_monitor_sees_an_alarm(olt, monitor_of):
    monitors = [monitor_of(olt) for _ in range(3)]
    file_alarm(olt, "for_all")
    for monitor in monitors:
        assert line_with(monitor.lines_until("for all"), "for all")


def test_control_c_ends_the_monitor_and_the_daemon_lets_go_of_it(olt, monitor_of):
    before = olt.settled_fds()
    monitor = monitor_of(olt)
    monitor.process.send_signal(signal.SIGINT)
    assert monitor.end() == (-signal.SIGINT, "")
    olt.wait_no_more_fds(before)
    file_alarm(olt, "after")


def test_monitor_ends_when_its_reader_goes_away(olt, monitor_of):
    monitor = monitor_of(olt)
    monitor.process.stdout.close()
    assert monitor.process.wait(DEADLINE_S) == -signal.SIGPIPE


def test_lines_that_a_slow_monitor_loses_are_counted(olt, monitor_of):
    monitor = monitor_of(olt)
    before = len(olt.log().splitlines())
    count = 600  # more than its socket holds
    monitor.process.send_signal(signal.SIGSTOP)
    with olt.vty("config") as session:
        for number in range(count):
            session.run(f"alarm-log debug send id 0 message flood_{number}")
        monitor.process.send_signal(signal.SIGCONT)
        monitor.lines_until("flood 0")
        file_alarm(olt, "last")
        lines = monitor.lines_until("last")
    monitor.process.send_signal(signal.SIGTERM)
    status, errors = monitor.end()
    assert status == -signal.SIGTERM
    lost = [int(number) for number in re.findall(r"^diagsh: (\d+) lines lost, ", errors, re.MULTILINE)]
    assert len(lost) == errors.count("\n") > 0
    logged = olt.log().splitlines()[before:]
    last = next(at for at, line in enumerate(logged) if line.endswith("last"))
    assert len(lines) + sum(lost) == last + 1, "every line is shown or counted, once"
    assert sum("flood" in line for line in lines) + sum(lost) >= count > sum("flood" in line for line in lines)


@pytest.mark.parametrize("number", [signal.SIGTERM, signal.SIGKILL])
def test_monitor_ends_with_the_daemon(cold_olt, monitor_of, number):
    cold_olt.start()
    monitor = monitor_of(cold_olt)
    file_alarm(cold_olt, "hello")
    monitor.lines_until("hello")
    cold_olt.kill(number)
    assert monitor.end() == (UNAVAILABLE, "diagsh: the daemon has ended\n")


def test_monitor_without_a_daemon_says_so(cold_olt):
    done = subprocess.run([DIAGSH, "-s", str(cold_olt.state), "-m"], capture_output=True, timeout=DEADLINE_S)
    assert done.returncode == UNAVAILABLE
    assert done.stdout == b"" and b"no daemon answers" in done.stderr


def test_monitor_runs_no_commands(olt):
    for words in (["-c", "show version"], ["-n", "view"]):
        done = subprocess.run([DIAGSH, "-s", str(olt.state), "-m", *words], capture_output=True, timeout=DEADLINE_S)
        assert done.returncode == USAGE
        assert done.stdout == b"" and done.stderr.count(b"\n") == 1


def test_descriptor_of_a_command_of_a_script_is_closed(olt):
    before = olt.settled_fds()
    done = subprocess.run([DIAGSH, "-s", str(olt.state), "-n", "enable", "-c", "terminal monitor"],
                          capture_output=True, timeout=DEADLINE_S)
    assert (done.returncode, done.stdout, done.stderr) == (0, b"", b"")
    olt.wait_no_more_fds(before)


def test_session_over_telnet_is_told_that_it_cannot(olt):
    with olt.telnet() as session:
        session.run("enable")
        assert session.run("terminal monitor").strip() == "% not supported"
