# SPDX-License-Identifier: GPL-2.0-or-later
"""Commands that switch the actions of alarms: one alarm in every form, and many at once."""
import pytest
from alarm_fixtures import calls_of, catalogue, id_of, olt  # noqa: F401
from alarm_words import ACTIONS, ALARM_COUNT, LEVELLED, NAMED, THRESHOLD_ALARMS
from calls import of
from traced_fixtures import no_faults  # noqa: F401

SET = "db_olt_alarm_log_set_action_"
CONFIGURATION = "set alarm log configuration failed : {}\n"
NOT_FOUND = "No such object"
LOCKED = "Database locked by another user"
BULK_IDS = [number for number in range(ALARM_COUNT) if number not in range(102, 106)]
BITS = {"print": 1, "record": 2, "trap": 4, "remote": 8}


def setters(calls):
    """(action, id, value, size, apply) of each setter call."""
    return [(call.op.removeprefix(SET), *(int(call.values[name]) for name in ("id", "val", "size", "apply")))
            for call in calls if call.op.startswith(SET)]


def switched(olt, command):
    """What the command prints, and its setter calls."""
    text, rc, calls = calls_of(olt, command, SET + ".*")
    assert rc == 0
    return text, setters(calls)


def configuration(olt):
    """The four switches of every alarm, by id, as they are shown."""
    text, rc = olt.run("show alarm-log all configuration")
    assert rc == 0
    rows = [row.split() for row in text.splitlines()[1:]]
    return {int(row[0]): dict(zip(ACTIONS, row[-4:])) for row in rows}


def meant(action):
    return ACTIONS if action == "all" else [action]


# --- one alarm

def visible_form(klass, name, switch, action):
    return f"alarm-log {klass} {name} {switch} {action}"


def older_form(klass, name, switch, action):
    return f"{klass} {name} {action} {switch}"


FORMS = [(visible_form, NAMED), (older_form, LEVELLED)]


@pytest.mark.parametrize("form, named", FORMS, ids=["visible", "older"])
@pytest.mark.parametrize("action", [*ACTIONS, "all"])
@pytest.mark.parametrize("switch, value", [("enable", 1), ("disable", 0)])
def test_every_form_switches_every_alarm_at_once_in_order(olt, id_of, form, named, action, switch, value):
    expected = [(one, id_of(name), value, 1, 1) for _, name in named for one in meant(action)]
    mark = len(olt.trace())
    with olt.vty() as session:
        for klass, name in named:
            assert session.run(form(klass, name, switch, action)) == ("", 0), name
    calls = olt.trace()[mark:]
    assert setters(calls) == expected
    assert [call.values["name"] for call in of(calls, "get_alarm_id_by_name")] == [name for _, name in named]
    assert of(calls, "db_apply_.*") == []


def test_the_commands_name_every_alarm_of_the_catalogue(catalogue):
    assert sorted((entry["class"], entry["name"]) for entry in catalogue) == sorted(NAMED)
    assert len({name for _, name in NAMED}) == ALARM_COUNT - 1  # onu-offline-timeout is both


def test_enabling_all_shows_four_times_enable(olt):
    olt.run("alarm-log alarm fan disable all")
    olt.run("alarm-log alarm fan enable all")
    row = olt.run("show alarm-log configuration name fan")[0].splitlines()[1]
    assert row.split()[-4:] == ["enable"] * 4


def test_a_switch_changes_itself_alone(olt):
    olt.run("alarm-log alarm fan disable all")
    for action in ACTIONS:
        before = configuration(olt)
        olt.run(f"alarm-log alarm fan enable {action}")
        before[0][action] = "enable"
        assert configuration(olt) == before


@pytest.mark.parametrize("typed, call", [
    ("alarm-log alarm fan dis tr", ("trap", 0, 0, 1, 1)),
    ("alarm-l al power1 en rem", ("remote", 77, 1, 1, 1)),
    ("alarm-log event rip- en pr", ("print", 70, 1, 1, 1)),
    ("event ripng rec dis", ("record", 72, 0, 1, 1)),
])
def test_abbreviations_mean_the_whole_words(olt, typed, call):
    assert switched(olt, typed) == ("", [call])


def test_the_timeout_of_an_onu_is_the_alarm_as_alarm_and_as_event(olt):
    for klass in ("alarm", "event"):
        assert switched(olt, f"alarm-log {klass} onu-offline-timeout enable print") == ("", [("print", 79, 1, 1, 1)])


@pytest.mark.parametrize("words", [
    *(f"alarm {name} print enable" for name in THRESHOLD_ALARMS),
    "alarm fan enable print", "event reset enable print", "alarm-log alarm fan print enable",
    "alarm-log event fan enable print", "alarm-log alarm reset enable print", "alarm-log alarm nosuch enable print",
    "alarm-log alarm fan enable", "alarm-log alarm fan enable mail", "alarm-log alarm onu enable all",
    "alarm-log alarm FAN enable all", "event fan print enable",
])
def test_what_no_form_allows_changes_nothing(olt, words):
    _, rc, calls = calls_of(olt, words, SET + ".*")
    assert rc != 0 and calls == []


SINGLE_FORMS = ["alarm-log alarm fan enable {}", "alarm fan {} enable", "alarm name fan {} enable"]


@pytest.mark.parametrize("command", SINGLE_FORMS)
@pytest.mark.parametrize("number, action", list(enumerate(ACTIONS)))
def test_a_switch_that_fails_is_said_twice_and_ends_the_command(olt, command, number, action):
    olt.run("alarm-log alarm fan disable all")
    olt.faults(f"{SET}{action} nth=1 ret=-5")
    text, calls = switched(olt, command.format("all"))
    assert text == f"set alarm log {action} failed : {LOCKED}\n" + CONFIGURATION.format(LOCKED)
    assert [call[0] for call in calls] == ACTIONS[: number + 1]
    # What was set before the failure stays.
    assert list(configuration(olt)[0].values()) == ["enable"] * number + ["disable"] * (4 - number)


@pytest.mark.parametrize("command", SINGLE_FORMS)
@pytest.mark.parametrize("action", ACTIONS)
def test_a_single_action_that_fails_is_said_twice(olt, command, action):
    olt.faults(f"{SET}{action} nth=1 ret=28")
    reason = "No space left on device"
    assert switched(olt, command.format(action))[0] == (
        f"set alarm log {action} failed : {reason}\n" + CONFIGURATION.format(reason))


@pytest.mark.parametrize("command", SINGLE_FORMS[:2])
@pytest.mark.parametrize("result", [-1, ALARM_COUNT, 255, 0xFFFF, 0x10000 + ALARM_COUNT])
def test_a_name_without_an_id_is_said_on_both_sides(olt, command, result):
    mark = len(olt.stderr())
    olt.faults(f"get_alarm_id_by_name nth=1 ret={result}")
    assert switched(olt, command.format("all")) == (CONFIGURATION.format(NOT_FOUND), [])
    assert olt.stderr()[mark:] == "wrong alarm id form fan\n"


@pytest.mark.parametrize("command", SINGLE_FORMS[:2])
def test_the_id_is_taken_in_16_bits(olt, command):
    olt.faults(f"get_alarm_id_by_name nth=1 ret={0x10005}")
    assert switched(olt, command.format("trap")) == ("", [("trap", 5, 1, 1, 1)])


# --- by free name

def test_the_name_form_takes_any_name_of_its_class(olt, catalogue, id_of):
    mark = len(olt.trace())
    expected = []
    with olt.vty() as session:
        for entry in catalogue:
            alarm_id = id_of(entry["name"])
            is_first = alarm_id == entry["id"]
            answer = session.run(f"{entry['class']} name {entry['name']} print enable")
            assert answer == ("" if is_first else "wrong alarm id.\r\n", 0), entry
            expected += [("print", alarm_id, 1, 1, 1)] if is_first else []
    assert setters(olt.trace()[mark:]) == expected


@pytest.mark.parametrize("action", [*ACTIONS, "all"])
@pytest.mark.parametrize("switch, value", [("enable", 1), ("disable", 0)])
def test_the_name_form_switches_every_action(olt, action, switch, value):
    expected = [(one, 29, value, 1, 1) for one in meant(action)]
    assert switched(olt, f"event name reset {action} {switch}") == ("", expected)


@pytest.mark.parametrize("words", ["event name fan", "alarm name reset", "alarm name nosuch", "alarm name fa",
                                   "alarm name " + "x" * 31, "alarm name " + "x" * 400, "alarm name fan%s%n"])
def test_the_name_form_refuses_other_names_in_one_line(olt, words):
    mark = len(olt.stderr())
    assert switched(olt, f"{words} print enable") == ("wrong alarm id.\r\n", [])
    assert olt.stderr()[mark:] == ""


def test_the_name_is_cut_to_31_characters(olt):
    _, _, calls = calls_of(olt, f"alarm name {'abcd' * 10} print enable", "get_alarm_id_by_name")
    assert [call.values["name"] for call in calls] == [("abcd" * 10)[:31]]


@pytest.mark.parametrize("result, entry", [(261, 5), (256, 0), (0x10005, 5)])
def test_the_name_form_takes_the_id_in_8_bits(olt, result, entry):
    olt.faults(f"get_alarm_id_by_name nth=1 ret={result}")
    assert switched(olt, "alarm name fan remote enable") == ("", [("remote", entry, 1, 1, 1)])
    olt.faults(f"get_alarm_id_by_name nth=1 ret={result}")
    assert switched(olt, "event name fan remote enable") == ("wrong alarm id.\r\n", [])


# --- many at once

BULK = {
    "alarm_log_all_action": ["alarm-log {klass} all {switch} {action}", ("alarm", "event")],
    "alarm_all_action": ["{klass} all {action} {switch}", ("alarm", "event")],
    "alarm_event_all_action": ["alarm-event config_all {action} {switch}", (None,)],
    "alarm_event_default_action": ["alarm-event default {action}", (None,)],
}
BULK_CASES = [(function, template, klass) for function, (template, classes) in BULK.items() for klass in classes]


def bulk_setters(catalogue, id_of, function, klass, action, value):
    """The setter calls of a bulk command: entries 0 to 101 of the class, each by its name."""
    calls = []
    for entry in catalogue[:102]:
        if klass in (None, entry["class"]):
            bit = BITS["print" if action == "all" else action]
            on = value if function != "alarm_event_default_action" else int(entry["actions"] & bit != 0)
            calls += [(one, id_of(entry["name"]), on, 1, 0) for one in meant(action)]
    return calls


@pytest.mark.parametrize("function, template, klass", BULK_CASES)
@pytest.mark.parametrize("action", [*ACTIONS, "all"])
@pytest.mark.parametrize("switch, value", [("enable", 1), ("disable", 0)])
def test_a_bulk_command_switches_its_entries_in_one_change(
        olt, catalogue, id_of, function, template, klass, action, switch, value):
    before = configuration(olt)
    text, rc, calls = calls_of(olt, template.format(klass=klass, action=action, switch=switch),
                               "db_apply_.*|db_discard_.*|db_.*_(set|del)_.*")
    assert (text, rc) == ("", 0)
    expected = bulk_setters(catalogue, id_of, function, klass, action, value)
    lock, *between, apply, unlock = calls
    assert [lock.op, apply.op, unlock.op] == ["db_apply_lock", "db_apply_changes", "db_apply_unlock"]
    assert setters(between) == expected and len(between) == len(expected)
    for one, alarm_id, on, _, _ in expected:
        before[alarm_id][one] = "enable" if on else "disable"
    assert configuration(olt) == before


@pytest.mark.parametrize("function, template, klass", BULK_CASES)
def test_a_bulk_command_never_touches_the_board_alarms_with_thresholds(olt, function, template, klass):
    _, calls = switched(olt, template.format(klass=klass, action="all", switch="enable"))
    assert calls and all(call[1] in BULK_IDS for call in calls)


def test_disabling_an_action_of_events_leaves_alarms(olt, catalogue, id_of):
    olt.run("alarm-event config_all trap enable")
    olt.run("alarm-log event all disable trap")
    shown = configuration(olt)
    off = {id_of(entry["name"]) for entry in catalogue[:102] if entry["class"] == "event"}
    for entry in catalogue[:101]:
        assert shown[entry["id"]]["trap"] == ("disable" if entry["id"] in off else "enable"), entry


def test_the_defaults_of_an_action_are_the_bits_of_the_catalogue(olt, catalogue):
    for action in ACTIONS:
        olt.run(f"alarm-event default {action}")
    shown = configuration(olt)
    for entry in catalogue[:101]:
        for action in ACTIONS:
            expected = "enable" if entry["actions"] & BITS[action] else "disable"
            assert shown[entry["id"]][action] == expected, entry


def test_the_default_of_all_actions_is_that_of_print(olt, catalogue):
    for switch in ("enable", "disable"):
        olt.run(f"alarm-event config_all all {switch}")
        olt.run("alarm-event default all")
        shown = configuration(olt)
        for entry in catalogue[:101]:
            expected = "enable" if entry["actions"] & BITS["print"] else "disable"
            assert set(shown[entry["id"]].values()) == {expected}, entry


def bulk_line(function, template, klass, action="trap"):
    return template.format(klass=klass, action=action, switch="enable")


@pytest.mark.parametrize("function, template, klass", BULK_CASES)
def test_an_entry_that_fails_is_one_line_and_the_rest_is_applied(olt, catalogue, id_of, function, template, klass):
    olt.run("alarm-event config_all trap disable")
    expected = bulk_setters(catalogue, id_of, function, klass, "trap", 1)
    olt.faults(f"{SET}trap nth=3 ret=-5")
    text, calls = switched(olt, bulk_line(function, template, klass))
    assert text == CONFIGURATION.format(LOCKED)
    assert calls == expected
    on = {alarm_id for n, (_, alarm_id, value, _, _) in enumerate(expected) if value and n != 2}
    shown = configuration(olt)
    assert {alarm_id for alarm_id in BULK_IDS if shown[alarm_id]["trap"] == "enable"} - {101} == on - {101}


@pytest.mark.parametrize("function, template, klass", BULK_CASES)
def test_every_entry_that_fails_has_its_line(olt, catalogue, id_of, function, template, klass):
    olt.faults(f"{SET}trap ret=-5")
    count = len(bulk_setters(catalogue, id_of, function, klass, "trap", 1))
    assert switched(olt, bulk_line(function, template, klass))[0] == CONFIGURATION.format(LOCKED) * count


@pytest.mark.parametrize("function, template, klass", BULK_CASES)
def test_of_all_four_actions_only_the_last_result_counts(olt, function, template, klass):
    olt.faults(*(f"{SET}{action} ret=-5" for action in ACTIONS[:3]))
    text, calls = switched(olt, bulk_line(function, template, klass, "all"))
    assert text == "" and {call[0] for call in calls} == set(ACTIONS)
    olt.faults(f"{SET}remote nth=2 ret=-7")
    text, calls = switched(olt, bulk_line(function, template, klass, "all"))
    assert text == CONFIGURATION.format("No space left in the storage")


@pytest.mark.parametrize("function, template, klass", BULK_CASES)
@pytest.mark.parametrize("result, alarm_id", [(-1, None), (ALARM_COUNT, None), (0x10005, 5)])
def test_an_entry_whose_name_has_no_id_is_said_and_passed_over(olt, catalogue, id_of, function, template, klass, result, alarm_id):
    second = [entry for entry in catalogue if klass in (None, entry["class"])][1]
    expected = bulk_setters(catalogue, id_of, function, klass, "trap", 1)
    mark = len(olt.stderr())
    olt.faults(f"get_alarm_id_by_name nth=2 ret={result}")
    text, calls = switched(olt, bulk_line(function, template, klass))
    if alarm_id is None:
        assert text == CONFIGURATION.format(NOT_FOUND)
        assert olt.stderr()[mark:] == f"wrong alarm id form {second['name']}\n"
        assert calls == [expected[0], *expected[2:]]
    else:
        assert text == "" and olt.stderr()[mark:] == ""
        assert calls[1] == ("trap", alarm_id, *expected[1][2:])


# --- the lock around them

LOCK = "[DATABASE LOCK] !!!!!!!! {}: db apply lock!!!!!!!!!\n"
UNLOCK = "[DATABASE LOCK] !!!!!!!! {}: db apply unlock!!!!!!!!\n"


@pytest.mark.parametrize("function, template, klass", BULK_CASES)
@pytest.mark.parametrize("mask, is_told", [(8, True), (0xFF, True), (0xF7, False), (0, False)])
def test_the_lock_is_traced_on_standard_output_when_its_debug_bit_is_set(olt, function, template, klass, mask, is_told):
    olt.faults(f"db_debug_get ret={mask}")
    mark = len(olt.stdout())
    switched(olt, bulk_line(function, template, klass))
    assert olt.stdout()[mark:] == (LOCK.format(function) + UNLOCK.format(function) if is_told else "")


def test_a_lock_that_fails_is_not_told_and_keeps_nothing_back(olt):
    olt.run("alarm-log event all disable trap")
    olt.faults("db_apply_lock nth=1 ret=-1", "db_apply_unlock nth=1 ret=0", "db_debug_get ret=8")
    mark = len(olt.stdout())
    text, rc, calls = calls_of(olt, "alarm-log event all enable trap", "db_apply_.*")
    assert (text, rc) == ("", 0)
    assert [call.op for call in calls] == ["db_apply_lock", "db_apply_changes", "db_apply_unlock"]
    assert olt.stdout()[mark:] == UNLOCK.format("alarm_log_all_action")
    assert configuration(olt)[29]["trap"] == "enable"


def test_an_unlock_that_fails_is_not_told(olt):
    olt.faults("db_apply_unlock nth=1 ret=-1", "db_debug_get ret=8")
    mark = len(olt.stdout())
    assert olt.run("alarm-event config_all print enable") == ("", 0)
    assert olt.stdout()[mark:] == LOCK.format("alarm_event_all_action")
    olt.faults()
    assert olt.run("alarm-event config_all print enable") == ("", 0)


def test_changes_that_the_database_refuses_are_said_in_the_log(olt):
    olt.faults("db_apply_changes nth=1 ret=-5")
    assert olt.run("alarm all trap enable") == ("", 0)
    olt.wait_log(f"alarm_all_action: changes not applied: {LOCKED}")
    olt.faults()
    assert olt.run("alarm all trap enable") == ("", 0)
    assert configuration(olt)[0]["trap"] == "enable"


def test_what_is_switched_survives_the_next_command(olt):
    """Nothing stays pending behind a bulk command."""
    olt.run("alarm-event config_all all disable")
    olt.run("alarm-log alarm fan enable trap")
    shown = configuration(olt)
    assert [alarm_id for alarm_id in range(101) if "enable" in shown[alarm_id].values()] == [0]
    assert shown[0] == {"print": "disable", "record": "disable", "trap": "enable", "remote": "disable"}


@pytest.mark.parametrize("words", ["alarm-log global all enable print", "alarm-log alarm all print enable", "alarm all enable print",
                                   "alarm-event default", "alarm-event default mail", "alarm-event config_all enable print",
                                   "alarm-event all print enable"])
def test_other_bulk_words_are_refused(olt, words):
    _, rc, calls = calls_of(olt, words, SET + ".*|db_apply_.*")
    assert rc != 0 and calls == []


# --- the database away

@pytest.fixture
def without_database(olt):
    """A function that takes the database's files away and brings them back."""
    folder = "/var/lib/olt/sysrepo"
    away = False

    def move(is_away):
        nonlocal away
        source, target = ("data", "gone") if is_away else ("gone", "data")
        olt.exec("mv", f"{folder}/{source}", f"{folder}/{target}", check=True)
        away = is_away

    yield move
    if away:
        move(False)


def test_commands_say_that_the_database_is_away_and_work_when_it_is_back(olt, without_database):
    gone = "Database not reachable"
    olt.run("alarm-event config_all all disable")
    olt.run("alarm-log alarm fan level info")
    olt.run("alarm-log flash level info")
    before = configuration(olt)
    without_database(True)
    assert olt.run("alarm-log alarm fan enable all") == (
        f"set alarm log print failed : {gone}\n" + CONFIGURATION.format(gone), 0)
    assert olt.run("alarm name fan trap enable") == (
        f"set alarm log trap failed : {gone}\n" + CONFIGURATION.format(gone), 0)
    assert olt.run("alarm-log alarm fan level major") == (
        f"set alarm log level failed : {gone}\n" + CONFIGURATION.format(gone), 0)
    assert olt.run("alarm-log flash level major") == (f"set alarm log flash level failed : {gone}\n", 0)
    assert olt.run("alarm-log remote server ipv6 ::1 port 1") == (
        f"set alarm log remote server ipv6 failed : {gone}\nset alarm log remote server port failed : {gone}\n", 0)
    assert olt.run("alarm-log alarm all enable all") == ("", 0)
    olt.wait_log(f"alarm_log_all_action: changes not applied: {gone}")
    assert configuration(olt) == before, "what is shown is what was stored"
    without_database(False)
    assert olt.run("alarm-log event all enable trap") == ("", 0)
    shown = configuration(olt)
    assert shown[29]["trap"] == "enable" and shown[0] == before[0], "what failed before is not made up for"
