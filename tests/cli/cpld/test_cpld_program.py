# SPDX-License-Identifier: GPL-2.0-or-later
"""Programming the CPLD, restoring and erasing it; a programmer that fails, hangs or dies; a daemon that ends meanwhile."""
import re
import signal
import subprocess

import pytest
from calls import of
from cpld import board_session, refused
from jtag import Programmer, image_words, in_tmp, main_calls, put_in_tmp, receive_until, run
from monitors import hurried
from olt import BUILD, SEMAPHORE_KEYS, wait_until

IMAGE = b"CPLD image \x00\xff" * 1000
BACKUP = "/media/app/K7200Q4_CPLD_1200HC_BACKUP.jed"
PERMIT = "chmod -R 777 /usr/sbin/jtag "
STOP = "killall -9 watchfrr &> /dev/null"
STARTED = "Start to upgarde CPLD from usb...\r\nFile /tmp/f.jed is already exist\r\n"
CONSOLE = "\r\nStart to upgarde CPLD...\r\n"
SWITCHES = ("fan", "usb", "power", "transceiver")
# Waits for the board's semaphore, takes it, and gives it back.
TAKER = f"""
import ctypes, struct
libc = ctypes.CDLL(None)
board = libc.semget({SEMAPHORE_KEYS['board']}, 0, 0)
change = lambda by: libc.semop(board, struct.pack("=Hhh", 0, by, 0x1000), 1)
print("waiting", flush=True)
assert change(-1) == 0
print("taken")
assert change(1) == 0
"""


def programming(path):
    """All that programming does to the board and the box, in order."""
    return board_session(
        "update_cpld",
        f"system: {PERMIT}",
        f"system: chmod -R 777 {path}",
        "W(0,0x0)",
        "raise update_cpld",
        f"as root: {STOP}",
        "lower",
        "wait 1 ms",
        f"system: jtag {path}",
        "wait 2000 ms",
        "W(0,0x1)",
        f"system: rm {path}",
    )


@pytest.fixture(scope="module")
def shared(traced_olt):
    for switch in SWITCHES:
        assert traced_olt.run(f"no {switch} monitor", "diagnose") == ("", 0)
    return traced_olt


@pytest.fixture
def olt(shared):
    shared.faults(*hurried("main"))
    yield shared
    shared.faults()
    shared.exec("rm", "-rf", "/tmp/f.jed", "/tmp/cpld_backup.jed", "/media/app", check=True)
    for switch in SWITCHES:
        assert shared.run(f"no {switch} monitor", "diagnose") == ("", 0)


@pytest.fixture
def programmer(olt):
    own = Programmer(olt)
    yield own
    own.clear_fate()


def upgrade(olt):
    put_in_tmp(olt, "f.jed", IMAGE)
    return run(olt, "cpld upgrade usb f.jed")


def monitors(olt):
    return re.findall(": (Enable|Disable)\r\n", olt.run("show diag monitor", "diagnose")[0])


def switches_in_memory(olt):
    """The four switches of a daemon that is too busy to tell."""
    symbols = subprocess.run(["nm", BUILD / "bin" / "diagd"], capture_output=True, text=True, check=True).stdout
    offset = int(re.search(r"^([0-9a-f]+) \w diagm$", symbols, re.M)[1], 16)
    with open(f"/proc/{olt.pid}/maps") as maps:
        base = min(int(line.split("-")[0], 16) for line in maps if line.rstrip().endswith("/diagd"))
    with open(f"/proc/{olt.pid}/mem", "rb") as memory:
        memory.seek(base + offset + 10)
        return list(memory.read(4))


# --- programming


def test_programming_is_done_in_its_order_with_the_board_held_throughout(olt, programmer):
    """Its two pauses are the only ones of the daemon with the semaphore held."""
    out = len(olt.stdout())
    done = upgrade(olt)
    assert (done.text, done.rc) == (STARTED, 0)
    assert done.work == programming("/tmp/f.jed")
    assert olt.stdout()[out:] == CONSOLE


def test_the_programmer_gets_the_image_and_nothing_else(olt, programmer):
    assert upgrade(olt).rc == 0
    assert programmer.notes() == [f"begins, arguments: /tmp/f.jed, {image_words(IMAGE)}, user: root", "ends with 0"]
    assert in_tmp(olt, "f.jed") is None


def test_the_programming_pauses_as_long_as_the_board_needs(olt, programmer):
    olt.faults()
    calls = upgrade(olt).calls
    jtag = next(call for call in calls if "jtag /tmp" in call.arguments)
    done = of(calls, "misc_cpld_i2c_set_byte")[-1]
    assert done.time_ms - jtag.time_ms >= 2000


def test_all_monitors_are_on_afterwards_whatever_they_were(olt, programmer):
    assert monitors(olt) == ["Disable"] * 4
    upgrade(olt)
    assert monitors(olt) == ["Enable"] * 4


def test_meanwhile_the_monitors_are_off_and_everybody_else_waits_for_the_board(olt, programmer):
    put_in_tmp(olt, "f.jed", IMAGE)
    assert olt.run("usb monitor", "diagnose") == ("", 0)
    with programmer.hanging(), olt.vty("diagnose") as session:
        session.send("cpld upgrade usb f.jed")
        programmer.wait_begin()
        assert olt.sem_value("board") == 0
        assert switches_in_memory(olt) == [0, 0, 0, 0]
        taker = subprocess.Popen(olt.inside("/usr/bin/python3", "-c", TAKER), stdin=subprocess.DEVNULL,
                                 stdout=subprocess.PIPE, text=True)
        assert taker.stdout.readline() == "waiting\n"
        wait_until(lambda: olt.sem_waiters("board") >= 1, "somebody waits for the board")
        assert taker.poll() is None and programmer.notes()[-1].startswith("begins")
        programmer.clear_fate()
        session.receive()
        assert taker.communicate(timeout=10)[0] == "taken\n"
    assert switches_in_memory(olt) == [1, 1, 1, 1]


def test_what_is_known_reaches_the_session_before_the_programming(olt, programmer):
    put_in_tmp(olt, "f.jed", IMAGE)
    with programmer.hanging(), olt.vty("diagnose") as session:
        session.send("cpld upgrade usb f.jed")
        assert receive_until(session, "is already exist\r\n") == STARTED
        programmer.wait_begin()
        programmer.clear_fate()
        assert session.receive() == ("", 0)


@pytest.mark.parametrize("fate, end", [("fail 3", "ends with 3"), ("die", "begins")])
def test_however_the_programmer_ends_the_rest_is_done(olt, programmer, fate, end):
    programmer.set_fate(fate)
    done = upgrade(olt)
    assert (done.text, done.rc) == (STARTED, 0)
    assert done.work == programming("/tmp/f.jed")
    assert programmer.notes()[-1].startswith(end)
    assert in_tmp(olt, "f.jed") is None and monitors(olt) == ["Enable"] * 4


def test_programs_that_cannot_be_started_hold_nothing_up(olt, programmer):
    olt.faults(*hurried("main"), "system thread=main ret=-1 errno=12", "pal_system thread=main ret=-1 errno=12",
               "misc_cpld_i2c_set_byte thread=main ret=-1 errno=5")
    done = upgrade(olt)
    assert (done.text, done.rc) == (STARTED, 0) and done.work == programming("/tmp/f.jed")
    assert programmer.notes() == [] and monitors(olt) == ["Enable"] * 4


def test_without_a_cpld_nothing_is_touched_and_the_image_stays(olt, programmer):
    olt.faults("misc_cpld_i2c_open thread=main ret=-1 errno=6")
    out = len(olt.stdout())
    done = upgrade(olt)
    assert (done.text, done.rc, done.work) == (STARTED, 0, refused("update_cpld"))
    assert olt.stdout()[out:] == "" and programmer.notes() == []
    assert in_tmp(olt, "f.jed") == IMAGE and monitors(olt) == ["Disable"] * 4


def test_the_supervisor_is_stopped(olt, programmer):
    olt.exec("cp", "/bin/sleep", "/run/watchfrr", check=True)
    supervisor = subprocess.Popen(olt.inside("/run/watchfrr", "600"), stdin=subprocess.DEVNULL)
    try:
        wait_until(lambda: olt.exec("pgrep", "-x", "watchfrr").returncode == 0, "the supervisor")
        upgrade(olt)
        wait_until(lambda: olt.exec("pgrep", "-x", "watchfrr").returncode == 1, "its end")
    finally:
        supervisor.kill()
        supervisor.wait()


# --- restoring


def put_backup(olt, mode="0644"):
    olt.exec("mkdir", "-p", "/media/app", check=True)
    olt.exec("tee", BACKUP, input=IMAGE, text=False, check=True)
    olt.exec("chmod", mode, BACKUP, check=True)


def test_the_backup_is_copied_and_programmed(olt, programmer):
    put_backup(olt)
    done = run(olt, "cpld restore")
    assert (done.text, done.rc) == ("Start to restore CPLD from backup file...\r\n", 0)
    assert done.work == [f"system: cp {BACKUP} tmp/cpld_backup.jed", *programming("tmp/cpld_backup.jed")]
    assert programmer.notes() == [f"begins, arguments: tmp/cpld_backup.jed, {image_words(IMAGE)}, user: root", "ends with 0"]
    assert in_tmp(olt, "cpld_backup.jed") is None
    assert olt.exec("cat", BACKUP, text=False).stdout == IMAGE


@pytest.mark.parametrize("mode", [None, "0600"], ids=["missing", "secret"])
def test_a_backup_that_cannot_be_opened_is_named(olt, programmer, mode):
    if mode:
        put_backup(olt, mode)
    done = run(olt, "cpld restore")
    assert (done.text, done.rc) == (
        f"Start to restore CPLD from backup file...\r\nCan't open CPLD Backup file: {BACKUP}\r\n", 1)
    assert done.work == [] and programmer.notes() == []


def test_the_restoring_is_said_before_the_wait(olt, programmer):
    put_backup(olt)
    with programmer.hanging(), olt.vty("diagnose") as session:
        session.send("cpld restore")
        receive_until(session, "Start to restore CPLD from backup file...\r\n")
        programmer.wait_begin()
        programmer.clear_fate()
        assert session.receive() == ("", 0)


# --- erasing


def test_erasing_runs_the_programmer_without_the_board_and_leaves_register_0(olt, programmer):
    done = run(olt, "cpld erase")
    assert (done.text, done.rc) == ("Start to erase CPLD...\r\n", 0)
    assert done.work == [f"run: {PERMIT}", *board_session("cpld_erase", "W(0,0x0)"), "run: jtag /tmp 1"]
    assert programmer.notes() == ["begins, arguments: /tmp 1, image: none, user: root", "ends with 0"]
    assert monitors(olt) == ["Disable"] * 4


def test_the_erasing_is_said_before_the_wait_and_others_have_the_board_meanwhile(olt, programmer):
    with programmer.hanging(), olt.vty("diagnose") as session:
        session.send("cpld erase")
        receive_until(session, "Start to erase CPLD...\r\n")
        programmer.wait_begin()
        olt.wait_free("board")
        programmer.clear_fate()
        assert session.receive() == ("", 0)


def test_without_a_cpld_nothing_is_erased(olt, programmer):
    olt.faults("misc_cpld_i2c_open thread=main ret=-1 errno=6")
    done = run(olt, "cpld erase")
    assert (done.text, done.rc) == ("Start to erase CPLD...\r\n", 1)
    assert done.work == [f"run: {PERMIT}", *refused("cpld_erase")] and programmer.notes() == []


def test_a_programmer_that_fails_to_erase_is_told_on_the_console(olt, programmer):
    programmer.set_fate("fail 2")
    out = len(olt.stdout())
    assert run(olt, "cpld erase").rc == 0
    assert olt.stdout()[out:] == "popen res is :512\n"


# --- a daemon that ends meanwhile


def test_a_daemon_told_to_end_ends_when_the_programming_is_done(make_olt):
    own = make_olt()
    own.faults(*hurried("main"))
    own.start(trace=True).quiet()
    programmer = Programmer(own)
    put_in_tmp(own, "f.jed", IMAGE)
    with programmer.hanging(), own.vty("diagnose") as session:
        before = len(own.trace())
        session.send("cpld upgrade usb f.jed")
        programmer.wait_begin()
        own.send_signal(signal.SIGTERM)
        assert own.daemon.poll() is None
        programmer.clear_fate()
        assert own.wait_end() == 0
    work = [call.values["line"] for call in of(main_calls(own, before), "system")]
    assert work[-2:] == ["jtag /tmp/f.jed", "rm /tmp/f.jed"] and in_tmp(own, "f.jed") is None
    assert programmer.notes()[-1] == "ends with 0"
    own.wait_free("board")


def test_an_interrupt_while_the_programmer_works_is_lost(olt, programmer):
    """The C library ignores it for whoever runs a program, so that one typed on a terminal ends the program alone."""
    put_in_tmp(olt, "f.jed", IMAGE)
    with programmer.hanging(), olt.vty("diagnose") as session:
        session.send("cpld upgrade usb f.jed")
        programmer.wait_begin()
        olt.send_signal(signal.SIGINT)
        programmer.clear_fate()
        assert session.receive()[1] == 0
    assert programmer.notes()[-1] == "ends with 0"
    assert olt.run("show version")[1] == 0


def test_a_killed_daemon_leaves_the_board_to_others_and_the_programmer_to_its_work(make_olt):
    own = make_olt()
    own.start().quiet()
    programmer = Programmer(own)
    own.exec("mkdir", "-p", "/mnt/sda1", check=True)
    own.exec("tee", "/mnt/sda1/f.jed", input=IMAGE, text=False, check=True)
    with programmer.hanging(), own.vty("diagnose") as session:
        session.send("cpld upgrade usb f.jed")
        programmer.wait_begin()
        own.kill(signal.SIGKILL)
        own.wait_free("board")
        # Nothing of the dead daemon is kept by what it had started.
        held = own.exec("ls", "-l", f"/proc/{programmer.pid_in_box()}/fd").stdout
        assert "socket:" not in held and "sysrepo" not in held and "jtag" in held
        own.start().quiet()
        known = own.run("show alarm-log")[0]  # the image was fetched, and that is all that is known
        assert known.endswith("    download f.jed success\nalarm log count: 1\n")
        assert own.run("fan speed high", "diagnose") == ("", 0)
        assert programmer.notes()[-1].startswith("begins")
        assert monitors(own) == ["Disable", "Enable", "Disable", "Enable"]  # as of a start; two are off by hand
    wait_until(lambda: programmer.notes()[-1] == "ends with 0", "the programmer ends")
    assert in_tmp(own, "f.jed") == IMAGE
    assert own.run("show alarm-log")[0] == known
