# SPDX-License-Identifier: GPL-2.0-or-later
"""The hidden command that files a test alarm: what reaches the platform, and what is stored."""
import struct

import pytest
from alarm_fixtures import describe, olt, store  # noqa: F401
from alarm_store import line
from alarm_words import ALARM_COUNT
from calls import of

# alarm id, uplink port, PON, ONU, ONU port, MAC text, state
REQUEST = struct.Struct("=HxxIIII6sxxI")


def send(olt, words):
    """Files the alarm; returns the platform's one cli_log call."""
    mark = len(olt.trace())
    _, rc = olt.run(f"alarm-log debug send {words}")
    calls = of(olt.trace()[mark:], "cli_log")
    assert rc == 0 and len(calls) == 1
    return calls[0]


def request_of(call):
    return REQUEST.unpack(bytes.fromhex(call.values["rec"]))


def test_the_record_and_its_text_reach_the_store_and_the_list(olt, store, describe):
    olt.run("alarm-log debug send id 77 message hello")
    records = store.records()
    assert [record.message for record in records] == ["hello"]
    assert records[0].alarm_id == 77
    text, rc = olt.run("show alarm-log")
    assert (text, rc) == (line(records[0], describe(77)) + "alarm log count: 1\n", 0)


def test_the_record_carries_the_wall_clock_in_printed_form(olt, store):
    before = olt.exec("date", "+%Y %m %d %H %M %S").stdout.split()
    olt.run("alarm-log debug send id 77 message now")
    after = olt.exec("date", "+%Y %m %d %H %M %S").stdout.split()
    assert tuple(map(int, before)) <= store.records()[0].time <= tuple(map(int, after))


@pytest.mark.parametrize("typed, stored", [
    (r"port\_down_now", "port_down now"),
    ("_", " "),
    (r"\_", "_"),
    (r"\\_", "\\_"),
    (r"a\b", r"a\b"),
    ("a\\", "a\\"),
    (r"\__\_", "_ _"),
    ("__", "  "),
])
def test_an_underscore_is_a_blank_and_a_backslash_keeps_it(olt, store, typed, stored):
    call = send(olt, f"id 77 message {typed}")
    assert call.values["text"] == stored
    assert store.messages() == [stored]


def test_fields_that_are_not_given_are_zero(olt, store):
    call = send(olt, "id 77 message x")
    assert request_of(call) == (77, 0, 0, 0, 0, bytes(6), 0)


def test_every_field_lies_at_its_place_of_the_32_byte_record(olt, store):
    call = send(olt, "id 77 uplink-port 3 pon 4 onu 5 onu-port 6 mac AB:CD:EF state 9 message x")
    assert request_of(call) == (77, 3, 4, 5, 6, b"AB:CD:", 9)


@pytest.mark.parametrize("words, position, value", [
    ("uplink-port 128", 1, 128), ("pon 32", 2, 32), ("onu 256", 3, 256), ("onu-port 256", 4, 256),
    ("mac 00:11:22:33:44:55", 5, b"00:11:"), ("state 512", 6, 512),
])
def test_each_keyword_fills_its_own_field_alone(olt, store, words, position, value):
    expected = [77, 0, 0, 0, 0, bytes(6), 0]
    expected[position] = value
    assert request_of(send(olt, f"id 77 {words} message x")) == tuple(expected)


def test_a_mac_shorter_than_six_characters_is_filled_with_zeros(olt, store):
    assert request_of(send(olt, "id 77 mac ab message x"))[5] == b"ab\0\0\0\0"


def test_keywords_may_be_abbreviated(olt, store):
    assert request_of(send(olt, "id 77 up 3 st 9 mess x")) == (77, 3, 0, 0, 0, bytes(6), 9)


@pytest.mark.parametrize("words", ["id 513 message x", "id 77 uplink-port 0 message x", "id 77 uplink-port 129 message x",
                                   "id 77 pon 33 message x", "id 77 onu 257 message x", "id 77 onu-port 257 message x",
                                   "id 77 state 513 message x", "id 77", "message x"])
def test_numbers_out_of_range_and_missing_words_are_refused(olt, store, words):
    _, rc = olt.run(f"alarm-log debug send {words}")
    assert rc != 0
    assert store.messages() == []


def test_a_long_message_is_handed_over_with_319_characters(olt, store):
    typed = "".join(chr(ord("a") + n % 26) for n in range(400))
    call = send(olt, f"id 77 message {typed}")
    assert call.values["text"] == typed[:319]
    assert store.messages() == [typed[:127]]


def test_escapes_count_as_one_of_the_319_characters(olt, store):
    call = send(olt, "id 77 message " + r"\_" * 330)
    assert call.values["text"] == "_" * 319


@pytest.mark.parametrize("typed", ["%s%n%s%n", "100%", "%d", "%-9999999s", "%%"])
def test_percent_signs_are_text(olt, store, typed):
    send(olt, f"id 77 message {typed}")
    assert store.messages() == [typed]


@pytest.mark.parametrize("typed", ["$(reboot)", ";id", "`id`", "&&id", "'x", '"x'])
def test_characters_of_the_shell_are_text(olt, store, typed):
    send(olt, f"id 77 message {typed}")
    assert store.messages() == [typed]


@pytest.mark.parametrize("result", [3, 1, 255])
def test_the_result_of_filing_is_the_result_of_the_command(olt, store, result):
    olt.faults(f"cli_log nth=1 ret={result}")
    _, rc = olt.run("alarm-log debug send id 77 message x")
    olt.faults()
    assert rc == result


def test_the_command_itself_takes_no_semaphore(olt, store):
    """Only the platform takes the store's, inside its own call; the board's stays free."""
    mark = len(olt.trace())
    olt.faults("cli_log nth=1 ret=0")
    olt.run("alarm-log debug send id 77 message x")
    olt.faults()
    calls = olt.trace()[mark:]
    assert len(of(calls, "cli_log")) == 1 and of(calls, "semaphore_[pv]") == []


@pytest.mark.parametrize("alarm_id", [0, 5, ALARM_COUNT - 1, ALARM_COUNT, 512])
def test_every_id_of_the_syntax_is_survived(olt, store, alarm_id):
    olt.run(f"alarm-log debug send id {alarm_id} message x")
    _, rc = olt.run("show alarm-log")
    assert rc == 0
    olt.wait_free("alarm")
