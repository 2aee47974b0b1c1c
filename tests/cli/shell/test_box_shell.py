# SPDX-License-Identifier: GPL-2.0-or-later
"""diagsh in the place of the box's shell, beside vty sockets of this test's making: several daemons of an OLT, and
daemons that behave as none of ours does."""
import contextlib
import os
import socket
import struct
import subprocess
import threading
import time

import pytest
from olt import BUILD
from vty import DEADLINE_S

DIAGSH = str(BUILD / "bin" / "diagsh")
UNAVAILABLE, PROTOCOL = 69, 76
SAVED = "Configuration saved to /etc/frr/{}.conf\n"


def answer(status, text=""):
    return text.encode() + bytes([0, 0, 0, status])


class Daemon:
    """A vty socket; `replies` maps a command to what is sent for it, None to nothing at all."""

    def __init__(self, folder, name, replies):
        self.replies = replies
        self.asked = []
        self.listener = socket.socket(socket.AF_UNIX)
        parent = os.open(folder, os.O_PATH)
        self.listener.bind(f"/proc/self/fd/{parent}/{name}.vty")
        os.close(parent)
        self.listener.listen()
        self.thread = threading.Thread(target=self.serve, daemon=True)
        self.thread.start()

    def serve(self):
        with contextlib.suppress(OSError):
            session, _ = self.listener.accept()
            with session:
                received = b""
                while chunk := session.recv(4096):
                    received += chunk
                    while b"\0" in received:
                        command, _, received = received.partition(b"\0")
                        self.asked.append(command.decode())
                        reply = self.replies.get(self.asked[-1], answer(2, "% Unknown command.\n"))
                        if callable(reply):
                            reply(session)
                        elif reply is not None:
                            session.sendall(reply)

    def close(self):
        with contextlib.suppress(OSError):  # closed before
            self.listener.shutdown(socket.SHUT_RDWR)
        self.listener.close()


@pytest.fixture
def daemons(tmp_path):
    (tmp_path / "run").mkdir()
    made = []

    def make(name, **replies):
        made.append(Daemon(tmp_path / "run", name, {"enable": answer(0), **{k.replace("_", " "): v for k, v in replies.items()}}))
        return made[-1]

    yield make
    for daemon in made:
        daemon.close()


def run(tmp_path, name, *words, lines=""):
    return subprocess.run([name, "-s", str(tmp_path), *words], executable=DIAGSH, input=lines, capture_output=True,
                          text=True, timeout=DEADLINE_S)


def saves(name):
    return answer(0, SAVED.format(name))


REFUSES = answer(1, "% Can't open backup configuration file.\n")


def test_write_saves_the_configuration_of_every_daemon(tmp_path, daemons):
    made = [daemons(name, write_file=saves(name)) for name in ("zebra", "diagd")]
    done = run(tmp_path, "vtysh", "-c", "write")
    assert (done.returncode, done.stderr) == (0, "")
    assert done.stdout == SAVED.format("diagd") + SAVED.format("zebra")
    assert [daemon.asked for daemon in made] == [["enable", "write file"]] * 2


@pytest.mark.parametrize("lines", ["write\n", "write\r\n", " \n\r\nwrite file\r\n"], ids=["unix", "dos", "with empty lines"])
def test_write_as_the_only_line_of_a_file_saves_every_daemon_too(tmp_path, daemons, lines):
    made = [daemons(name, write_file=saves(name)) for name in ("zebra", "diagd")]
    done = run(tmp_path, "vtysh", lines=lines)
    assert (done.returncode, done.stdout, done.stderr) == (0, SAVED.format("diagd") + SAVED.format("zebra"), "")
    assert [daemon.asked for daemon in made] == [["enable", "write file"]] * 2


@pytest.mark.parametrize("refusing, saving", [("a", "b"), ("b", "a")])
def test_a_daemon_that_refuses_is_not_forgotten_when_another_saves(tmp_path, daemons, refusing, saving):
    daemons(refusing, write_file=REFUSES)
    daemons(saving, write_file=saves(saving))
    done = run(tmp_path, "vtysh", "-c", "write memory")
    assert done.returncode == 1
    assert done.stdout == SAVED.format(saving)
    assert f"{refusing}.vty: % Can't open backup" in done.stderr


def test_a_socket_that_a_daemon_left_behind_is_no_failure(tmp_path, daemons):
    daemons("dead").close()
    daemons("diagd", write_file=saves("diagd"))
    done = run(tmp_path, "vtysh", "-c", "write file")
    assert (done.returncode, done.stdout, done.stderr) == (0, SAVED.format("diagd"), "")


def test_without_any_daemon_nothing_is_saved_and_that_is_said(tmp_path, daemons):
    done = run(tmp_path, "vtysh", "-c", "write")
    assert done.returncode == UNAVAILABLE and "no daemon answers beside" in done.stderr


def test_another_command_goes_to_diagd_alone(tmp_path, daemons):
    other = daemons("a", write_file=saves("a"))
    own = daemons("diagd", show_version=answer(0, "FRRouting\n"))
    done = run(tmp_path, "vtysh", "-c", "show version")
    assert (done.returncode, done.stdout) == (0, "FRRouting\n")
    assert own.asked == ["enable", "show version"] and other.asked == []


def test_a_command_that_fails_without_a_word_is_told_with_its_status(tmp_path, daemons):
    daemons("diagd", show_version=answer(5))
    done = run(tmp_path, "diagsh", "-n", "enable", "-c", "show version")
    assert (done.returncode, done.stdout) == (5, "")
    assert done.stderr == "diagsh: command failed with status 5: show version\n"


def test_a_failed_commands_last_line_is_ended(tmp_path, daemons):
    daemons("diagd", show_version=answer(1, "% no"))
    assert run(tmp_path, "diagsh", "-n", "enable", "-c", "show version").stderr == "% no\n"


def test_the_state_folder_may_come_from_the_environment(tmp_path, daemons):
    own = daemons("diagd", show_version=answer(0, "FRRouting\n"))
    done = subprocess.run([DIAGSH, "-n", "enable", "-c", "show version"], env={**os.environ, "OLT_STATE": str(tmp_path)},
                          stdin=subprocess.DEVNULL, capture_output=True, text=True, timeout=DEADLINE_S)
    assert (done.returncode, done.stdout) == (0, "FRRouting\n")
    assert own.asked == ["enable", "show version"]
    done = subprocess.run([DIAGSH, "-s", str(tmp_path / "other"), "-c", "show version"], capture_output=True, text=True,
                          env={**os.environ, "OLT_STATE": str(tmp_path)}, stdin=subprocess.DEVNULL, timeout=DEADLINE_S)
    assert done.returncode == UNAVAILABLE, "-s goes before the environment"


@pytest.mark.slow
def test_a_daemon_that_takes_the_command_and_is_silent_has_not_saved(tmp_path, daemons):
    daemons("a", write_file=None)
    daemons("b", write_file=saves("b"))
    done = run(tmp_path, "vtysh", "-c", "write")
    assert done.returncode == UNAVAILABLE
    assert "a.vty: the daemon did not answer in time: write file\n" in done.stderr
    assert done.stdout == SAVED.format("b")


def test_a_daemon_that_closes_the_session_is_told_apart_from_one_that_is_late(tmp_path, daemons):
    daemons("diagd", write_file=lambda session: session.shutdown(socket.SHUT_RDWR))
    done = run(tmp_path, "vtysh", "-c", "write")
    assert done.returncode == UNAVAILABLE
    assert "diagd.vty: the daemon closed the session during: write file\n" in done.stderr


def test_an_answer_in_pieces_is_put_together(tmp_path, daemons):
    def in_pieces(session):
        for piece in (b"Configuration ", b"saved\n\0", b"\0", b"\0", b"\0"):
            session.sendall(piece)
            time.sleep(0.01)  # so that they do not arrive as one

    daemons("diagd", write_file=in_pieces)
    done = run(tmp_path, "vtysh", "-c", "write")
    assert (done.returncode, done.stdout, done.stderr) == (0, "Configuration saved\n", "")


# --- the log as it is written

def record(text, lost):
    """As libfrr's zlog_live.h lays it out."""
    line = text.encode()
    return struct.pack("=QIIqqIIIII12sII", 1_790_000_000, 0, 72, 1, 1, lost, 3, 0, len(line), 0, b"", 0, 0) + line


def passes_log(records):
    def reply(session):
        ours, theirs = socket.socketpair(socket.AF_UNIX, socket.SOCK_SEQPACKET)
        socket.send_fds(session, [answer(0)], [theirs.fileno()])
        theirs.close()
        for one in records:
            ours.send(one)
        ours.close()

    return reply


def monitor(tmp_path, daemons, *records):
    """What diagsh says of a log of these records, which then ends."""
    daemons("diagd", terminal_monitor=passes_log(records))
    done = run(tmp_path, "diagsh", "-m")
    return done.returncode, [line.split("DIAGD: ")[1] for line in done.stdout.splitlines()], done.stderr.splitlines()


def test_lines_that_were_lost_are_told_once_each_time_that_more_are(tmp_path, daemons):
    records = [record(f"line {at}", lost) for at, lost in enumerate([0, 3, 3, 3, 5, 5])]
    lost = "lines lost, they came faster than they were read"
    assert monitor(tmp_path, daemons, *records) == (
        UNAVAILABLE, [f"line {at}" for at in range(6)],
        [f"diagsh: 3 {lost}", f"diagsh: 2 {lost}", "diagsh: the daemon has ended"])


def test_a_count_of_lost_lines_goes_over_its_largest_value(tmp_path, daemons):
    records = [record("a", 0x7FFFFFFF), record("b", 0xFFFFFFFE), record("c", 1)]
    errors = monitor(tmp_path, daemons, *records)[2]
    assert [line.split()[1] for line in errors[:-1]] == ["2147483647", "2147483647", "3"]


def test_a_log_of_another_format_is_refused(tmp_path, daemons):
    assert monitor(tmp_path, daemons, record("seen", 0), b"short") == (
        PROTOCOL, ["seen"], ["diagsh: the daemon's log records are of another format"])


def test_a_daemon_that_passes_no_log_is_told(tmp_path, daemons):
    daemons("diagd", terminal_monitor=answer(0))
    done = run(tmp_path, "diagsh", "-m")
    assert (done.returncode, done.stderr) == (PROTOCOL, "diagsh: the daemon passed no log\n")
