# SPDX-License-Identifier: GPL-2.0-or-later
"""Messages that hold what a terminal would obey: other programs of the box choose what they file."""
import os
import re

import pytest
from alarm_fixtures import describe, olt, peer, store  # noqa: F401
from alarm_store import Record
from olt import wait_until

# What is filed, and what an operator sees of it.
MESSAGES = [
    pytest.param(b"clear \x1b[2J and title \x1b]0;x\a", b"clear ?[2J and title ?]0;x?", id="escape"),
    pytest.param(b"two\r\nlines\0", b"two??lines", id="line ends"),
    pytest.param(b"a\tb", b"a\tb", id="tab"),
    pytest.param(b"back\x08\x7f", b"back??", id="backspace and DEL"),
    pytest.param(b"byte \x9b31m", b"byte ?31m", id="C1 byte"),
    pytest.param(b"utf8 \xc2\x9b31m \xc2\x85", b"utf8 ?31m ?", id="C1 in UTF-8"),
    pytest.param(b"telnet \xff\xf4\xff", b"telnet ?\xf4?", id="telnet"),
    pytest.param("Lüfter € 🔔".encode(), "Lüfter € 🔔".encode(), id="UTF-8"),
    pytest.param(b"latin M\xfcller", b"latin M\xfcller", id="Latin-1"),
    pytest.param(b"cut \xe2\x82", b"cut \xe2?", id="cut UTF-8"),
]


@pytest.mark.parametrize("filed, shown", MESSAGES)
@pytest.mark.parametrize("command", ["show alarm-log", "show alarm-log level major", "show alarm-log head 1",
                                     "show alarm-log tail 1"])
def test_what_a_terminal_would_obey_is_shown_as_a_question_mark(olt, store, describe, command, filed, shown):
    store.chain([Record(filed, level=4, alarm_id=77, time=(2026, 3, 2, 9, 41, 17))])
    text, rc = olt.run(command)
    lines = text.encode("latin-1").split(b"\n")
    assert rc == 0
    assert lines[0] == b"[2026/03/02 09:41:17]  " + describe(77).encode() + b"    " + shown


def test_a_message_that_fills_its_field_is_shown_to_its_end(olt, store):
    store.chain([Record(b"\x1b" * 128)])
    assert olt.run("show alarm-log head 1")[0].endswith("    " + "?" * 128 + "\n")


def test_a_telnet_session_gets_no_command_from_a_message(olt, store, describe):
    store.chain([Record(b"\xff\xfd\x18 go \x1b[31m")])
    with olt.telnet() as session:
        session.run("enable")
        session.run("configure terminal")
        assert f"{describe(77)}    ?\xfd? go ?[31m" in session.run("show alarm-log")


def test_another_process_files_what_the_store_keeps_as_it_is(olt, store, peer):
    with peer("add", "77", "1", os.fsdecode(b"x\x1b[2J\xff\xc2\x9b")) as other:
        other.wait_for("0")
        assert other.finished() == []
    assert store.raw_message(store.places()[0]) == b"x\x1b[2J\xff\xc2\x9b-0"
    assert olt.run("show alarm-log")[0].splitlines()[0].endswith("    x?[2J??-0")


def test_the_flash_file_keeps_the_bytes(olt, store):
    store.chain([Record(b"x\x1b[2J\xff\xc2\x9b", level=4)])
    assert olt.run("alarm-log flash level debug") == ("", 0)
    assert olt.run("save alarm-log flash") == ("", 0)
    saved = (olt.state / "flash" / "config" / "var" / "alarm_log.log").read_bytes()
    assert saved.endswith(b" : x\x1b[2J\xff\xc2\x9b\n")


def test_print_writes_nothing_into_the_log_that_a_terminal_would_obey(olt, store):
    assert olt.run("alarm-log alarm fan enable all") == ("", 0)
    assert olt.run("alarm-log debug send id 0 message printed\x1b[2J\x7f\xff")[1] == 0
    wait_until(lambda: "printed" in olt.log(), "the alarm is printed")
    assert re.search(r"printed\?\[2J\?\?$", olt.log(), re.MULTILINE)
    assert store.raw_message(store.places()[0]) == b"printed\x1b[2J\x7f\xff"
