# SPDX-License-Identifier: GPL-2.0-or-later
"""diagsh, for scripts and for a person."""

import fcntl
import os
import pty
import re
import select
import struct
import subprocess
import termios
import time

import pytest

from olt import BUILD, PASSWORD
from vty import DEADLINE_S

DIAGSH = str(BUILD / "bin" / "diagsh")
UNAVAILABLE, USAGE, NO_PERMISSION, BAD_DATA = 69, 64, 77, 65
MONITOR_LINE = re.compile(r"(FAN|USB|Power|Transceiver) Monitor +: (En|Dis)able")


def diagsh(olt, *words, **how):
    """diagsh from outside the box, as an operator runs it."""
    how = {"stdin": subprocess.DEVNULL, "capture_output": True, "timeout": 20, **how}
    if "input" in how:
        del how["stdin"]
    return subprocess.run([DIAGSH, "-s", str(olt.state), *words], **how)


def test_command_prints_its_output_byte_for_byte_and_nothing_else(olt):
    done = diagsh(olt, "-c", "show version")
    assert (done.returncode, done.stderr) == (0, b"")
    text, status = olt.run("show version")
    assert status == 0 and done.stdout == text.encode("latin-1") != b""


def test_commands_run_in_the_node_asked_for(olt):
    done = diagsh(olt, "-n", "diagnose", "-c", "show diag monitor")
    assert done.returncode == 0
    assert len(MONITOR_LINE.findall(done.stdout.decode())) == 4
    assert diagsh(olt, "-n", "interface gpon 0/3", "-c", "list").returncode == 0
    # The library's own command of that name, and not the daemon's.
    assert diagsh(olt, "-n", "enable", "-c", "show version").stdout.startswith(b"FRRouting")
    assert diagsh(olt, "-n", "view", "-c", "enable").returncode == 0


def test_several_commands_share_one_session(olt):
    done = diagsh(olt, "-c", "diagnose", "-c", "no fan monitor", "-c", "show diag monitor", "-c", "fan monitor")
    assert done.returncode == 0
    assert b"FAN Monitor         : Disable" in done.stdout


def test_unknown_command_goes_to_standard_error_with_its_status(olt):
    done = diagsh(olt, "-c", "no such command")
    assert done.returncode == 2
    assert done.stdout == b"" and b"Unknown command" in done.stderr


def test_ambiguous_and_incomplete_commands_have_their_statuses(olt):
    assert diagsh(olt, "-n", "enable", "-c", "e").returncode == 3
    assert diagsh(olt, "-c", "interface").returncode == 4


def test_first_failure_ends_the_run(olt):
    assert olt.run("fan monitor", "diagnose") == ("", 0)
    done = diagsh(olt, "-c", "show version", "-c", "nonsense", "-c", "diagnose", "-c", "no fan monitor")
    assert done.returncode == 2 and done.stdout != b""
    assert "FAN Monitor         : Enable" in olt.run("show diag monitor", "diagnose")[0]


def test_node_that_cannot_be_entered_is_an_error(olt):
    done = diagsh(olt, "-n", "interface nonsense 9", "-c", "show version")
    assert done.returncode != 0 and done.stdout == b"" and done.stderr != b""


def test_lines_of_standard_input_are_commands(olt):
    done = diagsh(olt, input=b"diagnose\n\n  \nshow diag monitor\r\n")
    assert done.returncode == 0
    assert len(MONITOR_LINE.findall(done.stdout.decode())) == 4


def test_command_the_vty_would_cut_in_two_is_not_sent(olt):
    for command in (b"show version " + b"x" * 4090, b"show version\0show version"):
        done = diagsh(olt, input=command + b"\n")
        assert done.returncode == BAD_DATA
        assert done.stdout == b"" and done.stderr.count(b"\n") == 1
    longest = b"show version" + b" " * (4094 - len("show version"))
    assert diagsh(olt, input=longest).returncode == 0


def test_output_that_cannot_be_written_is_an_error(olt):
    with open("/dev/full", "wb") as full:
        done = diagsh(olt, "-c", "show version", capture_output=False, stdout=full, stderr=subprocess.PIPE)
    assert done.returncode != 0 and b"cannot write" in done.stderr


def test_json_pipes_into_jq(olt):
    shown = diagsh(olt, "-c", "show transceiver json")
    assert shown.returncode == 0
    parsed = subprocess.run(["jq", "-e", "type"], input=shown.stdout, capture_output=True)
    assert parsed.returncode == 0, parsed.stderr


def test_works_while_another_session_is_in_configuration(olt):
    with olt.vty("config"), olt.telnet() as session:
        session.run("enable")
        session.run("configure terminal")
        assert diagsh(olt, "-c", "show version").returncode == 0


def test_vty_group_needs_no_password_and_others_are_told(olt):
    group = ["setpriv", "--reuid", "nobody", "--regid", "daemon", "--clear-groups"]
    other = ["setpriv", "--reuid", "nobody", "--regid", "nogroup", "--clear-groups"]
    program = "/run/olt/build/bin/diagsh"
    done = olt.exec(*group, program, "-c", "show version")
    assert done.returncode == 0, done.stderr
    done = olt.exec(*other, program, "-c", "show version")
    assert done.returncode == NO_PERMISSION
    assert done.stdout == "" and "only root and the vty group" in done.stderr


def test_socket_deeper_than_an_address_can_hold_is_reached(olt, tmp_path):
    deep = tmp_path / ("d" * 100) / ("e" * 100)
    deep.mkdir(parents=True)
    (deep / "olt").symlink_to(olt.state)
    done = subprocess.run(
        [DIAGSH, "-s", str(deep / "olt"), "-c", "show version"], stdin=subprocess.DEVNULL, capture_output=True
    )
    assert done.returncode == 0, done.stderr


def test_no_daemon_is_said_clearly(cold_olt):
    done = diagsh(cold_olt, "-c", "show version")
    assert done.returncode == UNAVAILABLE
    assert b"no daemon answers" in done.stderr and done.stderr.count(b"\n") == 1


def test_wrong_usage_is_refused(olt):
    assert diagsh(olt, "show version").returncode == USAGE
    assert diagsh(olt, "--nonsense").returncode == USAGE
    done = diagsh(olt, "--help")
    assert done.returncode == 0 and done.stdout.startswith(b"usage: diagsh")


class Terminal:
    """A program on a terminal of its own."""

    def __init__(self, command):
        self.master, slave = pty.openpty()
        fcntl.ioctl(slave, termios.TIOCSWINSZ, struct.pack("HHHH", 40, 100, 0, 0))
        self.before = termios.tcgetattr(slave)
        self.slave = slave
        self.shown = b""
        self.process = subprocess.Popen(
            command, stdin=slave, stdout=slave, stderr=slave, start_new_session=True,
            preexec_fn=lambda: fcntl.ioctl(0, termios.TIOCSCTTY, 0),
        )

    def resize(self, rows, columns):
        fcntl.ioctl(self.slave, termios.TIOCSWINSZ, struct.pack("HHHH", rows, columns, 0, 0))

    def type(self, keys):
        os.write(self.master, keys)

    def expect(self, pattern):
        deadline = time.monotonic() + DEADLINE_S
        while not (match := re.search(pattern, self.shown)):
            ready, _, _ = select.select([self.master], [], [], max(deadline - time.monotonic(), 0))
            assert ready, f"{pattern!r} did not come; got {self.shown!r}"
            self.shown += os.read(self.master, 65536)
        text, self.shown = self.shown[: match.end()], self.shown[match.end() :]
        return text

    def end(self):
        status = self.process.wait(DEADLINE_S)
        after = termios.tcgetattr(self.slave)
        return status, after == self.before

    def close(self):
        if self.process.poll() is None:
            self.process.kill()
            self.process.wait()
        os.close(self.master)
        os.close(self.slave)


@pytest.fixture
def terminal(olt):
    opened = Terminal(olt.inside("/run/olt/build/bin/diagsh"))
    yield opened
    opened.close()


def test_interactive_session_signs_in_and_edits_lines(terminal):
    terminal.expect(rb"olt> $")
    terminal.type(b"ena\t")
    terminal.expect(rb"enable $")
    terminal.type(b"\r")
    terminal.expect(rb"olt# $")
    terminal.type(b"configure terminal\r")
    terminal.expect(rb"olt\(config\)# $")
    terminal.type(b"interface gpon ?")
    terminal.expect(rb"S/P[^\r\n]*\r\n")
    terminal.expect(rb"interface gpon $")
    terminal.type(b"0/9\x7f3\r")  # backspace
    terminal.expect(rb"olt\(config-gpon-0/3\)# $")
    terminal.type(b"end\r")
    terminal.expect(rb"olt# $")
    terminal.type(b"exit\r")
    assert terminal.end() == (0, True)


def test_vty_password_is_not_given_for_another(fresh_olt):
    """Without a sign-in the first prompt for a password is that of `enable`, which is the person's to know."""
    with fresh_olt.vty() as session:
        for command in ("enable password other", "line vty", "no login"):
            assert session.run(command)[1] == 0
    terminal = Terminal(fresh_olt.inside("/run/olt/build/bin/diagsh"))
    try:
        terminal.expect(rb"olt> $")
        terminal.type(b"enable\r")
        terminal.expect(rb"Password: $")
        terminal.type(b"other\r")
        assert b"Password" not in terminal.expect(rb"olt# $")
    finally:
        terminal.close()


def test_a_password_that_is_wrong_is_given_once_and_then_the_person_is_asked(fresh_olt):
    (fresh_olt.state / "conf" / "vty-password").write_text("wrong\n")
    terminal = Terminal(fresh_olt.inside("/run/olt/build/bin/diagsh"))
    try:
        terminal.expect(rb"Password: [^P]*Password: $")
        terminal.type(PASSWORD.encode() + b"\r")
        assert b"Password" not in terminal.expect(rb"olt> $")
    finally:
        terminal.close()


def test_interactive_session_pages_by_the_height_of_the_window(terminal):
    terminal.expect(rb"olt> $")
    terminal.type(b"find .\r")
    terminal.expect(rb"--More--")
    terminal.type(b"q")
    terminal.expect(rb"olt> $")


def test_a_window_that_changes_its_size_changes_the_pages(terminal):
    terminal.expect(rb"olt> $")
    for rows in (40, 12, 25):
        terminal.resize(rows, 100)
        terminal.type(b"find .\r")
        page = terminal.expect(rb"--More--")
        assert page.count(b"\n") == rows, "what was typed, and a page without the line that asks"
        terminal.type(b"q")
        terminal.expect(rb"olt> $")


def test_control_bracket_leaves_and_gives_the_terminal_back(terminal):
    terminal.expect(rb"olt> $")
    terminal.type(b"\x1d")
    assert terminal.end() == (0, True)


def test_terminal_is_given_back_when_the_daemon_dies(fresh_olt):
    terminal = Terminal(fresh_olt.inside("/run/olt/build/bin/diagsh"))
    try:
        terminal.expect(rb"olt> $")
        fresh_olt.kill()
        assert terminal.end() == (0, True)
    finally:
        terminal.close()


def test_interactive_session_without_a_daemon_says_so(cold_olt):
    terminal = Terminal(cold_olt.inside("/run/olt/build/bin/diagsh"))
    try:
        terminal.expect(rb"diagsh: no daemon answers on port 2709")
        assert terminal.end() == (UNAVAILABLE, True)
    finally:
        terminal.close()


def test_person_without_the_password_is_asked(olt):
    own = ["setpriv", "--reuid", "nobody", "--regid", "nogroup", "--clear-groups"]
    terminal = Terminal(olt.inside(*own, "/run/olt/build/bin/diagsh"))
    try:
        terminal.expect(rb"Password: $")
        terminal.type(PASSWORD.encode() + b"\r")
        terminal.expect(rb"olt> $")
    finally:
        terminal.close()
