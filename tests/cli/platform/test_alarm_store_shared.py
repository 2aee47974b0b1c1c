# SPDX-License-Identifier: GPL-2.0-or-later
"""The alarm store is shared by processes: nothing is lost, nothing hangs, whoever dies or scribbles."""
import random
import re
import signal
import threading
import time

import pytest
from alarm_fixtures import describe, olt, peer, peer_of, store  # noqa: F401
from alarm_store import CAPACITY, NONE, AlarmStore, Record, line
from calls import of

LINE = re.compile(r"\[\d{4}/\d\d/\d\d \d\d:\d\d:\d\d\]  .*    (.*)")
OWN_RECORDS = {"Open!", "Close!", "Power1 Up", "Power2 Up"}  # that the monitors file of their own accord
WALKS = ["show alarm-log", "show alarm-log level major", "show alarm-log head 1000", "show alarm-log tail 1000"]


def numbered(count, **fields):
    return [Record(f"record {n}", **fields) for n in range(count)]


def shown(olt, command="show alarm-log"):
    text, rc = olt.run(command)
    assert rc == 0
    return text


def listed(olt):
    """Messages of the whole listing, those of the monitors left out; every line is complete and the count is right."""
    *lines, count = shown(olt).splitlines() or ["alarm log count: 0"]
    messages = [LINE.fullmatch(text) for text in lines]
    assert all(messages), [text for text, match in zip(lines, messages) if not match]
    assert count == f"alarm log count: {len(lines)}"
    return [match[1] for match in messages if match[1] not in OWN_RECORDS]


def test_another_process_sees_what_the_daemon_files_and_the_other_way_round(olt, store, peer):
    olt.run("alarm-log debug send id 77 message from_the_daemon")
    with peer("add", "77", "1", "peer") as other:
        assert other.finished() == ["0"]
    assert listed(olt) == ["from the daemon", "peer-0"]


def test_several_writers_at_once_lose_nothing_and_mix_nothing(olt, store, peer):
    numbers = {"a": 1800, "b": 1800, "c": 300}
    with peer("add", "77", "1800", "a") as a, peer("add", "77", "1800", "b") as b, olt.vty() as session:
        for n in range(numbers["c"]):
            _, rc = session.run(f"alarm-log debug send id 77 message c-{n}")
            assert rc == 0
        a.finished()
        b.finished()
    messages = listed(olt)
    assert len(messages) == sum(numbers.values())
    for prefix, count in numbers.items():
        assert [text for text in messages if text[0] == prefix] == [f"{prefix}-{n}" for n in range(count)]
    assert sorted(store.messages()) == sorted(messages)
    olt.wait_free("alarm")


def test_listing_while_others_write_shows_complete_records_in_order(olt, store, peer):
    with peer("add", "77", "3000", "w") as writer:
        while writer.running():
            messages = listed(olt)
            assert messages == [f"w-{n}" for n in range(len(messages))]
        writer.finished()
    assert listed(olt) == [f"w-{n}" for n in range(3000)]


def test_clearing_while_others_write_leaves_a_sound_chain(olt, store, peer):
    with peer("add", "77", "3000", "w") as writer:
        while writer.running():
            shown(olt, "clear alarm-log")
            listed(olt)
        writer.finished()
    olt.wait_free("alarm")
    olt.run("alarm-log debug send id 77 message last")
    assert store.messages()[-1] == "last"


def test_two_sessions_and_two_processes_at_once_end_in_a_sound_store(olt, store, peer):
    failures = []

    def session(commands):
        try:
            with olt.vty() as vty:
                for command in commands * 60:
                    _, rc = vty.run(command)
                    assert rc == 0, command
        except Exception as error:  # handed to the test's own thread
            failures.append(error)

    with peer("add", "77", "3000", "w") as writer, peer("delete-oldest") as eraser:
        threads = [threading.Thread(target=session, args=(commands,)) for commands in
                   (["show alarm-log", "clear alarm-log level emerg"], ["show alarm-log tail 1000", "show alarm-log head 9"])]
        for thread in threads:
            thread.start()
        for thread in threads:
            thread.join(30)
            assert not thread.is_alive()
        writer.finished()
        eraser.close_input()
        eraser.finished()
    assert failures == []
    numbers = [int(message.split("-")[1]) for message in store.messages()]
    assert numbers == sorted(numbers)
    olt.wait_free("alarm")


def test_a_command_waits_for_the_process_that_holds_the_semaphore(olt, store, peer):
    store.chain(numbered(1))
    answers = []
    with olt.vty() as vty:
        with peer("hold"):
            waiting = threading.Thread(target=lambda: answers.append(vty.run("show alarm-log tail 1")))
            waiting.start()
            waiting.join(0.3)
            assert waiting.is_alive() and answers == []
        waiting.join(5)
    assert [(text.count("\n"), rc) for text, rc in answers] == [(1, 0)]


def test_a_process_killed_while_it_holds_the_semaphore_frees_it(olt, store, peer):
    store.chain(numbered(3))
    with peer("hold") as holder:
        assert olt.sem_value("alarm") == 0
        holder.kill()
        assert listed(olt) == ["record 0", "record 1", "record 2"]
    olt.wait_free("alarm")


def test_writers_killed_at_any_moment_lose_nothing_that_was_filed(olt, store, peer):
    """What the writer reported as filed is there afterwards; at most the record in the making is on top."""
    chance = random.Random(20260302)
    expected = []
    for life in range(25):
        with peer("add", "77", "0", f"life{life}") as writer:
            deadline = time.monotonic() + chance.uniform(0.001, 0.02)
            while time.monotonic() < deadline:
                pass
            writer.kill()
            filed = [f"life{life}-{number}" for number in writer.lines()]
        messages = listed(olt)
        expected += filed
        if messages[-1:] == [f"life{life}-{len(filed)}"]:
            expected.append(messages[-1])
        assert messages == expected[-CAPACITY:]
        store.places()
        olt.wait_free("alarm")
    olt.run("alarm-log debug send id 77 message alive")
    assert listed(olt)[-1] == "alive"


def test_erasers_killed_at_any_moment_leave_the_newest_records_whole(olt, store, peer):
    chance = random.Random(17)
    for _ in range(8):
        store.empty()
        olt.run("alarm-log debug send id 77 message first")
        with peer("add", "77", "300", "n") as writer:
            writer.finished()
        with peer("delete-oldest") as eraser:
            deadline = time.monotonic() + chance.uniform(0, 0.002)
            while time.monotonic() < deadline:
                pass
            eraser.kill()
        messages = listed(olt)
        whole = ["first", *(f"n-{n}" for n in range(300))]
        assert messages == whole[len(whole) - len(messages):]
        store.places()
        olt.wait_free("alarm")


def test_a_full_store_replaces_the_oldest_records(olt, store, peer):
    extra = 5
    with peer("add", "77", str(CAPACITY + extra), "f") as writer:
        writer.finished()
    head, tail, count = store.header
    assert count == CAPACITY
    messages = listed(olt)
    assert messages == [f"f-{n}" for n in range(extra, CAPACITY + extra)]
    assert shown(olt, "show alarm-log tail 1").endswith(f"    f-{CAPACITY + extra - 1}\n")
    assert shown(olt, "show alarm-log head 1").endswith(f"    f-{extra}\n")
    olt.run("alarm-log debug send id 77 message newest")
    assert store.header[2] == CAPACITY
    assert shown(olt, "show alarm-log tail 1").endswith("    newest\n")
    assert shown(olt, "clear alarm-log") == ""
    assert store.header == (NONE, NONE, 0)
    olt.run("alarm-log debug send id 77 message anew")
    assert store.messages() == ["anew"]


def test_a_full_store_is_listed_completely(olt, store):
    store.chain([Record(f"r{n}") for n in range(CAPACITY)])
    assert listed(olt) == [f"r{n}" for n in range(CAPACITY)]
    assert shown(olt, "show alarm-log tail 1000").count("\n") == 1000
    assert shown(olt, "show alarm-log head 1000").count("\n") == 1000


def scribble(store, name):
    """A sound chain of ten records, then one thing wrong in it."""
    store.chain(numbered(10))
    links = {
        "a circle": lambda: store.set_link(9, next_=0),
        "a record before itself": lambda: store.set_link(4, next_=4, prev=4),
        "two records in a circle": lambda: store.set_link(5, next_=4),
        "a way back in a circle": lambda: store.set_link(5, prev=6),
        "a way out of the store": lambda: store.set_link(3, next_=CAPACITY),
        "a way far out of the store": lambda: store.set_link(3, next_=0xFFFFFFFE),
        "a way back out of the store": lambda: store.set_link(7, prev=0x80000000),
        "a way back that ends early": lambda: store.set_link(7, prev=NONE),
    }
    heads = {
        "an oldest out of the store": (CAPACITY, 9, 10),
        "a newest out of the store": (0, 0x7FFFFFFF, 10),
        "both out of the store": (0xFFFFFFFE, 0xFFFFFFFE, 1),
        "an oldest after the newest": (9, 0, 10),
        "a count far too high": (0, 9, 0xFFFFFFFF),
    }
    if name in links:
        links[name]()
    else:
        store.header = heads[name]


SCRIBBLES = ["a circle", "a record before itself", "two records in a circle", "a way back in a circle",
             "a way out of the store", "a way far out of the store", "a way back out of the store",
             "a way back that ends early", "an oldest out of the store", "a newest out of the store",
             "both out of the store", "an oldest after the newest", "a count far too high"]


@pytest.mark.parametrize("command", [*WALKS, "clear alarm-log", "clear alarm-log level info"])
@pytest.mark.parametrize("wrong", SCRIBBLES)
def test_walks_over_a_scribbled_store_end_and_stay_inside(olt, store, wrong, command):
    scribble(store, wrong)
    text = shown(olt, command)
    assert text.count("\n") <= CAPACITY + 1
    assert all(re.search(r"    record \d$", row) for row in text.splitlines() if not row.startswith("alarm log count"))
    olt.wait_free("alarm")


@pytest.mark.parametrize("wrong", SCRIBBLES)
def test_filing_into_a_scribbled_store_ends_and_a_clear_makes_it_good(olt, store, wrong):
    scribble(store, wrong)
    olt.run("alarm-log debug send id 77 message x")
    shown(olt, "clear alarm-log")
    olt.wait_free("alarm")
    store.empty()
    olt.run("alarm-log debug send id 77 message good")
    assert store.messages() == ["good"]


def test_a_store_full_of_noise_is_survived(olt, store):
    chance = random.Random(99)
    for _ in range(20):
        store.empty()
        for index in range(64):
            noise = bytes(chance.randrange(256) for _ in range(128))
            store.put(index, Record(noise, chance.randrange(256), chance.randrange(65536), valid=chance.random() < 0.9),
                      chance.randrange(CAPACITY), chance.randrange(80))
        store.header = (chance.randrange(64), chance.randrange(64), chance.randrange(100))
        for command in [*WALKS, "clear alarm-log level notice"]:
            _, rc = olt.run(command)
            assert rc == 0
        olt.wait_free("alarm")


def test_a_store_deleted_under_the_daemon_is_replaced_by_the_one_that_others_use(fresh_olt):
    olt = fresh_olt
    olt.run("alarm-log debug send id 77 message before")
    olt.exec("rm", "/dev/shm/tq_alarm_log", check=True)
    for command in [*WALKS, "clear alarm-log"]:
        assert olt.run(command) == ("", 0)
    olt.run("alarm-log debug send id 77 message after")
    with peer_of(olt, "add", "77", "1", "peer") as other:
        other.finished()
    assert listed(olt) == ["after", "peer-0"]
    assert olt.log().count("the alarm store was replaced: attached the new one") == 1
    olt.restart()
    assert listed(olt) == ["after", "peer-0"]


def test_a_store_cut_off_under_the_daemon_is_reported_and_comes_back_when_it_is_removed(fresh_olt):
    olt = fresh_olt
    olt.run("alarm-log debug send id 77 message before")
    olt.run("show alarm-log")
    olt.exec("truncate", "-s", "0", "/dev/shm/tq_alarm_log", check=True)
    for command in [*WALKS, "clear alarm-log"]:
        assert olt.run(command) == ("get share memory failed : Protocol error\n", 0)
    for _ in range(3):
        olt.run("alarm-log debug send id 77 message lost")
    assert olt.log().count("alarms do not get out to the alarm store: Protocol error") == 1
    olt.exec("rm", "/dev/shm/tq_alarm_log", check=True)
    olt.run("alarm-log debug send id 77 message anew")
    assert listed(olt) == ["anew"]
    assert olt.log().count("alarms get out to the alarm store again") == 1


@pytest.mark.parametrize("size", [0, 16, 819216, 1 << 20])
def test_a_store_of_a_wrong_size_is_refused_with_a_reason(fresh_olt, size):
    olt = fresh_olt
    olt.stop()
    olt.exec("truncate", "-s", str(size), "/dev/shm/tq_alarm_log", check=True)
    olt.start()
    assert olt.run("show alarm-log") == ("get share memory failed : Protocol error\n", 0)
    olt.wait_free("alarm")


def test_records_outlive_the_daemon_however_it_ends(fresh_olt):
    olt = fresh_olt
    for n, how in enumerate([signal.SIGTERM, signal.SIGINT, signal.SIGKILL]):
        olt.run(f"alarm-log debug send id 77 message m{n}")
        olt.kill(how)
        olt.start()
        assert listed(olt) == [f"m{k}" for k in range(n + 1)]


def test_a_daemon_killed_and_started_again_finds_what_others_filed_meanwhile(fresh_olt):
    olt = fresh_olt
    with peer_of(olt, "add", "77", "0", "w") as writer:
        filed = 0
        for _ in range(3):
            olt.kill(signal.SIGKILL)
            writer.lines()
            olt.start()
            numbers = [int(message.split("-")[1]) for message in listed(olt)]
            assert numbers == list(range(numbers[0], numbers[-1] + 1))
            assert numbers[-1] > filed
            filed = numbers[-1]
        assert writer.running()
    olt.wait_free("alarm")


def test_a_daemon_killed_in_the_middle_of_a_listing_frees_the_store(fresh_olt):
    olt = fresh_olt
    full = AlarmStore(olt.pid)
    full.chain([Record(f"r{n}") for n in range(CAPACITY)])
    for _ in range(3):
        with olt.vty() as vty:
            vty.send("show alarm-log")
            olt.kill(signal.SIGKILL)
        olt.start()
        assert len(listed(olt)) == CAPACITY
        olt.wait_free("alarm")


@pytest.fixture(scope="module")
def unattached_olt(make_olt):
    """A daemon that never gets hold of the store."""
    alone = make_olt()
    alone.faults("tq_alarm_log_get_shm_pointer ret=0 errno=13")
    return alone.start(trace=True)


@pytest.mark.parametrize("command", [*WALKS, "clear alarm-log", "clear syslog level info"])
def test_a_store_that_cannot_be_attached_is_reported_once_and_the_semaphore_given_back(unattached_olt, command):
    assert unattached_olt.run(command) == ("get share memory failed : Permission denied\n", 0)
    unattached_olt.wait_free("alarm")


def test_the_store_is_attached_under_the_semaphore(unattached_olt):
    before = len(unattached_olt.trace())
    unattached_olt.run("show alarm-log")
    calls = of(unattached_olt.trace()[before:], "semaphore_[pv]|tq_alarm_log_get_shm_pointer")
    assert [call.op for call in calls] == ["semaphore_p", "tq_alarm_log_get_shm_pointer", "semaphore_v"]


def test_the_store_is_attached_by_the_first_command_that_can_and_never_again(cold_olt):
    cold_olt.faults("tq_alarm_log_get_shm_pointer ret=0 errno=13")
    cold_olt.start(trace=True)
    assert cold_olt.run("show alarm-log")[0].startswith("get share memory failed")
    cold_olt.faults()
    before = len(cold_olt.trace())
    for _ in range(3):
        assert cold_olt.run("show alarm-log") == ("", 0)
    assert len(of(cold_olt.trace()[before:], "tq_alarm_log_get_shm_pointer")) == 1


def test_a_long_listing_read_slowly_does_not_keep_writers_from_the_store(olt, store, peer, describe):
    """The lines go into the session's buffer under the semaphore; the reader's pace is not the writers'."""
    store.chain([Record(f"r{n}") for n in range(CAPACITY - 10)])
    with olt.vty() as vty:
        vty.send("show alarm-log")
        with peer("add", "77", "3", "p") as writer:
            assert writer.finished() == ["0", "1", "2"]
        text, rc = vty.receive()
    assert rc == 0
    assert text.count("\n") in range(CAPACITY - 10 + 1, CAPACITY + 1)
    assert text.startswith(line(Record("r0"), describe(77)))
