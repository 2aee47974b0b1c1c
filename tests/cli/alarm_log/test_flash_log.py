# SPDX-License-Identifier: GPL-2.0-or-later
"""The flash log: its level, what is saved, and what a broken flash does to it."""
import os
import stat
import threading
from pathlib import Path

import pytest
from alarm_fixtures import calls_of, catalogue, edit_database, olt, store  # noqa: F401
from alarm_store import LEVELS, NONE, AlarmStore, Record
from alarm_words import ALARM_COUNT
from calls import in_order, of
from olt import wait_until

PATH = "/media/config/var/alarm_log.log"
SET, GET = "db_olt_alarm_log_set_alarm_log_flash_level", "db_olt_alarm_log_get_alarm_log_flash_level"
CANNOT_OPEN = f"open flash log file {PATH} failed\n"
DAEMON = 1  # user id


def file_of(olt):
    return Path(f"/proc/{olt.pid}/root{PATH}")


def saved(olt):
    return file_of(olt).read_text("latin-1")


def save(olt):
    text, rc = olt.run("save alarm-log flash")
    assert rc == 0
    return text


@pytest.fixture
def line(catalogue):  # noqa: F811
    """The line of a record in the file."""

    def line_of(record):
        year, month, day, hour, minute, second = record.time
        entry = catalogue[record.alarm_id]
        return (f"[{year:4d}/{month:02d}/{day:02d} {hour:02d}:{minute:02d}:{second:02d}] [{LEVELS[record.level]}]"
                f" [{entry['name']}] [{entry['description']}] : {record.message}\n")

    return line_of


@pytest.fixture(autouse=True)
def level_major(olt):
    """Level major, no fault, a file from before, and nothing left held."""
    olt.faults()
    assert olt.run("alarm-log flash level major") == ("", 0)
    olt.exec("sh", "-c", f"echo before > {PATH}; chmod 777 {PATH}", check=True)
    descriptors = olt.settled_fds()
    yield
    olt.faults()
    olt.wait_free("alarm")
    assert olt.root_threads() == []
    olt.wait_no_more_fds(descriptors)


@pytest.fixture
def no_level(olt):
    """A database that has no flash level."""
    edit_database(olt, '<alarm-log xmlns="urn:norvale:yang:olt-alarm-log"><flash>'
                       '<level xmlns:nc="urn:ietf:params:xml:ns:netconf:base:1.0" nc:operation="remove"/>'
                       "</flash></alarm-log>")
    wait_until(lambda: olt.run("show alarm-log flash level") == ("", 0), "no level is shown")


# --- the level

@pytest.mark.parametrize("words", ["alarm-log flash level", "syslog flash level"])
@pytest.mark.parametrize("level", LEVELS)
def test_a_level_is_stored_as_text_at_once(olt, words, level):
    text, rc, calls = calls_of(olt, f"{words} {level}", "db_.*set.*|db_apply_.*")
    assert (text, rc) == ("", 0)
    assert [(call.op, call.values) for call in calls] == [(SET, {"val": level, "width": "16", "apply": "1"})]


def test_an_abbreviated_level_is_stored_whole(olt):
    olt.run("alarm-log flash level crit")
    assert "is critical." in olt.run("show alarm-log flash level")[0]


@pytest.mark.parametrize("words", ["alarm-log flash level all", "alarm-log flash level 4", "alarm-log flash level", "syslog flash level none"])
def test_other_levels_are_refused(olt, words):
    _, rc, calls = calls_of(olt, words, "db_.*set.*")
    assert rc != 0 and calls == []


@pytest.mark.parametrize("level", LEVELS)
def test_the_level_is_shown_in_three_lines(olt, level):
    olt.run(f"alarm-log flash level {level}")
    assert olt.run("show alarm-log flash level") == (
        f"alarm log flash level is {level}.\n"
        "log level priority: 0-debug 1-info 2-notice 3-warning 4-major 5-critical 6-alert 7-emerg\n"
        "logs higher than or equal to this level will be written into Flash.\n", 0)


def test_a_level_that_was_never_set_shows_nothing(olt, no_level):
    assert olt.run("show alarm-log flash level") == ("", 0)


def test_a_level_that_is_refused_is_said(olt):
    olt.faults(f"{SET} nth=1 ret=-4")
    assert olt.run("syslog flash level info") == ("set alarm log flash level failed : Database not reachable\n", 0)
    assert "is major." in olt.run("show alarm-log flash level")[0]


def test_a_level_that_cannot_be_read_is_said(olt):
    olt.faults(f"{GET} nth=1 ret=-4")
    assert olt.run("show alarm-log flash level") == ("get alarm log flash level failed : Database not reachable\n", 0)


# --- what is saved

def test_records_of_the_level_and_above_are_saved_in_the_order_of_the_chain(olt, store, line):
    records = [Record(f"level {n}", level=n, alarm_id=n, time=(2026, 1, 2, 3, 4, n)) for n in (3, 4, 7, 0, 5)]
    store.chain(records, slots=[9, 3, 4095, 0, 1])
    assert save(olt) == ""
    assert saved(olt) == "".join(line(records[n]) for n in (1, 2, 4))


def test_a_line_holds_time_level_name_description_and_message(olt, store, catalogue):
    store.chain([Record("supply lost", level=6, alarm_id=77, time=(2026, 11, 2, 3, 4, 5))])
    save(olt)
    assert saved(olt) == "[2026/11/02 03:04:05] [alert] [power1-updown] [Power supply 1 up or down] : supply lost\n"


@pytest.mark.parametrize("number, level", list(enumerate(LEVELS)))
def test_every_level_is_a_threshold(olt, store, line, number, level):
    records = [Record(name, level=n) for n, name in enumerate(LEVELS)]
    store.chain(records)
    olt.run(f"alarm-log flash level {level}")
    save(olt)
    assert saved(olt) == "".join(map(line, records[number:]))


def test_saving_twice_writes_the_file_anew(olt, store, line):
    store.chain([Record("first"), Record("second")])
    save(olt)
    store.chain([Record("third")])
    save(olt)
    assert saved(olt) == line(Record("third"))


def test_slots_without_a_record_are_not_saved(olt, store, line):
    store.chain([Record("a"), Record("hole", valid=False), Record("b")])
    save(olt)
    assert saved(olt) == line(Record("a")) + line(Record("b"))


@pytest.mark.parametrize("header", [(NONE, 0, 1), (0, NONE, 1), (0, 0, 0)])
def test_an_empty_store_gives_an_empty_file(olt, store, header):
    store.chain([Record("a")])
    store.header = header
    assert save(olt) == ""
    assert saved(olt) == ""


def test_a_full_store_is_saved_whole(olt, store, line):
    records = [Record(f"record {n} " + "x" * 100) for n in range(4096)]
    store.chain(records)
    assert save(olt) == ""
    assert saved(olt) == "".join(map(line, records))


def test_a_message_that_fills_its_field_ends_there(olt, store, line):
    store.chain([Record("m" * 128)])
    save(olt)
    assert saved(olt) == line(Record("m" * 128))


def test_percent_signs_in_a_message_are_text(olt, store, line):
    store.chain([Record("%s%n%d 100%")])
    save(olt)
    assert saved(olt) == line(Record("%s%n%d 100%"))


def test_unknown_ids_and_levels_have_empty_names(olt, store):
    store.chain([Record("odd", level=200, alarm_id=65535), Record("next", level=8, alarm_id=ALARM_COUNT)])
    assert save(olt) == ""
    assert saved(olt) == "[2026/03/02 09:41:17] [] [] [] : odd\n[2026/03/02 09:41:17] [] [] [] : next\n"


def test_a_chain_that_leads_in_a_circle_ends(olt, store):
    store.chain([Record("a"), Record("b")])
    store.set_link(1, next_=0)
    assert save(olt) == ""
    assert len(saved(olt).splitlines()) <= 4096


def test_the_file_is_everybodys(olt, store):
    olt.exec("rm", PATH, check=True)
    save(olt)
    status = os.stat(file_of(olt))
    assert stat.S_IMODE(status.st_mode) == 0o777 and status.st_uid == 0


@pytest.mark.parametrize("user", ["daemon", "root"])
def test_a_saved_file_survives_the_daemons_own_clear(olt, store, user):
    store.chain([Record("a")])
    olt.exec("chown", user, PATH, check=True)
    save(olt)
    assert olt.run("clear alarm-log flash") == ("", 0)
    assert saved(olt) == ""


# --- order and locking

def test_saving_goes_its_steps_in_order(olt, store):
    store.chain([Record("a")])
    mark = len(olt.trace())
    save(olt)
    calls = [call for call in olt.trace()[mark:] if call.thread == "main"]
    steps = in_order(
        calls, "geteuid .*", "seteuid user=0 .*", "semaphore_p id=alarm .*", f'fopen path="{PATH}" mode="w[+]" .*',
        "get_flash_level_from_database .*", "fflush .*", "fchmod mode=0x0*1ff .*", "fsync .*", "fclose .*",
        f"seteuid user={DAEMON} .*", "semaphore_v id=alarm .*")
    assert steps[0].result == str(DAEMON)
    assert len(of(calls, "semaphore_[pv]")) == 2 and len(of(calls, "seteuid")) == 2


def test_the_store_is_held_and_the_process_is_root_until_the_flash_has_everything(olt, store):
    store.chain([Record("a")])
    olt.faults("fsync nth=1 delay_ms=700")
    saving = threading.Thread(target=save, args=(olt,))
    saving.start()
    try:
        wait_until(lambda: saved(olt) not in ("", "before\n"), "the record is written")
        assert (olt.sem_value("alarm"), olt.root_threads()) == (0, olt.threads())
    finally:
        saving.join()


# --- what fails

def test_without_a_level_the_file_is_emptied_and_that_is_said(olt, store, no_level):
    store.chain([Record("a", level=7)])
    assert save(olt) == "get flash level failed\n"
    assert saved(olt) == ""


@pytest.mark.parametrize("code", [-1, 8])
def test_a_level_that_is_none_empties_the_file(olt, store, code):
    store.chain([Record("a", level=7)])
    olt.faults(f"get_flash_level_from_database nth=1 ret={code}")
    assert save(olt) == "get flash level failed\n"
    assert saved(olt) == ""


def test_a_missing_folder_is_said(olt, store):
    store.chain([Record("a")])
    olt.exec("mv", "/media/config/var", "/media/config/away", check=True)
    try:
        mark = len(olt.trace())
        assert save(olt) == CANNOT_OPEN
        assert of(olt.trace()[mark:], "fclose|fsync|get_flash_level_from_database") == []
        assert olt.run("clear alarm-log flash") == (CANNOT_OPEN, 0)
    finally:
        olt.exec("mv", "/media/config/away", "/media/config/var", check=True)


def test_a_folder_in_the_files_place_is_said(olt, store):
    olt.exec("sh", "-c", f"rm {PATH} && mkdir {PATH}", check=True)
    try:
        assert save(olt) == CANNOT_OPEN
        assert olt.run("clear alarm-log flash") == (CANNOT_OPEN, 0)
    finally:
        olt.exec("rmdir", PATH, check=True)


@pytest.mark.parametrize("error, reason", [(5, "Input/output error"), (28, "No space left on device")])
def test_a_sync_that_fails_is_said_once(olt, store, line, error, reason):
    store.chain([Record("a")])
    olt.faults(f"fsync nth=1 ret=-1 errno={error}")
    mark = len(olt.trace())
    assert save(olt) == f"flash log file sync failed : {reason}\n"
    assert len(of(olt.trace()[mark:], "fclose")) == 1
    assert saved(olt) == line(Record("a"))


def test_a_store_that_cannot_be_attached_is_said_and_the_file_is_emptied(cold_olt):
    cold_olt.faults("tq_alarm_log_get_shm_pointer count=0 nth=1 errno=13 ret=0")
    cold_olt.start(trace=True)
    cold_olt.exec("sh", "-c", f"echo before > {PATH}", check=True)
    assert save(cold_olt) == "get share memory failed : Permission denied\n"
    assert saved(cold_olt) == ""
    cold_olt.wait_free("alarm")
    assert cold_olt.root_threads() == []
    cold_olt.faults()
    cold_olt.run("alarm-log flash level debug")
    assert save(cold_olt) == ""


@pytest.fixture
def small_flash(olt):
    """A flash of its own for the test; a function that gives it a size and makes it writable or not."""

    def mount(options):
        olt.exec("mount", "-o", f"remount,{options}", "/media", check=True)

    olt.exec("mount", "-t", "tmpfs", "-o", "size=1m", "tmpfs", "/media", check=True)
    olt.exec("mkdir", "-p", os.path.dirname(PATH), check=True)
    yield mount
    olt.exec("umount", "/media", check=True)


@pytest.mark.parametrize("pages", [1, 2, 5])
@pytest.mark.parametrize("length", [1, 60, 127])
def test_a_full_flash_keeps_whole_lines_and_is_said(olt, store, line, small_flash, pages, length):
    records = [Record(str(n % 10) * length) for n in range(1000)]
    store.chain(records)
    small_flash(f"size={4096 * pages}")
    assert save(olt) == "flash log file sync failed : No space left on device\n"
    kept = saved(olt)
    lines = [line(record) for record in records]
    count = kept.count("\n")
    assert kept == "".join(lines[:count])
    assert len(kept) > 4096 * pages - len(lines[count]), "as many as fit"


def test_after_a_full_flash_saving_works_again(olt, store, line, small_flash):
    records = [Record(f"record {n}") for n in range(200)]
    store.chain(records)
    small_flash("size=4096")
    assert save(olt) != ""
    small_flash("size=1m")
    assert save(olt) == ""
    assert saved(olt) == "".join(map(line, records))


def test_a_read_only_flash_is_said_and_keeps_the_old_file(olt, store, small_flash):
    store.chain([Record("a")])
    save(olt)
    before = saved(olt)
    store.chain([Record("b")])
    small_flash("ro")
    assert save(olt) == CANNOT_OPEN
    assert olt.run("clear alarm-log flash") == (CANNOT_OPEN, 0)
    assert saved(olt) == before
    small_flash("rw")
    assert save(olt) == ""


# --- clearing

def test_clearing_empties_the_file_and_syncs_without_the_stores_semaphore(olt, store):
    store.chain([Record("a")])
    save(olt)
    mark = len(olt.trace())
    assert olt.run("clear alarm-log flash") == ("", 0)
    assert saved(olt) == ""
    calls = [call for call in olt.trace()[mark:] if call.thread == "main"]
    in_order(calls, f'fopen path="{PATH}" mode="w" .*', "fclose .*", "sync .*")
    assert of(calls, "semaphore_[pv]|seteuid") == []


def test_clearing_the_flash_leaves_the_store(olt, store):
    store.chain([Record("a")])
    olt.run("clear alarm-log flash")
    assert store.messages() == ["a"]
