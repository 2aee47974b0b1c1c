# SPDX-License-Identifier: GPL-2.0-or-later
"""The configuration of alarms as it is shown: by name, by id, by group."""
import pytest
from alarm_fixtures import calls_of, catalogue, edit_database, olt  # noqa: F401
from alarm_words import ACTIONS, ALARM_COUNT, GROUPS, LEVELS
from olt import NO_QUARANTINE, wait_until
from traced_fixtures import no_faults  # noqa: F401

HEADER = ("id   name                      description                    level      type       class    print    record   "
          "trap     remote  \n")
GET = "db_olt_alarm_log_get_"
XML = "db_olt_alarm_log_show_xml_alarm_id"
GROUP_NUMBER = {"global": 0, "onu": 1, "pon": 2, "route": 3}
# Alarms that the threshold monitor reads, too, are of no use where reads are counted or fail.
QUIET_ID, QUIET_NAME = 29, "reset"


def row(entry, level, switches):
    return (f"{entry['id']:<4d} {entry['name']:<25s} {entry['description']:<30s} {level:<10s} {entry['type']:<10s} "
            f"{entry['class']:<8s} " + " ".join(f"{switch:<8s}" for switch in switches) + "\n")


def shown(olt, words):
    text, rc = olt.run(f"show alarm-log {words}")
    assert rc == 0
    return text


def pattern_of(alarm_id):
    """A level and switches that differ from those of the neighbours."""
    return LEVELS[alarm_id % 8], ["enable" if (alarm_id * 7 + 3) >> bit & 1 else "disable" for bit in range(4)]


@pytest.fixture(scope="module")
def configured(olt, catalogue):
    """Every alarm with a configuration of its own; the row of each, by id."""
    ids = {entry["name"]: entry["id"] for entry in reversed(catalogue)}
    alarms = []
    for entry in catalogue:
        level, switches = pattern_of(entry["id"])
        action = "".join(f"<{name}>{str(switch == 'enable').lower()}</{name}>" for name, switch in zip(ACTIONS, switches))
        alarms.append(f"<alarm><id>{entry['id']}</id><level>{level}</level><action>{action}</action></alarm>")
    edit_database(olt, f'<alarm-log xmlns="urn:norvale:yang:olt-alarm-log">{"".join(alarms)}</alarm-log>')
    rows = [row(entry, *pattern_of(entry["id"])) for entry in catalogue]
    wait_until(lambda: rows[-1] in shown(olt, f"configuration id {ALARM_COUNT - 1}"), "the daemon knows the configuration")
    assert ids["fan"] == 0
    return rows


# --- one alarm

def test_every_id_shows_its_row_under_the_header(olt, configured):
    with olt.vty() as session:
        for alarm_id, expected in enumerate(configured):
            answer = session.run(f"show alarm-log configuration id {alarm_id}")
            assert answer == (HEADER + expected, 0)


def test_every_name_shows_the_row_of_its_first_id(olt, configured, catalogue):
    names = [entry["name"] for entry in catalogue]
    with olt.vty() as session:
        for name in names:
            answer = session.run(f"show alarm-log configuration name {name}")
            assert answer == (HEADER + configured[names.index(name)], 0)


def test_columns_are_padded_with_blanks_to_their_width(olt, configured):
    level, switches = pattern_of(0)
    assert shown(olt, "configuration id 0") == (
        "id   name                      description                    level      type       class    print    record   trap     remote  \n"
        "0    fan                       Fan state change               " + f"{level:<10s}" + " equipment  alarm    "
        + " ".join(f"{switch:<8s}" for switch in switches) + "\n")


@pytest.mark.parametrize("number", [ALARM_COUNT, ALARM_COUNT + 1, 255, 256, 261, 1000, 65535])
def test_an_id_beyond_the_catalogue_shows_the_header_alone(olt, number):
    mark = len(olt.stderr())
    assert shown(olt, f"configuration id {number}") == HEADER
    assert olt.stderr()[mark:] == ""


@pytest.mark.parametrize("words", ["id 65536", "id 65642", "id -1", "id fan", "id", "name", "", "name fan fan"])
def test_what_the_syntax_does_not_allow_shows_nothing(olt, words):
    text, rc = olt.run(f"show alarm-log configuration {words}".rstrip())
    assert rc != 0 and "description" not in text


@pytest.mark.parametrize("name", ["nosuch", "FAN", "fa", "x" * 31, "x" * 300, "%s%n"])
def test_an_unknown_name_shows_the_header_and_is_said_on_standard_error(olt, name):
    mark = len(olt.stderr())
    assert shown(olt, f"configuration name {name}") == HEADER
    assert olt.stderr()[mark:] == f"wrong alarm id form {name}\n"


def test_the_id_of_a_name_is_taken_in_16_bits(olt, configured):
    olt.faults(f"get_alarm_id_by_name nth=1 ret={0x10005}")
    assert shown(olt, "configuration name fan") == HEADER + configured[5]


def test_the_level_and_the_switches_are_read_in_the_order_of_the_columns(olt, configured):
    _, _, calls = calls_of(olt, f"show alarm-log configuration id {QUIET_ID}", GET + ".*")
    reads = [call.op.removeprefix(GET) for call in calls if call.values.get("id") == str(QUIET_ID)]
    assert reads == ["alarm_level", *(f"action_{action}" for action in ACTIONS)]


@pytest.mark.parametrize("words", [f"id {QUIET_ID}", f"name {QUIET_NAME}"])
@pytest.mark.parametrize("read", ["alarm_level", *(f"action_{action}" for action in ACTIONS)])
def test_a_value_that_cannot_be_read_leaves_the_row_out(olt, configured, words, read):
    olt.faults(f"{GET}{read} ret=-4")
    mark = len(olt.stderr())
    assert shown(olt, f"configuration {words}") == HEADER
    assert olt.stderr()[mark:] == ""
    olt.faults()
    assert shown(olt, f"configuration {words}") == HEADER + configured[QUIET_ID]


def test_what_an_alarm_command_sets_is_shown(olt, configured):
    level, _ = pattern_of(QUIET_ID)
    for switch in ("enable", "disable"):
        olt.run(f"alarm-log event reset {switch} all")
        assert shown(olt, "configuration name reset").endswith((f"{switch:<8s} " * 4).removesuffix(" ") + "\n")
    for number, action in enumerate(ACTIONS):
        switch = pattern_of(QUIET_ID)[1][number]
        olt.run(f"alarm-log event reset {switch} {action}")
    assert shown(olt, "configuration name reset") == HEADER + configured[QUIET_ID]


# --- groups

@pytest.mark.parametrize("word", ["alarm", "event", *GROUP_NUMBER, "all"])
def test_a_group_shows_its_rows_in_the_order_of_the_ids(olt, configured, catalogue, word):
    selected = [configured[entry["id"]] for entry in catalogue
                if word == "all" or word == entry["class"] or GROUP_NUMBER.get(word) == entry["group"]]
    assert shown(olt, f"{word} configuration") == HEADER + "".join(selected)
    groups = [names for (group, klass), names in GROUPS.items() if word in (klass, group.replace("routing", "route"), "all")]
    assert len(selected) == sum(map(len, groups))


def test_a_group_is_read_as_one_text(olt, configured):
    _, _, calls = calls_of(olt, "show alarm-log route configuration", f"{XML}|parsing_alarm_list_xml_data|get_alarm_id_by_name")
    assert [call.op for call in calls] == [XML, "parsing_alarm_list_xml_data"]


@pytest.mark.parametrize("words", ["rou conf", "rout configuration"])
def test_abbreviated_groups_are_understood(olt, configured, catalogue, words):
    expected = "".join(configured[entry["id"]] for entry in catalogue if entry["group"] == 3)
    assert shown(olt, words) == HEADER + expected


@pytest.mark.parametrize("word", ["alarm", "all"])
@pytest.mark.parametrize("code", [-1, -4])
def test_a_text_that_cannot_be_fetched_is_one_line_without_a_header(olt, word, code):
    olt.faults(f"{XML} nth=1 ret={code}")
    assert shown(olt, f"{word} configuration") == "get alarm log list data xml failed!\n"


@pytest.mark.parametrize("fault", [f"{XML} nth=1 ret=0", "parsing_alarm_list_xml_data nth=1 ret=-1",
                                   "parsing_alarm_list_xml_data nth=1 ret=0"])
def test_a_text_without_alarms_shows_them_without_level_and_switched_off(olt, configured, catalogue, fault):
    olt.faults(fault)
    expected = "".join(row(entry, "", ["disable"] * 4) for entry in catalogue if entry["group"] == 3)
    assert shown(olt, "route configuration") == HEADER + expected


@pytest.mark.parametrize("words", ["routing configuration", "nosuch configuration", "alarm", "configuration all"])
def test_other_groups_are_refused(olt, words):
    assert olt.run(f"show alarm-log {words}")[1] != 0


def test_showing_leaks_nothing(cold_olt):
    olt = cold_olt.start(env=NO_QUARANTINE)
    descriptors = olt.settled_fds()
    with olt.vty() as session:
        for _ in range(200):
            session.run("show alarm-log all configuration")

        def resident_kb():
            with open(f"/proc/{olt.pid}/statm") as file:
                return int(file.read().split()[1]) * 4

        before = resident_kb()
        for _ in range(1000):
            session.run("show alarm-log all configuration")
        # A leaked text alone would be 45 MB.
        assert resident_kb() - before < 4000
    olt.wait_no_more_fds(descriptors)
