# SPDX-License-Identifier: GPL-2.0-or-later
"""What somebody else put into /tmp under an image's name: root neither writes nor uses it; and fetches that do not end."""
import os
import signal
from pathlib import Path

import pytest

from calls import of
from cpld import board_session
from file_servers import Tftpd
from jtag import Programmer, in_tmp, main_calls, put_in_tmp, receive_until, run
from monitors import hurried
from olt import wait_until

IMAGE = b"an image\n" * 100
SECRET = b"what root must not touch\n"
FAILED, EVENT = 1, 2
BACKUP = "/media/app/K7200Q4_CPLD_1200HC_BACKUP.jed"
COPY = "tmp/cpld_backup.jed"
# Makes FILE something of somebody else's; /tmp/theirs is what he wants written or used.
FOREIGN = {
    "link": "ln -s /tmp/theirs FILE",
    "dangling link": "ln -s /tmp/nowhere FILE",
    "hard link": "ln /tmp/theirs FILE",
    "file of another user": "install -o nobody -m 644 /tmp/theirs FILE",
    "folder": "mkdir FILE",
    "pipe": "mkfifo FILE",
}


@pytest.fixture(scope="module")
def shared(traced_olt):
    return traced_olt.quiet()


@pytest.fixture
def olt(shared):
    put_in_tmp(shared, "theirs", SECRET)
    shared.faults(*hurried("main"))
    yield shared
    shared.faults()
    assert in_tmp(shared, "theirs") == SECRET
    shared.quiet()  # programming switches every monitor on
    shared.exec("rm", "-rf", "/tmp/f.jed", "/tmp/cpld_backup.jed", "/tmp/theirs", "/tmp/nowhere", "/media/app", check=True)


@pytest.fixture
def programmer(olt):
    return Programmer(olt)


def make_foreign(olt, kind, file):
    olt.exec("sh", "-c", FOREIGN[kind].replace("FILE", file), check=True)
    return look(olt, file)


def look(olt, file):
    """What is at a path, content apart."""
    return olt.exec("stat", "--format=%F %h %u %N", file, check=True).stdout


def said_in_log(olt, path, since):
    return f"{path} is left alone: not a regular file of root's or the daemon's with a single link" in olt.log()[since:]


@pytest.mark.parametrize("kind", FOREIGN)
@pytest.mark.parametrize("source, words", [("tftp", "127.0.0.1"), ("ftp", "127.0.0.1 joe secret")])
def test_nothing_is_fetched_onto_it(olt, programmer, kind, source, words):
    found = make_foreign(olt, kind, "/tmp/f.jed")
    log = len(olt.log())
    done = run(olt, f"cpld upgrade {source} f.jed {words}")
    assert (done.text, done.rc) == (
        f"Start to upgarde CPLD from {source}...\r\n"
        "\r\nTrying to download f.jed from server 127.0.0.1, please wait...\r\n", 0)
    assert done.work == ["record: download f.jed fail"]
    assert done.records == [(FAILED, EVENT, "download f.jed fail")]
    assert look(olt, "/tmp/f.jed") == found and said_in_log(olt, "/tmp/f.jed", log)
    assert in_tmp(olt, "nowhere") is None


@pytest.mark.parametrize("kind", FOREIGN)
def test_it_is_not_taken_for_an_image_that_is_there_already(olt, programmer, kind):
    found = make_foreign(olt, kind, "/tmp/f.jed")
    log = len(olt.log())
    done = run(olt, "cpld upgrade usb f.jed")
    assert (done.text, done.rc) == (
        "Start to upgarde CPLD from usb...\r\n\r\nError: Open /tmp/f.jed fail !\r\n", 0)
    assert done.work == ["record: download f.jed fail"]
    assert done.records == [(FAILED, EVENT, "download f.jed fail")]
    assert look(olt, "/tmp/f.jed") == found and said_in_log(olt, "/tmp/f.jed", log)
    assert programmer.notes() == []


@pytest.mark.parametrize("kind", FOREIGN)
def test_the_backup_is_not_copied_onto_it(olt, programmer, kind):
    olt.exec("mkdir", "-p", "/media/app", check=True)
    olt.exec("tee", BACKUP, input=IMAGE, text=False, check=True)
    found = make_foreign(olt, kind, "/tmp/cpld_backup.jed")
    log = len(olt.log())
    done = run(olt, "cpld restore")
    assert (done.text, done.rc) == (
        f"Start to restore CPLD from backup file...\r\nCan't open CPLD Backup file: {COPY}\r\n", 1)
    assert done.work == [] and programmer.notes() == []
    assert look(olt, "/tmp/cpld_backup.jed") == found and said_in_log(olt, COPY, log)


@pytest.mark.parametrize("kind", FOREIGN)
def test_what_a_fetch_has_left_there_is_not_programmed(olt, programmer, kind):
    """The client says that all is well, and it is not: somebody was quicker."""
    olt.exec("mv", "/usr/bin/tftp", "/usr/bin/tftp.away", check=True)
    try:
        olt.exec("sh", "-c", "cat > /usr/bin/tftp && chmod 755 /usr/bin/tftp",
                 input="#!/bin/sh\n" + FOREIGN[kind].replace("FILE", "/tmp/f.jed") + "\n", check=True)
        log, out = len(olt.log()), len(olt.stdout())
        done = run(olt, "cpld upgrade tftp f.jed 127.0.0.1")
    finally:
        olt.exec("mv", "/usr/bin/tftp.away", "/usr/bin/tftp", check=True)
    assert done.work == ["run: /usr/bin/tftp -l /tmp/f.jed -r f.jed -g 127.0.0.1", "record: download f.jed success",
                         *board_session("update_cpld")]
    assert olt.stdout()[out:] == "" and programmer.notes() == []
    assert said_in_log(olt, "/tmp/f.jed", log)
    look(olt, "/tmp/f.jed")


def test_a_file_that_an_operator_has_put_there_as_root_is_programmed(olt, programmer):
    put_in_tmp(olt, "f.jed", IMAGE)
    assert run(olt, "cpld upgrade usb f.jed").rc == 0
    assert programmer.notes()[0].startswith("begins, arguments: /tmp/f.jed, image: 900 bytes ")


def test_a_client_that_is_ended_with_its_shell_is_a_failed_download(olt, programmer):
    """The shell leads a process group, apart from the daemon's: what ends a fetch that stands still ends the group."""
    server = Tftpd(olt)
    server.put("f.jed", IMAGE)
    server.suspend()
    out, before = len(olt.stdout()), len(olt.trace())
    try:
        with olt.vty("diagnose") as session:
            session.send("cpld upgrade tftp f.jed 127.0.0.1")
            receive_until(session, "please wait...\r\n")
            shell = int(wait_until(lambda: Path(f"/proc/{olt.pid}/task/{olt.pid}/children").read_text(), "the shell"))
            wait_until(lambda: os.getpgid(shell) == shell, "its group")
            os.killpg(shell, signal.SIGKILL)
            assert session.receive() == ("", 0)
    finally:
        server.resume()
        server.stop()
    assert olt.stdout()[out:] == "popen res is :9\n"
    assert [call.values["text"] for call in of(main_calls(olt, before), "cli_log")] == ["download f.jed fail"]
    assert programmer.notes() == []
