# SPDX-License-Identifier: GPL-2.0-or-later
"""The configuration database going away and coming back under the running daemon."""

import pytest
from alarm_fixtures import edit_database
from calls import of
from olt import wait_until
from stopwatch import Stopwatch

REPOSITORY = "/var/lib/olt/sysrepo"
GONE = "Database not reachable"
LONGEST_ANSWER_S = 5  # 2.5 s of the database, and the work


@pytest.fixture
def olt(cold_olt):
    cold_olt.faults()
    olt = cold_olt.start(trace=True)
    for command in ("alarm-log alarm fan level info", "alarm-log flash level info",
                    "alarm-log remote server ipv4 10.0.0.1 port 514", "alarm-log alarm temp-high enable print"):
        assert olt.run(command) == ("", 0), command
    pid = olt.daemon_pid()
    yield olt
    assert olt.daemon.poll() is None and olt.daemon_pid() == pid, "the daemon has ended"


def in_box(olt, script):
    done = olt.exec("sh", "-c", script)
    assert done.returncode == 0, done.stdout + done.stderr


def run_in_time(olt, command):
    watch = Stopwatch()
    result = olt.run(command)
    assert watch.spent_s() < LONGEST_ANSWER_S, command
    return result


def shown(olt):
    return [olt.run(command) for command in
            ("show alarm-log all configuration", "show alarm-log flash level", "show alarm-log remote server")]


def flash_level(olt):
    return olt.run("show alarm-log flash level")[0].splitlines()[0]


def passes(olt):
    return len(of(olt.trace(), "db_olt_alarm_log_show_xml_threshold"))


def let_the_monitor_pass(olt):
    before = passes(olt)
    wait_until(lambda: passes(olt) >= before + 2, "two passes of the threshold monitor")


def expect_settings_work(olt):
    wait_until(lambda: run_in_time(olt, "alarm-log flash level major") == ("", 0), "settings work again")
    assert run_in_time(olt, "alarm-log alarm fan enable all") == ("", 0)
    assert flash_level(olt) == "alarm log flash level is major."
    edit_database(olt, '<alarm-log xmlns="urn:norvale:yang:olt-alarm-log"><flash><level>alert</level></flash></alarm-log>')
    wait_until(lambda: flash_level(olt) == "alarm log flash level is alert.",
               "changes by other programs are heard")


def test_a_repository_that_is_moved_away_refuses_settings_until_it_is_back(olt):
    before = shown(olt)
    in_box(olt, f"mkdir {REPOSITORY}/gone; mv {REPOSITORY}/data {REPOSITORY}/yang {REPOSITORY}/gone")
    assert run_in_time(olt, "alarm-log flash level debug") == (f"set alarm log flash level failed : {GONE}\n", 0)
    text, rc = run_in_time(olt, "alarm-log alarm fan level major")
    assert rc == 0 and text.startswith(f"set alarm log level failed : {GONE}\n")
    assert run_in_time(olt, "alarm-log remote server ipv4 10.0.0.2 port 1") == (
        f"set alarm log remote server ipv4 failed : {GONE}\nset alarm log remote server port failed : {GONE}\n", 0)
    let_the_monitor_pass(olt)
    assert shown(olt) == before
    in_box(olt, f"mv {REPOSITORY}/gone/* {REPOSITORY}; rmdir {REPOSITORY}/gone")
    assert shown(olt) == before
    expect_settings_work(olt)


def test_shared_memory_that_is_removed_is_made_anew_with_the_values_it_had(olt):
    before = shown(olt)
    for _ in range(3):
        in_box(olt, "rm -f /dev/shm/sr_* /dev/shm/srsub_*")
        let_the_monitor_pass(olt)
        assert shown(olt) == before
    in_box(olt, "rm -f /dev/shm/sr_* /dev/shm/srsub_*")
    expect_settings_work(olt)


def test_files_and_descriptors_do_not_grow_with_every_time_it_was_away(olt):
    def away_and_back(level):
        in_box(olt, "rm -f /dev/shm/sr_*")
        wait_until(lambda: olt.run(f"alarm-log flash level {level}") == ("", 0), "settings work again")

    away_and_back("notice")
    before = olt.settled_fds()
    for level in ("debug", "info", "notice", "warning"):
        away_and_back(level)
    olt.wait_no_more_fds(before)


def test_shared_memory_that_is_cut_to_nothing_does_not_end_the_daemon(olt):
    before = shown(olt)
    in_box(olt, "truncate -s 0 /dev/shm/sr_main")
    let_the_monitor_pass(olt)
    assert shown(olt) == before
    expect_settings_work(olt)


def test_another_repository_in_its_place_is_taken(olt):
    before = shown(olt)
    in_box(olt, f"cd {REPOSITORY}; for f in data yang; do cp -a $f $f.new; mv $f $f.old; mv $f.new $f; done")
    let_the_monitor_pass(olt)
    assert shown(olt) == before
    expect_settings_work(olt)


def test_sessions_that_opened_meanwhile_work_and_close_when_it_is_back(olt):
    in_box(olt, f"mv {REPOSITORY}/data {REPOSITORY}/gone")
    with olt.vty() as session:
        assert session.run("alarm-log flash level debug")[0] == f"set alarm log flash level failed : {GONE}\n"
        in_box(olt, f"mv {REPOSITORY}/gone {REPOSITORY}/data")
        assert session.run("alarm-log flash level debug") == ("", 0)
    expect_settings_work(olt)
    assert "DIAG Msg: vty connect to database failed!" in olt.stdout()
