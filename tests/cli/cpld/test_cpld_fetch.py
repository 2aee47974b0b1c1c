# SPDX-License-Identifier: GPL-2.0-or-later
"""CPLD images on their way into the box: from real servers, from sticks, under names that are none.

The board has no CPLD for the daemon here: what was fetched stays in /tmp, unprogrammed.
"""
import contextlib
import re
import signal
from pathlib import Path

import pytest
from cpld import refused
from file_servers import Tftpd, Vsftpd
from jtag import in_tmp, main_calls, put_in_tmp, receive_until, record_of, run
from olt import wait_until

EVENT = 2
FAILED, SUCCEEDED = 1, 32
NO_CPLD = "misc_cpld_i2c_open thread=main ret=-1 errno=6"
IMAGE = bytes(range(256)) * 37 + b"tail"
JOE = ("joe", "secret")
NASTY = ["pass'word", 'pass"word', "$(touch${IFS}/tmp/owned)", "`touch${IFS}/tmp/owned`", ";touch${IFS}/tmp/owned;",
         "a|b&c>d<e", "*\\$HOME\\", "-p", "~root", "p\xe4\xdf#!%s{a,b}"]
BAD_NAMES = ["$(reboot)", "`reboot`", "f.jed;reboot", "f|g", "f&g", "f>g", "f'g", 'f"g', "../f.jed", "/etc/passwd", "a/b",
             "-rf", ".hidden", "..", "*", "f*", "f[a]", "f\\g", "~", "f.jed\x7f", "\xe4.jed", "f:g", "f=g", "x" * 70, "x" * 100,
             "x" * 400]
LONGEST_NAME = "K7200Q4_CPLD+1200HC-".ljust(65, "x") + ".jed"
FETCHED = [f"/tmp/{name}" for name in ("f.jed", "none.jed", "owned", LONGEST_NAME)]


@pytest.fixture(scope="module")
def shared(traced_olt):
    traced_olt.quiet()
    traced_olt.exec("rm", "-f", *FETCHED, check=True)
    return traced_olt


@pytest.fixture
def olt(shared):
    shared.faults(NO_CPLD)
    yield shared
    shared.faults()
    shared.exec("rm", "-f", *FETCHED, check=True)


@pytest.fixture(scope="module")
def tftpd(shared):
    server = Tftpd(shared)
    server.put("f.jed", IMAGE)
    yield server
    server.stop()


@pytest.fixture(scope="module")
def vsftpd(shared):
    users = {**dict([JOE]), **{f"u{number}": word for number, word in enumerate(NASTY)}, "o'$x": "secret"}
    server = Vsftpd(shared, users)
    server.put("f.jed", IMAGE)
    yield server
    server.stop()


@contextlib.contextmanager
def stick(olt, files=(), mount="sda1"):
    """While it lasts, a file system with these files (name, content, mode) is mounted there."""
    folder = f"/mnt/{mount}"
    olt.exec("mkdir", "-p", folder, check=True)
    olt.exec("mount", "-t", "tmpfs", "stick", folder, check=True)
    try:
        for name, content, mode in files:
            olt.exec("sh", "-c", f"mkdir -p $(dirname {folder}/{name}) && cat > {folder}/{name} && "
                     f"chmod {mode} {folder}/{name}", input=content, text=False, check=True)
        yield folder
    finally:
        olt.exec("umount", folder, check=True)
        olt.exec("rmdir", folder, check=True)


def lines_of_tftp(name, server):
    return f"/usr/bin/tftp -l /tmp/{name} -r {name} -g {server}"


# --- TFTP


@pytest.mark.parametrize("server", ["127.0.0.1", "::1"])
def test_an_image_is_fetched_by_tftp(olt, tftpd, server):
    done = run(olt, f"cpld upgrade tftp f.jed {server}")
    assert (done.text, done.rc) == (
        "Start to upgarde CPLD from tftp...\r\n"
        f"\r\nTrying to download f.jed from server {server}, please wait...\r\n", 0)
    assert done.lines == [lines_of_tftp("f.jed", server)]
    assert done.records == [(SUCCEEDED, EVENT, "download f.jed success")]
    assert in_tmp(olt, "f.jed") == IMAGE
    assert "download f.jed success" in olt.run("show alarm-log tail 1")[0]


def test_without_a_cpld_the_image_stays_and_nothing_is_said(olt, tftpd):
    switch = "no usb monitor"
    assert olt.run(switch, "diagnose") == ("", 0)
    out = len(olt.stdout())
    done = run(olt, "cpld upgrade tftp f.jed 127.0.0.1")
    assert done.work == [f"run: {lines_of_tftp('f.jed', '127.0.0.1')}", "record: download f.jed success",
                         *refused("update_cpld")]
    assert done.text.endswith("please wait...\r\n") and olt.stdout()[out:] == ""
    assert in_tmp(olt, "f.jed") == IMAGE
    assert "USB Monitor         : Disable" in olt.run("show diag monitor", "diagnose")[0]
    assert olt.run("usb monitor", "diagnose") == ("", 0)


def test_a_file_that_the_server_does_not_have_is_a_failed_download(olt, tftpd):
    out = len(olt.stdout())
    done = run(olt, "cpld upgrade tftp none.jed 127.0.0.1")
    assert (done.text, done.rc) == (
        "Start to upgarde CPLD from tftp...\r\n"
        "\r\nTrying to download none.jed from server 127.0.0.1, please wait...\r\n", 0)
    assert done.work == [f"run: {lines_of_tftp('none.jed', '127.0.0.1')}", "record: download none.jed fail"]
    assert done.records == [(FAILED, EVENT, "download none.jed fail")]
    assert olt.stdout()[out:] == "popen res is :256\n"
    assert in_tmp(olt, "none.jed") is None
    assert "download none.jed fail" in olt.run("show alarm-log tail 1")[0]


def test_a_client_that_is_not_there_is_a_failed_download(olt):
    olt.exec("mv", "/usr/bin/tftp", "/usr/bin/tftp.away", check=True)
    try:
        done = run(olt, "cpld upgrade tftp f.jed 127.0.0.1")
    finally:
        olt.exec("mv", "/usr/bin/tftp.away", "/usr/bin/tftp", check=True)
    assert done.records == [(FAILED, EVENT, "download f.jed fail")] and done.rc == 0


@pytest.mark.parametrize("command", ["tftp f.jed 127.0.0.1", "ftp f.jed 127.0.0.1 joe secret", "usb f.jed"])
def test_a_line_that_cannot_be_started_is_a_failed_download(olt, command):
    olt.faults(NO_CPLD, "popen thread=main ret=0 errno=12")
    out = len(olt.stdout())
    done = run(olt, f"cpld upgrade {command}")
    assert done.records == [(FAILED, EVENT, "download f.jed fail")] and done.rc == 0
    assert re.fullmatch("(popen error: Cannot allocate memory/n)+", olt.stdout()[out:])


def test_a_status_that_is_lost_is_a_failed_download(olt, tftpd):
    errors = len(olt.stderr())
    olt.faults(NO_CPLD, "pclose thread=main ret=-1 errno=10")
    done = run(olt, "cpld upgrade tftp f.jed 127.0.0.1")
    assert done.records == [(FAILED, EVENT, "download f.jed fail")] and done.rc == 0
    assert "pclose: No child processes\n" in olt.stderr()[errors:]


# --- FTP


@pytest.mark.parametrize("server", ["127.0.0.1", "::1"])
def test_an_image_is_fetched_by_ftp(olt, vsftpd, server):
    done = run(olt, f"cpld upgrade ftp f.jed {server} joe secret")
    assert (done.text, done.rc) == (
        "Start to upgarde CPLD from ftp...\r\n"
        f"\r\nTrying to download f.jed from server {server}, please wait...\r\n", 0)
    assert done.lines == [f"/usr/bin/ftpget -u joe -p secret {server} /tmp/f.jed f.jed"]
    assert done.records == [(SUCCEEDED, EVENT, "download f.jed success")]
    assert in_tmp(olt, "f.jed") == IMAGE


@pytest.mark.parametrize("name, user, password", [("f.jed", "joe", "wrong"), ("none.jed", "joe", "secret")],
                         ids=["password", "file"])
def test_what_the_ftp_server_refuses_is_a_failed_download(olt, vsftpd, name, user, password):
    done = run(olt, f"cpld upgrade ftp {name} 127.0.0.1 {user} {password}")
    assert done.work == [f"run: /usr/bin/ftpget -u {user} -p {password} 127.0.0.1 /tmp/{name} {name}",
                         f"record: download {name} fail"]
    assert done.records == [(FAILED, EVENT, f"download {name} fail")] and done.rc == 0


@pytest.mark.parametrize("number", range(len(NASTY)))
def test_a_password_reaches_the_server_as_it_was_typed_and_no_shell(olt, vsftpd, number):
    typed = NASTY[number].encode().decode("latin-1")  # sessions carry bytes
    done = run(olt, f"cpld upgrade ftp f.jed 127.0.0.1 u{number} {typed}")
    assert done.records == [(SUCCEEDED, EVENT, "download f.jed success")]
    assert in_tmp(olt, "f.jed") == IMAGE and in_tmp(olt, "owned") is None


def test_a_user_reaches_the_server_as_he_was_typed(olt, vsftpd):
    done = run(olt, "cpld upgrade ftp f.jed 127.0.0.1 o'$x secret")
    assert done.lines == ["/usr/bin/ftpget -u 'o'\\''$x' -p secret 127.0.0.1 /tmp/f.jed f.jed"]
    assert done.records == [(SUCCEEDED, EVENT, "download f.jed success")]


def test_a_password_of_any_length_is_not_cut(olt, vsftpd):
    word = "'" * 300
    done = run(olt, f"cpld upgrade ftp f.jed 127.0.0.1 joe {word}")
    quoted = "'" + "'\\''" * 300 + "'"
    assert done.lines == [f"/usr/bin/ftpget -u joe -p {quoted} 127.0.0.1 /tmp/f.jed f.jed"]
    assert done.records == [(FAILED, EVENT, "download f.jed fail")]


# --- names


@pytest.mark.parametrize("name", BAD_NAMES)
def test_a_name_that_is_none_runs_nothing(olt, name):
    for source in (f"tftp {name} 127.0.0.1", f"ftp {name} 127.0.0.1 joe secret", f"usb {name}"):
        done = run(olt, f"cpld upgrade {source}")
        assert (done.text, done.rc, done.work) == ("wrong file name.\r\n", 0, [])


def test_the_longest_name_is_fetched(olt, tftpd):
    tftpd.put(LONGEST_NAME, IMAGE)
    done = run(olt, f"cpld upgrade tftp {LONGEST_NAME} 127.0.0.1")
    assert done.records == [(SUCCEEDED, EVENT, f"download {LONGEST_NAME} success")]
    assert in_tmp(olt, LONGEST_NAME) == IMAGE


# --- USB

FIND = "find /mnt/s* -name 'f.jed'|head -n 1|xargs -i cp {} /tmp/f.jed"
STARTED = "Start to upgarde CPLD from usb...\r\nTrying to download f.jed from usb, please wait...\r\n"


def fails(olt, text, *lines):
    """A fetch from a stick that fails with this text, after these lines."""
    done = run(olt, "cpld upgrade usb f.jed")
    assert (done.text, done.rc) == (STARTED + text, 0)
    assert done.work == [*(f"run: {line}" for line in lines), "record: download f.jed fail"]
    assert done.records == [(FAILED, EVENT, "download f.jed fail")]


@pytest.mark.parametrize("mount, name", [("sda1", "f.jed"), ("sdb", "images/old/f.jed"), ("stick", "f.jed")])
def test_an_image_is_fetched_from_a_stick(olt, mount, name):
    with stick(olt, [(name, IMAGE, "644")], mount):
        done = run(olt, "cpld upgrade usb f.jed")
    assert (done.text, done.rc, done.lines) == (STARTED, 0, [FIND])
    assert done.records == [(SUCCEEDED, EVENT, "download f.jed success")]
    assert in_tmp(olt, "f.jed") == IMAGE


def test_the_first_match_of_several_sticks_is_taken(olt):
    with stick(olt, [("f.jed", b"first", "644")], "sda1"), stick(olt, [("f.jed", b"second", "644")], "sdb1"):
        assert run(olt, "cpld upgrade usb f.jed").records == [(SUCCEEDED, EVENT, "download f.jed success")]
    assert in_tmp(olt, "f.jed") == b"first"


def test_an_image_that_is_there_already_is_taken_without_a_look_at_the_stick(olt):
    put_in_tmp(olt, "f.jed", b"mine")
    with stick(olt, [("f.jed", IMAGE, "644")]):
        done = run(olt, "cpld upgrade usb f.jed")
    assert (done.text, done.rc) == ("Start to upgarde CPLD from usb...\r\nFile /tmp/f.jed is already exist\r\n", 0)
    assert done.work == refused("update_cpld") and not done.records
    assert in_tmp(olt, "f.jed") == b"mine"


def test_a_file_of_another_name_is_no_match(olt):
    with stick(olt, [("fxjed", IMAGE, "644"), ("af.jed", IMAGE, "644")]):
        fails(olt, "", FIND)
    assert in_tmp(olt, "f.jed") is None


def test_without_a_stick_nothing_is_found(olt):
    fails(olt, "", FIND)


def test_a_copy_that_fails_is_removed(olt):
    with stick(olt, [("f.jed/inside", IMAGE, "644")]):  # a folder
        fails(olt, "", FIND, "rm /tmp/f.jed")
    assert in_tmp(olt, "f.jed") is None


def test_an_empty_file_is_refused_and_removed(olt):
    with stick(olt, [("f.jed", b"", "644")]):
        fails(olt, "\r\nError: wrong file size !\r\n", FIND, "rm /tmp/f.jed")
    assert in_tmp(olt, "f.jed") is None


def test_a_file_that_cannot_be_read_is_refused_and_removed(olt):
    with stick(olt, [("f.jed", IMAGE, "600")]):
        fails(olt, "\r\nError: Open /tmp/f.jed fail !\r\n", FIND, "rm /tmp/f.jed")
    assert in_tmp(olt, "f.jed") is None


# --- waiting


def test_what_is_waited_for_is_said_before_the_wait(olt, tftpd):
    tftpd.suspend()
    try:
        with olt.vty("diagnose") as session:
            session.send("cpld upgrade tftp f.jed 127.0.0.1")
            text = receive_until(session, "please wait...\r\n")
            assert text.startswith("Start to upgarde CPLD from tftp...\r\n\r\nTrying to download f.jed ")
            tftpd.resume()
            assert session.receive() == ("", 0)
    finally:
        tftpd.resume()


def test_a_telnet_session_reads_it_before_the_wait_too(olt, tftpd):
    tftpd.suspend()
    try:
        with olt.telnet() as session:
            for step in ("enable", "configure terminal", "diagnose"):
                session.run(step)
            session.send("cpld upgrade tftp f.jed 127.0.0.1\r")
            session.expect(rb"Start to upgarde CPLD from tftp\.\.\.\s+Trying to download f.jed .*please wait\.\.\.\r+\n")
            tftpd.resume()
            session.wait_prompt()
    finally:
        tftpd.resume()


def test_an_operator_who_leaves_meanwhile_changes_nothing(olt, tftpd):
    before = len(olt.trace())
    tftpd.suspend()
    try:
        with olt.vty("diagnose") as session:
            session.send("cpld upgrade tftp f.jed 127.0.0.1")
            receive_until(session, "please wait...\r\n")
    finally:
        tftpd.resume()
    filed = wait_until(lambda: [call for call in main_calls(olt, before) if call.op == "cli_log"], "the record")
    assert [record_of(call) for call in filed] == [(SUCCEEDED, EVENT, "download f.jed success")]
    assert olt.run("show version")[1] == 0


def test_a_daemon_that_is_killed_while_it_fetches_says_nothing_of_it(make_olt):
    own = make_olt()
    own.start().quiet()
    server = Tftpd(own)
    server.put("f.jed", IMAGE)
    server.suspend()
    try:
        with own.vty("diagnose") as session:
            session.send("cpld upgrade tftp f.jed 127.0.0.1")
            receive_until(session, "please wait...\r\n")
            own.kill(signal.SIGKILL)
        own.wait_free("board")
        own.start().quiet()
        assert own.run("show alarm-log") == ("", 0)
        assert own.run("fan speed high", "diagnose") == ("", 0)
    finally:
        server.resume()
    assert own.run("show alarm-log") == ("", 0)


def test_nothing_is_left_behind_by_any_of_this(olt, tftpd, vsftpd):
    def held():
        """Programs and descriptors, but for the sessions'."""
        children = Path(f"/proc/{olt.pid}/task/{olt.pid}/children").read_text()
        return children, sorted(target for target in olt.fds().values() if not target.startswith("socket:"))

    before = held()
    for command in ("tftp f.jed 127.0.0.1", "tftp none.jed 127.0.0.1", "ftp f.jed 127.0.0.1 joe secret", "usb none.jed",
                    "usb f.jed"):
        run(olt, f"cpld upgrade {command}")
    wait_until(lambda: held() == before, "nothing more is held")
    wait_until(lambda: olt.sem_value("board") == 1, "the semaphore is free")
