# SPDX-License-Identifier: GPL-2.0-or-later
"""Local users outside the box's group, and members of it who do harm: the daemon keeps its locks, its alarms and its
database."""
import itertools
import os
import re
import threading

import pytest
from alarm_fixtures import SANITIZED
from olt import wait_until
from project import PROJECT
from semaphore_holder import alarms_held, board_held
from stranger import stranger

STORE = "/dev/shm/tq_alarm_log"
MEMBER = ("setpriv", "--reuid", "nobody", "--regid", "daemon", "--clear-groups", "--")


def test_the_box_and_the_programs_mean_the_same_group():
    """Scripts cannot include a header: what they say must not drift away from it."""
    header = (PROJECT / "base" / "box_identity.hpp").read_text()
    user, group = (re.search(rf'{name}\[\] = "(\w+)"', header)[1] for name in ("daemon_user", "box_group"))
    power_on, box = ((PROJECT / "sim" / name).read_text() for name in ("olt", "box"))
    assert re.findall(r"^(user|group)=(.*)$", power_on, re.MULTILINE) == [("user", user), ("group", group)]
    assert set(re.findall(r"install .*?-g (\w+)", box)) == {group}
    assert f"which is the group of the vty socket: **{group}**" in (PROJECT / "docs" / "board.md").read_text()


def send(olt, message):
    return olt.run(f"alarm-log debug send id 77 message {message}")


def is_listed(olt, message):
    return f"    {message}\n" in olt.run("show alarm-log")[0]


def test_a_stranger_gets_at_nothing_that_the_programs_of_the_box_share(olt):
    assert olt.run("alarm-log alarm fan level alert") == ("", 0)  # all files are there
    assert stranger(olt, "attack") == []
    assert send(olt, "untouched") == ("", 0) and is_listed(olt, "untouched")
    assert olt.run("show logic version", "diagnose")[1] == 0


def test_all_that_is_shared_belongs_to_the_daemon_or_root_and_the_group(olt):
    found = olt.exec("find", "/dev/shm", "/var/lib/olt/sysrepo", "-mindepth", "1", "(", "-perm", "/o=rwx", "-o", "!",
                     "-group", "daemon", "-o", "!", "(", "-user", "root", "-o", "-user", "daemon", ")", ")", "-ls")
    assert found.stdout == ""
    sets = olt.exec("ipcs", "-s").stdout.splitlines()
    assert {line.split()[0]: line.split()[3] for line in sets if line.startswith("0x0010241")} == {
        "0x00102410": "660", "0x00102411": "660"}


def test_what_a_stranger_planted_before_the_start_is_removed_and_said(cold_olt):
    assert stranger(cold_olt, "plant") == ["semaphore board", "semaphore alarm", STORE]
    cold_olt.start()
    for what in ("semaphore 0x102410", "semaphore 0x102411", STORE):
        cold_olt.wait_log(f"{what} was made by user 65534, who is neither root nor the daemon's: removed")
    assert send(cold_olt, "filed") == ("", 0) and is_listed(cold_olt, "filed")
    assert cold_olt.run("show logic version", "diagnose")[1] == 0
    assert stranger(cold_olt, "attack") == []


def test_a_semaphore_of_roots_that_is_held_at_the_start_is_kept_as_it_is(cold_olt):
    """Other software of the box made it, open to all as was usual, and has it."""
    make = "import ctypes; c = ctypes.CDLL(None); s = c.semget(0x102410, 1, 0o1666); c.semctl(s, 0, 16, 1); print(s)"
    made = cold_olt.exec("/usr/bin/python3", "-c", make).stdout.strip()

    def found():
        return [line.split()[1:4] for line in cold_olt.exec("ipcs", "-s").stdout.splitlines() if "0x00102410" in line]

    assert found() == [[made, "root", "666"]]
    with board_held(cold_olt):
        cold_olt.start(wait=False)
        wait_until(lambda: found() == [[made, "root", "660"]], "nobody else gets at it any more")
        assert cold_olt.sem_value("board") == 0
    cold_olt.wait_answers()
    assert found() == [[made, "root", "660"]]


FILE_ONE = """
import ctypes
load = lambda name: ctypes.CDLL(f"/run/olt/build/lib/lib{name}.so", mode=ctypes.RTLD_GLOBAL)
load("tqdatabase")
api = load("tqapi")
assert api.tq_alarm_log_init() == 0
request = ctypes.create_string_buffer((77).to_bytes(2, "little"), 32)
assert api.cli_log(None, request, b"%s", b"by-a-member") == 0
"""


def test_a_member_of_the_group_files_alarms(olt):
    done = olt.exec(*MEMBER, "env", *SANITIZED, "/usr/bin/python3", "-c", FILE_ONE)
    assert done.returncode == 0, done.stderr
    assert is_listed(olt, "by-a-member")


# --- a store that is cut short

def test_a_store_that_is_cut_short_ends_no_process_and_is_said(fresh_olt):
    olt = fresh_olt
    assert send(olt, "before") == ("", 0)
    os.truncate(f"/proc/{olt.pid}/root{STORE}", 0)
    assert olt.run("show alarm-log") == ("get share memory failed : Protocol error\n", 0)
    assert send(olt, "lost")[1] != 0
    olt.wait_log("alarms do not get out to the alarm store: Protocol error")
    olt.exec("rm", STORE, check=True)
    assert send(olt, "after") == ("", 0) and is_listed(olt, "after")
    olt.wait_log("alarms get out to the alarm store again")


def test_a_store_that_is_cut_at_any_moment_ends_nobody(fresh_olt):
    """Threads of the daemon and another process write, sessions list, and somebody cuts and removes it all the time."""
    olt = fresh_olt
    over = threading.Event()
    store = f"/proc/{olt.pid}/root{STORE}"

    def cut():
        for n in itertools.count():
            if over.is_set():
                return
            try:
                os.truncate(store, 4096 * (n % 3))
                os.unlink(store)
            except FileNotFoundError:
                pass

    cutter = threading.Thread(target=cut)
    cutter.start()
    try:
        with olt.vty() as session:
            for n in range(150):
                session.run(f"alarm-log debug send id 77 message m{n}")
                assert session.run("show alarm-log")[1] == 0
    finally:
        over.set()
        cutter.join()
    assert olt.daemon.poll() is None
    olt.exec("rm", "-f", STORE)
    assert send(olt, "after") == ("", 0) and is_listed(olt, "after")


# --- locks that others keep

HOLDERS = pytest.mark.parametrize(
    "held, name, node, command",
    [(alarms_held, "0x102411", "config", "show alarm-log"), (board_held, "0x102410", "diagnose", "show logic version")],
    ids=["alarms", "board"])


@HOLDERS
def test_sessions_that_need_no_lock_go_on_while_others_wait_for_one(olt, held, name, node, command):
    before = olt.settled_fds()
    with held(olt) as release:
        waiting = [olt.vty(node) for _ in range(3)]
        for session in waiting:
            session.send(command)
        for _ in range(5):
            assert olt.run("show version")[1] == 0
            assert olt.run("show running-config")[1] == 0
        release()
        for session in waiting:
            assert session.receive()[1] == 0
            assert session.run(command)[1] == 0
            session.close()
    olt.wait_no_more_fds(before)


@HOLDERS
def test_who_keeps_a_lock_for_long_is_named_and_keeps_it(olt, held, name, node, command):
    with held(olt) as release, olt.vty(node) as session:
        session.send(command)
        olt.wait_log(f"semaphore {name}: waiting for process ")
        line = next(line for line in olt.log().splitlines() if f"semaphore {name}: waiting" in line)
        assert line.endswith(" (python3), which has had it for more than 5 s"), line
        assert olt.run("show version")[1] == 0
        release()
        assert session.receive()[1] == 0


def test_sessions_that_wait_for_different_locks_each_go_on_with_theirs(olt):
    with board_held(olt) as give_board, alarms_held(olt) as give_alarms:
        with olt.vty("diagnose") as board, olt.vty() as alarms, olt.vty() as more:
            board.send("show logic version")
            alarms.send("show alarm-log")
            assert olt.run("show version")[1] == 0
            more.send("alarm-log debug send id 77 message waited")
            give_alarms()
            assert alarms.receive()[1] == 0
            assert more.receive() == ("", 0)
            assert olt.run("show version")[1] == 0
            give_board()
            assert board.receive()[1] == 0
    assert is_listed(olt, "waited")


def test_a_session_that_hangs_up_while_its_command_waits_leaves_nothing(olt):
    before = olt.settled_fds()
    with alarms_held(olt):
        for _ in range(3):
            session = olt.vty()
            session.send("show alarm-log")
            wait_until(lambda: olt.sem_waiters("alarm") >= 1, "the command waits")
            session.close()
        assert olt.run("show version")[1] == 0
    olt.wait_no_more_fds(before)
    assert olt.run("show alarm-log")[1] == 0


# --- what a killed daemon leaves

def test_what_a_killed_daemon_left_is_cleared_by_the_next_start(fresh_olt):
    olt = fresh_olt
    inside = olt.exec("sh", "-c", "ls -d /var/tmp/frr/diagd.*").stdout.split()
    assert len(inside) == 1
    olt.kill()
    olt.exec("setpriv", "--reuid", "daemon", "--regid", "daemon", "--clear-groups", "--", "sh", "-c",
             "umask 027; echo half >/etc/frr/diagd.conf.Q7xY2a.tmp", check=True)
    olt.start()
    after = olt.exec("sh", "-c", "ls -d /var/tmp/frr/diagd.*; ls /etc/frr").stdout.split()
    assert inside[0] not in after and "diagd.conf.Q7xY2a.tmp" not in after and "diagd.conf" in after
