# SPDX-License-Identifier: GPL-2.0-or-later
"""The list of tasks, of programs in the daemon's box."""
import contextlib
import subprocess

import pytest
from calls import of
from olt import wait_until

HEADER = "PPID     CMD                                    PID      NAME                                     Status\r\n"
# Says its numbers, and stays until its input ends.
PROGRAM = """
import ctypes, os, sys, threading
def name(text):
    ctypes.CDLL(None).prctl(15, text.encode(), 0, 0, 0)
def work(text, busy):
    name(text)
    os.write(1, b'%d\\n' % threading.get_native_id())
    while busy: pass
    threading.Event().wait()
print(os.getpid(), flush=True)
exec(sys.argv[1])
sys.stdin.read()
os._exit(0)
"""


@pytest.fixture(scope="module")
def olt(traced_olt):
    return traced_olt


def row(process, command, thread, name, status):
    return f"{process:<8} {command:<38} {thread:<8} {name:<40} {status}"


def rows_of(text, process):
    return [line for line in text.split("\r\n") if line.split(" ", 1)[0] == str(process)]


@contextlib.contextmanager
def program(olt, script="", numbers=1, name="python3"):
    """A program in the box; gives the numbers it says, its process first."""
    with subprocess.Popen(olt.inside("bash", "-c", f'exec -a "{name}" /usr/bin/python3 "$@"', "-", "-c", PROGRAM, script),
                          stdin=subprocess.PIPE, stdout=subprocess.PIPE, text=True) as running:
        yield [int(running.stdout.readline()) for _ in range(numbers)]
        running.stdin.close()
        running.wait()


def thread(text, busy=False):
    return f"threading.Thread(target=work, args=({text!r}, {busy})).start()"


def test_a_process_with_one_thread_has_one_row(olt):
    with program(olt, "name('alone')") as (pid,):
        wait_until(lambda: rows_of(olt.run("show task")[0], pid) == [row(pid, "python3", pid, "alone", "S (sleeping)")],
                   "its row")


def test_the_list_begins_with_its_header_and_holds_every_process(olt):
    text, rc = olt.run("show task")
    assert rc == 0 and text.startswith(HEADER) and text.endswith("\r\n")
    lines = text[len(HEADER):].split("\r\n")[:-1]
    assert row(1, "bash", 1, "box", "S (sleeping)") in lines
    numbers = [int(line.split(" ", 1)[0]) for line in lines]
    assert numbers == sorted(numbers)
    daemon = {line[48:].split(maxsplit=1)[1][:41].strip() for line in lines if line[9:48].strip() == "diagd"}
    assert {"diagd", "fan_monitor", "power_monitor", "usb_monitor", "reset_monitor"} <= daemon


def test_every_thread_has_its_name_behind_the_number_of_its_process(olt):
    with program(olt, thread("worker one") + "; " + thread("b:2"), 3) as (pid, first, second):
        workers = sorted([(first, "worker one"), (second, "b:2")], key=lambda worker: worker[0])

        def names():  # the two say their numbers in either order
            return {line[57:97].rstrip() for line in rows_of(olt.run("show task")[0], pid)}

        wait_until(lambda: names() == {"python3", "worker one", "b:2"}, "their names")
        rows = rows_of(olt.run("show task")[0], pid)
        assert [int(line[48:57]) for line in rows] == [pid, *(number for number, _ in workers)]
        assert all(line[9:48].rstrip() == "python3" for line in rows)


@pytest.mark.parametrize("name, command", [
    ("/opt/bin/some/agent", "agent"), ("agent: worker /of/this", "this"), ("/", ""), ("x" * 300, "x" * 256),
    (f"/{'y' * 254}/z", ""), ("a%s%n", "a%s%n"),
])
def test_the_command_is_the_base_name_of_what_the_program_was_called(olt, name, command):
    with program(olt, name=name) as (pid,):
        shown = row(pid, command, pid, "python3", "S (sleeping)")
        wait_until(lambda: rows_of(olt.run("show task")[0], pid) == [shown], "its row")


def test_names_that_would_drive_the_terminal_are_made_harmless(olt):
    with program(olt, r"name('a\x1b[2J\rb')", name="c\x1b]0;d\x07") as (pid,):
        shown = row(pid, "c?]0;d?", pid, "a?[2J?b", "S (sleeping)")
        wait_until(lambda: rows_of(olt.run("show task")[0], pid) == [shown], "its row")


def test_what_has_ended_and_is_not_collected_has_an_empty_command_line(olt):
    """The third line of such a status file is its number: the kernel leaves out the second."""
    with program(olt, "child = os.fork()\nif child == 0: os._exit(0)\nprint(child, flush=True)", 2) as (_, child):
        shown = row(child, "", child, "python3", child)
        wait_until(lambda: rows_of(olt.run("show task")[0], child) == [shown], "its row")


def test_running_leaves_out_what_does_not_run(olt):
    with program(olt, thread("busy", True) + "; " + thread("idle"), 3) as (pid, *_):
        def names():
            """Of the threads that are listed; all of them run."""
            text, rc = olt.run("show task running")
            assert rc == 0 and text.startswith(HEADER)
            assert all("running" in line[98:] for line in text[len(HEADER):].split("\r\n")[:-1])
            return [name for name in ("busy", "idle") for line in rows_of(text, pid) if name in line]

        wait_until(lambda: names() == ["busy"], "the busy one alone")  # the idle one runs, too, while it begins


# --- what cannot be read


@pytest.fixture
def faults(olt):
    yield olt.faults
    olt.faults()


def test_without_proc_the_daemon_says_so_and_the_operator_sees_nothing(olt, faults):
    faults("opendir nth=1 ret=-1 errno=24 thread=main")
    assert olt.run("show task") == ("", 0)
    assert olt.stderr().count("opendir fail: Too many open files\n") == 1


def test_a_process_that_has_just_ended_ends_the_list(olt, faults):
    faults("opendir nth=2 ret=-1 errno=2 thread=main")
    assert olt.run("show task") == (HEADER + "opendir /proc/1/task fail\r\n", 0)


def test_a_command_line_that_cannot_be_opened_ends_the_list(olt, faults):
    faults("open nth=1 ret=-1 errno=2 thread=main")
    assert olt.run("show task") == (HEADER + "open file /proc/1/task/1/cmdline fail\r\n", 0)


def test_rows_before_the_one_that_fails_are_there(olt, faults):
    faults("opendir nth=3 ret=-1 errno=2 thread=main")
    text, rc = olt.run("show task")
    first, failed = text[len(HEADER):].split("\r\n")[:2]
    assert rc == 0 and first == row(1, "bash", 1, "box", "S (sleeping)")
    assert failed.startswith("opendir /proc/") and failed.endswith("/task fail")
    assert text.endswith(failed + "\r\n")


def test_a_status_that_cannot_be_opened_leaves_its_columns_empty(olt, faults):
    faults("open nth=2 ret=-1 errno=2 thread=main")
    text, rc = olt.run("show task")
    assert rc == 0 and rows_of(text, 1) == [row(1, "bash", 1, "", "")]


@pytest.mark.parametrize("status, name, state", [
    ("", "", ""), ("Name:\tshort", "short", ""), ("Name:\tshort\nUmask:\t0022\n", "short", ""), ("Name", "", ""),
    ("Name:\t" + "n" * 300, "n" * 73, "n" * 0), ("Name: \t n\n\nState:\t\v R (running)", "n", "R (running)"),
])
def test_a_short_status_shows_what_there_is(olt, status, name, state):
    with program(olt) as (pid,):
        (olt.state / "log" / "status").write_text(status)
        path = f"/proc/{pid}/task/{pid}/status"
        olt.exec("mount", "--bind", "/var/log/status", path, check=True)
        try:
            text, rc = olt.run("show task")
        finally:
            olt.exec("umount", path, check=True)
    assert rc == 0 and rows_of(text, pid) == [row(pid, "python3", pid, name, state)]


def test_a_command_line_that_cannot_be_read_by_the_daemon_ends_the_list(olt):
    with program(olt) as (pid,):
        (olt.state / "log" / "cmdline").write_text("x")
        (olt.state / "log" / "cmdline").chmod(0)
        path = f"/proc/{pid}/task/{pid}/cmdline"
        olt.exec("mount", "--bind", "/var/log/cmdline", path, check=True)
        try:
            text, rc = olt.run("show task")
        finally:
            olt.exec("umount", path, check=True)
    assert rc == 0 and text.endswith(f"\r\nopen file {path} fail\r\n")


def test_a_list_leaves_no_descriptor_open(olt, faults):
    before, mark = olt.settled_fds(), len(olt.trace())
    for fault in ((), ("opendir nth=2 ret=-1 errno=2 thread=main",), ("open nth=1 ret=-1 errno=2 thread=main",)):
        faults(*fault)
        assert olt.run("show task")[1] == 0
    olt.wait_no_more_fds(before)
    assert not of([call for call in olt.trace()[mark:] if call.thread == "main"], "raise|seteuid")
