# SPDX-License-Identifier: GPL-2.0-or-later
"""Listing and clearing the shared alarm store: what an operator sees of chains of every shape."""
import pytest
from alarm_fixtures import describe, olt, store  # noqa: F401
from alarm_store import LEVELS, NONE, Record, line
from alarm_words import ALARM_COUNT
from calls import of

SHOWS = ["show alarm-log", "show alarm-log level major", "show alarm-log head 5", "show alarm-log tail 5"]
CLEARS = ["clear alarm-log", "clear alarm-log level major", "clear syslog", "clear syslog level major"]


def numbered(count, **fields):
    return [Record(f"record {n}", time=(2026, 3, 2, 9, 41, n % 60), **fields) for n in range(1, count + 1)]


@pytest.fixture
def listing(describe):  # noqa: F811
    """The text of these records, oldest first, without a count."""
    return lambda records: "".join(line(record, describe(record.alarm_id)) for record in records)


def shown(olt, command):
    text, rc = olt.run(command)
    assert rc == 0
    return text


def test_all_records_are_listed_oldest_first_with_their_number(olt, store, listing):
    records = [
        Record("supply 1 lost", level=4, alarm_id=77, time=(2026, 1, 2, 3, 4, 5)),
        Record("reset by command", level=1, alarm_id=29, time=(2026, 11, 12, 13, 14, 15)),
        Record("too hot", level=7, alarm_id=102, time=(2027, 12, 31, 23, 59, 59)),
    ]
    store.chain(records)
    assert shown(olt, "show alarm-log") == listing(records) + "alarm log count: 3\n"


def test_the_chain_decides_about_the_order_not_the_place_in_the_store(olt, store, listing):
    records = numbered(4)
    store.chain(records, slots=[4095, 0, 17, 3])
    assert shown(olt, "show alarm-log") == listing(records) + "alarm log count: 4\n"
    assert shown(olt, "show alarm-log tail 2") == listing(records[2:])


def test_a_line_holds_the_time_as_stored_two_blanks_the_description_four_blanks_the_message(olt, store, describe):
    store.chain([Record("the message", alarm_id=77, time=(2026, 1, 2, 3, 4, 5))])
    description = describe(77)
    assert shown(olt, "show alarm-log head 1") == f"[2026/01/02 03:04:05]  {description}    the message\n"


def test_month_and_year_are_printed_as_they_stand(olt, store, describe):
    store.chain([Record("m", time=(126, 12, 1, 0, 0, 0)), Record("n", time=(12026, 0, 0, 0, 0, 0))])
    text = shown(olt, "show alarm-log")
    assert text.startswith(f"[ 126/12/01 00:00:00]  {describe(77)}    m\n[12026/00/00 00:00:00]")


def test_lines_end_with_a_line_feed_alone(olt, store):
    store.chain(numbered(3))
    assert "\r" not in shown(olt, "show alarm-log")


@pytest.mark.parametrize("command", SHOWS + CLEARS)
def test_an_empty_store_prints_nothing_at_all(olt, store, command):
    store.empty()
    assert shown(olt, command) == ""


@pytest.mark.parametrize("command", SHOWS)
@pytest.mark.parametrize("header", [(0, 2, 0), (0, NONE, 3), (NONE, 2, 3)],
                         ids=["count 0", "no newest", "no oldest"])
def test_each_sign_of_emptiness_alone_counts_as_empty(olt, store, command, header):
    store.chain(numbered(3))
    store.header = header
    assert shown(olt, command) == ""


@pytest.mark.parametrize("number, level", list(enumerate(LEVELS)))
def test_a_level_shows_exactly_that_level(olt, store, listing, number, level):
    records = [Record(f"one of {name}", level=n) for n, name in enumerate(LEVELS)]
    records += [Record(f"two of {name}", level=n) for n, name in enumerate(LEVELS)]
    store.chain(records)
    expected = listing([records[number], records[number + 8]]) + "alarm log count: 2\n"
    assert shown(olt, f"show alarm-log level {level}") == expected


def test_a_level_without_records_prints_nothing_not_even_a_count(olt, store):
    store.chain(numbered(3, level=3) + numbered(3, level=5))
    assert shown(olt, "show alarm-log level major") == ""


def test_a_level_may_be_abbreviated(olt, store, listing):
    records = [Record("a", level=6), Record("b", level=2)]
    store.chain(records)
    assert shown(olt, "show alarm-log level al") == listing(records[:1]) + "alarm log count: 1\n"


@pytest.mark.parametrize("command", ["show alarm-log level loud", "show alarm-log head 0", "show alarm-log tail 0",
                                     "show alarm-log head 1001", "show alarm-log tail 1001",
                                     "clear alarm-log level loud"])
def test_words_outside_the_syntax_are_refused_and_nothing_is_done(olt, store, command):
    store.chain(numbered(2))
    _, rc = olt.run(command)
    assert rc != 0
    assert len(store.places()) == 2


def test_a_slot_that_holds_no_record_is_neither_shown_nor_counted(olt, store, listing):
    first, hole, last = numbered(3)
    store.chain([first, Record("hole", valid=False), last])
    assert shown(olt, "show alarm-log") == listing([first, last]) + "alarm log count: 2\n"
    assert "hole" not in shown(olt, "show alarm-log level major")


def test_a_chain_of_holes_prints_no_count(olt, store):
    store.chain([Record("hole", valid=False), Record("hole", valid=False)])
    assert shown(olt, "show alarm-log") == ""


@pytest.mark.parametrize("count, wanted", [(1, 1), (2, 2), (5, 5), (6, 5), (1000, 5)])
def test_head_shows_the_oldest(olt, store, listing, count, wanted):
    records = numbered(5)
    store.chain(records)
    assert shown(olt, f"show alarm-log head {count}") == listing(records[:wanted])


def test_head_uses_up_one_for_a_slot_without_a_record(olt, store, listing):
    records = numbered(7)
    records[1] = Record("hole", valid=False)
    store.chain(records)
    assert shown(olt, "show alarm-log head 5") == listing([records[0], *records[2:5]])
    assert shown(olt, "show alarm-log head 2") == listing(records[:1])


@pytest.mark.parametrize("count, wanted", [(1, 1), (2, 2), (3, 3), (5, 5), (6, 5), (1000, 5)])
def test_tail_shows_the_newest_oldest_first(olt, store, listing, count, wanted):
    records = numbered(5)
    store.chain(records)
    assert shown(olt, f"show alarm-log tail {count}") == listing(records[-wanted:])


def test_tail_1000_of_ten_records_shows_all_ten_without_a_count(olt, store, listing):
    records = numbered(10)
    store.chain(records)
    assert shown(olt, "show alarm-log tail 1000") == listing(records)


@pytest.mark.parametrize("count", [1, 2, 5])
@pytest.mark.parametrize("end", ["head", "tail"])
def test_a_single_record_is_head_and_tail(olt, store, listing, end, count):
    records = numbered(1)
    store.chain(records)
    assert shown(olt, f"show alarm-log {end} {count}") == listing(records)


def test_tail_steps_back_over_slots_not_over_records(olt, store, listing):
    records = numbered(5)
    records[3] = Record("hole", valid=False)
    store.chain(records)
    assert shown(olt, "show alarm-log tail 3") == listing([records[2], records[4]])


def test_tail_1_on_a_slot_without_a_record_prints_nothing(olt, store):
    records = numbered(3)
    records[2] = Record("hole", valid=False)
    store.chain(records)
    assert shown(olt, "show alarm-log tail 1") == ""


@pytest.mark.parametrize("alarm_id", [ALARM_COUNT, 512, 65535])
def test_an_alarm_that_the_catalogue_does_not_know_has_no_description(olt, store, alarm_id):
    record = Record("strange", alarm_id=alarm_id)
    store.chain([record])
    assert shown(olt, "show alarm-log") == line(record, "") + "alarm log count: 1\n"


@pytest.mark.parametrize("level", [8, 9, 255])
def test_a_record_of_an_unknown_level_is_shown_only_without_a_level(olt, store, listing, level):
    record = Record("odd", level=level)
    store.chain([record])
    assert shown(olt, "show alarm-log") == listing([record]) + "alarm log count: 1\n"
    assert [shown(olt, f"show alarm-log level {name}") for name in LEVELS] == [""] * 8


def test_a_message_without_an_end_stops_at_its_field(olt, store, describe):
    filler = "x" * 128
    store.chain([Record(filler), Record("after")])
    assert shown(olt, "show alarm-log head 1") == line(Record(filler), describe(77))


def test_clear_removes_every_record_and_says_nothing(olt, store):
    store.chain(numbered(10))
    assert shown(olt, "clear alarm-log") == ""
    assert store.header == (NONE, NONE, 0)
    assert shown(olt, "show alarm-log") == ""


@pytest.mark.parametrize("command", ["clear alarm-log level info", "clear syslog level info", "clear syslog level in"])
def test_clear_by_level_leaves_every_other_level(olt, store, command):
    store.chain([Record("a", level=1), Record("b", level=2), Record("c", level=1), Record("d", level=0),
                 Record("e", level=7)])
    assert shown(olt, command) == ""
    assert store.messages() == ["b", "d", "e"]


@pytest.mark.parametrize("number, level", list(enumerate(LEVELS)))
def test_clear_takes_every_level_keyword(olt, store, number, level):
    store.chain([Record(name, level=n) for n, name in enumerate(LEVELS)])
    assert shown(olt, f"clear alarm-log level {level}") == ""
    assert store.messages() == [name for name in LEVELS if name != level]


@pytest.mark.parametrize("gone", [{0}, {4}, {2}, {0, 1, 2}, {2, 3, 4}, {0, 2, 4}, {1, 3}, {0, 1, 2, 3, 4}])
def test_clear_leaves_a_sound_chain_wherever_the_records_were(olt, store, gone):
    store.chain([Record(str(n), level=1 if n in gone else 2) for n in range(5)])
    shown(olt, "clear alarm-log level info")
    assert store.messages() == [str(n) for n in range(5) if n not in gone]


def test_clear_deletes_only_slots_that_hold_a_record(olt, store):
    store.chain([Record("a"), Record("hole", valid=False), Record("b")])
    mark = len(olt.trace())
    shown(olt, "clear alarm-log")
    assert len(of(olt.trace()[mark:], "tq_alarm_log_delete_by_index")) == 2
    assert shown(olt, "show alarm-log") == ""


def test_new_records_follow_after_a_clear(olt, store):
    store.chain(numbered(3))
    shown(olt, "clear alarm-log")
    olt.run("alarm-log debug send id 77 message first")
    olt.run("alarm-log debug send id 77 message second")
    assert store.messages() == ["first", "second"]


@pytest.mark.parametrize("command", SHOWS + CLEARS)
def test_the_store_is_walked_under_its_own_semaphore_alone(olt, store, command):
    store.chain(numbered(3))
    mark = len(olt.trace())
    shown(olt, command)
    names = [f"{call.op} {call.arguments}" for call in of(olt.trace()[mark:], "semaphore_[pv]")]
    assert names == ["semaphore_p id=alarm", "semaphore_v id=alarm"]
    olt.wait_free("alarm")


@pytest.mark.parametrize("command", ["clear alarm-log", "clear syslog level major"])
def test_records_are_deleted_while_the_semaphore_is_held(olt, store, command):
    store.chain(numbered(3))
    mark = len(olt.trace())
    shown(olt, command)
    ops = [call.op for call in of(olt.trace()[mark:], "semaphore_[pv]|tq_alarm_log_delete_by_index")]
    assert ops == ["semaphore_p", *["tq_alarm_log_delete_by_index"] * 3, "semaphore_v"]


def test_the_store_is_attached_once(olt, store):
    store.chain(numbered(1))
    shown(olt, "show alarm-log")
    mark = len(olt.trace())
    for command in [*SHOWS, *CLEARS]:
        shown(olt, command)
    assert of(olt.trace()[mark:], "tq_alarm_log_get_shm_pointer") == []
