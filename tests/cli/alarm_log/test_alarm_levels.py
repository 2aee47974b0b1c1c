# SPDX-License-Identifier: GPL-2.0-or-later
"""Commands that set the level of an alarm."""
import pytest
from alarm_fixtures import calls_of, catalogue, id_of, olt, store  # noqa: F401
from alarm_words import ALARM_COUNT, LEVELLED, LEVELS, THRESHOLD_ALARMS
from calls import of
from traced_fixtures import no_faults  # noqa: F401

SET = "db_olt_alarm_log_set_alarm_level"
CONFIGURATION = "set alarm log configuration failed : {}\n"


def stored(olt, command):
    """What the command prints, and its setter calls: id, level, size, apply."""
    text, rc, calls = calls_of(olt, command, SET)
    assert rc == 0
    return text, [tuple(call.values.values()) for call in calls]


def shown_level(olt, alarm_id):
    header, *rows = olt.run(f"show alarm-log configuration id {alarm_id}")[0].splitlines()
    return rows[0][62:73].strip()


@pytest.mark.parametrize("level", LEVELS)
def test_every_alarm_takes_every_level_at_once(olt, id_of, level):
    mark = len(olt.trace())
    with olt.vty() as session:
        for klass, name in LEVELLED:
            assert session.run(f"alarm-log {klass} {name} level {level}") == ("", 0), name
    calls = olt.trace()[mark:]
    assert [tuple(call.values.values()) for call in of(calls, SET)] == [
        (str(id_of(name)), level, "8", "1") for _, name in LEVELLED]
    assert of(calls, "db_apply_.*") == []
    shown = {int(row.split()[0]): row[62:73].strip()
             for row in olt.run("show alarm-log all configuration")[0].splitlines()[1:]}
    assert {shown[id_of(name)] for _, name in LEVELLED} == {level}


def test_the_longest_level_fills_its_eight_bytes(olt):
    olt.run("alarm-log alarm fan level critical")
    assert shown_level(olt, 0) == "critical"


def test_a_level_changes_its_own_alarm_alone(olt):
    olt.run("alarm-log event reset level debug")
    before = olt.run("show alarm-log all configuration")[0]
    olt.run("alarm-log event reset level emerg")
    after = olt.run("show alarm-log all configuration")[0]
    changed = [line for line, old in zip(after.splitlines(), before.splitlines()) if line != old]
    assert [line.split()[0] for line in changed] == ["29"]


def test_abbreviations_mean_the_whole_words(olt):
    assert stored(olt, "alarm-log alarm dhcp-sn-o lev crit") == ("", [("88", "critical", "8", "1")])


def test_the_level_is_that_of_the_next_record(olt, store):
    olt.run("alarm-log alarm power1-updown enable record")
    for level in ("alert", "debug"):
        olt.run(f"alarm-log alarm power1-updown level {level}")
        olt.run("alarm-log debug send id 77 message now")
        assert store.records()[-1].level == LEVELS.index(level)


@pytest.mark.parametrize("words", [
    *(f"alarm-log alarm {name} level major" for name in THRESHOLD_ALARMS),
    "alarm fan level major", "event reset level major", "alarm-log alarm fan level", "alarm-log alarm fan level all",
    "alarm-log alarm fan level 4", "alarm-log event fan level major", "alarm-log alarm nosuch level major",
    "alarm-log alarm all level major",
])
def test_what_no_form_allows_changes_nothing(olt, words):
    _, rc, calls = calls_of(olt, words, SET)
    assert rc != 0 and calls == []


@pytest.mark.parametrize("code, reason", [(-5, "Database locked by another user"), (-3, "Invalid argument or value"),
                                          (28, "No space left on device")])
def test_a_level_that_is_refused_is_said_twice_with_one_reason(olt, code, reason):
    olt.run("alarm-log alarm fan level info")
    olt.faults(f"{SET} nth=1 ret={code}")
    text, calls = stored(olt, "alarm-log alarm fan level major")
    assert text == f"set alarm log level failed : {reason}\n" + CONFIGURATION.format(reason)
    assert len(calls) == 1
    assert shown_level(olt, 0) == "info"


@pytest.mark.parametrize("result", [-1, ALARM_COUNT, 0x10000 + ALARM_COUNT])
def test_a_name_without_an_id_is_said_on_both_sides(olt, result):
    mark = len(olt.stderr())
    olt.faults(f"get_alarm_id_by_name nth=1 ret={result}")
    assert stored(olt, "alarm-log alarm fan level major") == (CONFIGURATION.format("No such object"), [])
    assert olt.stderr()[mark:] == "wrong alarm id form fan\n"


def test_the_id_is_taken_in_16_bits(olt):
    olt.faults(f"get_alarm_id_by_name nth=1 ret={0x10005}")
    assert stored(olt, "alarm-log alarm fan level major") == ("", [("5", "major", "8", "1")])
