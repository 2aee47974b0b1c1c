# SPDX-License-Identifier: GPL-2.0-or-later
"""The threshold commands: words, numbers, what they change in the database and in memory, the display."""
import json

import pytest
from alarm_fixtures import calls_of, olt  # noqa: F401
from alarm_words import ACTIONS
from calls import of
from threshold_fixtures import BOARD_ALARMS, OPTICAL_NAMES, PON_ALARMS, store_thresholds
from traced_fixtures import no_faults  # noqa: F401

WRONG = ("wrong threshold value.\r\n", 0)
TOO_SMALL = ("Msg:argc set threshold can not be smaller than clean threshold error!\r\n", 0)
TOO_BIG = ("Msg:argc set threshold can not be bigger than clean threshold error!\r\n", 0)
DATABASE_CALLS = "db_(apply|discard)_.*|db_olt_alarm_log_(set|del)_.*"
WRONG_WORDS = ["1.2.3", "12a", "--1", "+1+", "1e3", "0x10", "nan", "inf", "1,5", "-1-", "temp"]
SHOW = "show alarm-log threshold configuration"
NO_LIMIT_PORTS = ["0/0", "0/9", "1/3", "0/4294967297", "7/0"]


def during(olt, command):  # noqa: F811
    """What a configuration command shows, and the database calls it makes, as text without results."""
    text, rc, calls = calls_of(olt, command, DATABASE_CALLS)
    assert rc == 0
    return text, [str(call).split(" -> ")[0].strip() for call in calls if call.thread == "main"]


def switches(alarm, value):
    return [f"db_olt_alarm_log_set_action_{action} id={alarm} val={value} size=-1 apply=0" for action in ACTIONS]


def deletions(name):
    stem = "db_olt_alarm_log_del_" + name.replace("-", "_")
    return [f"{stem}_alarm_threshold", f"{stem}_clear_threshold"]


def enabling(name, end="db_apply_changes"):
    return ["db_apply_lock", *switches(BOARD_ALARMS[name], 1), *deletions(name), end, "db_apply_unlock"]


def disabling(name, end="db_apply_changes"):
    emptied = [f'db_olt_alarm_log_set_temp_high_{which}_threshold val="" width=32 apply=0' for which in ("alarm", "clear")]
    return ["db_apply_lock", *switches(BOARD_ALARMS[name], 0), *(emptied if name == "temp-high" else []), end,
            "db_apply_unlock"]


def good_numbers(name):
    return "5 10" if name.endswith("low") else "70 65"


def switches_shown(olt, name):  # noqa: F811
    """The four switches of an alarm as its row shows them."""
    return olt.run(f"show alarm-log configuration id {BOARD_ALARMS[name]}")[0].splitlines()[1].split()[-4:]


# --- board alarms


@pytest.mark.parametrize("name", BOARD_ALARMS)
def test_enabling_switches_all_actions_on_and_deletes_the_stored_thresholds(olt, name):  # noqa: F811
    assert during(olt, f"alarm-log threshold {name} enable {good_numbers(name)}") == ("", enabling(name))
    assert switches_shown(olt, name) == ["enable"] * 4


@pytest.mark.parametrize("name", BOARD_ALARMS)
def test_disabling_switches_all_actions_off(olt, name):  # noqa: F811
    olt.run(f"alarm-log threshold {name} enable {good_numbers(name)}")
    assert during(olt, f"alarm-log threshold {name} disable") == ("", disabling(name))
    assert switches_shown(olt, name) == ["disable"] * 4


def stored(olt):  # noqa: F811
    """The thresholds that the running configuration gives back."""
    with olt.vty() as session:
        for name in BOARD_ALARMS:
            session.run(f"alarm-log alarm {name} enable print")
        text = session.run("show running-config alarm-log")[0]
        for name in BOARD_ALARMS:
            session.run(f"alarm-log alarm {name} disable print")
    return [line.split(" ", 2)[2] for line in text.split("\r\n") if line.startswith("alarm-log threshold")]


def test_what_is_left_of_stored_thresholds(olt):  # noqa: F811
    store_thresholds(olt, **{name: (9, 8) for name in BOARD_ALARMS if name != "temp-low"}, **{"temp-low": (8, 9)})
    assert len(stored(olt)) == 4
    for name in BOARD_ALARMS:
        olt.run(f"alarm-log threshold {name} disable")
    # Disabling empties those of temp-high alone.
    assert stored(olt) == ["temp-low enable 8 9", "cpu-usage-high enable 9 8", "mem-usage-high enable 9 8"]
    olt.run("alarm-log threshold cpu-usage-high enable 50 40")
    assert stored(olt) == ["temp-low enable 8 9", "mem-usage-high enable 9 8"]


@pytest.mark.parametrize("name", BOARD_ALARMS)
@pytest.mark.parametrize("action", [*ACTIONS, "all"])
def test_the_older_forms_switch_their_action_first(olt, name, action):  # noqa: F811
    def first(value):
        return [f"db_olt_alarm_log_set_action_{one} id={BOARD_ALARMS[name]} val={value} size=1 apply=1"
                for one in (ACTIONS if action == "all" else [action])]

    assert during(olt, f"alarm {name} {action} enable {good_numbers(name)}") == ("", first(1) + enabling(name))
    assert during(olt, f"alarm {name} {action} disable") == ("", first(0) + disabling(name))


def test_a_refused_number_leaves_the_action_of_an_older_form_switched_on(olt):  # noqa: F811
    olt.run("alarm-log threshold temp-high disable")
    text, calls = during(olt, "alarm temp-high print enable 1.2.3 65")
    assert (text, 0) == WRONG
    assert calls == ["db_olt_alarm_log_set_action_print id=102 val=1 size=1 apply=1"]
    assert switches_shown(olt, "temp-high") == ["enable", "disable", "disable", "disable"]


def test_an_older_form_ignores_that_its_action_fails(olt):  # noqa: F811
    olt.faults("db_olt_alarm_log_set_action_trap nth=1 count=1 ret=-5")
    text, calls = during(olt, "alarm temp-high trap enable 70 65")
    assert text.startswith("set alarm log trap failed : ") and text.count("\n") == 1
    assert calls[1:] == enabling("temp-high")


@pytest.mark.parametrize("word", WRONG_WORDS)
@pytest.mark.parametrize("form", ["{} 65", "70 {}"])
def test_what_is_no_number_is_refused_and_nothing_changes(olt, form, word):  # noqa: F811
    text, calls = during(olt, "alarm-log threshold temp-high enable " + form.format(word))
    assert ((text, 0), calls) == (WRONG, [])


@pytest.mark.parametrize("word", ["0", "+-1", "-+1", "-", "+", ".", "0.0", "1-"])
def test_odd_numbers_are_accepted_as_far_as_they_are_numbers(olt, word):  # noqa: F811
    """Those that are none are 0, which is not above the clear threshold of -1 and not below that of 0."""
    assert during(olt, f"alarm-log threshold cpu-usage-high enable {word} -1") == ("", enabling("cpu-usage-high"))
    value = 1 if word.startswith("1") else 0
    assert olt.run(f"alarm-log threshold cpu-usage-high enable {word} {value}") == ("", 0)
    assert olt.run(f"alarm-log threshold cpu-usage-high enable {word} {value + 1}") == TOO_SMALL


@pytest.mark.parametrize("name, numbers, answer", [
    ("temp-high", "64 65", TOO_SMALL), ("cpu-usage-high", "-1 0", TOO_SMALL), ("mem-usage-high", "1.4 1.5", TOO_SMALL),
    ("temp-low", "10 5", TOO_BIG), ("temp-low", "-4 -5", TOO_BIG),
])
def test_thresholds_the_wrong_way_round_are_refused_and_nothing_changes(olt, name, numbers, answer):  # noqa: F811
    text, calls = during(olt, f"alarm-log threshold {name} enable {numbers}")
    assert ((text, 0), calls) == (answer, [])


@pytest.mark.parametrize("name", BOARD_ALARMS)
def test_equal_thresholds_are_accepted(olt, name):  # noqa: F811
    assert during(olt, f"alarm-log threshold {name} enable 5 5") == ("", enabling(name))


@pytest.mark.parametrize("name", BOARD_ALARMS)
def test_when_the_second_deletion_fails_nothing_is_applied(olt, name):  # noqa: F811
    olt.run(f"alarm-log threshold {name} disable")
    alarm, clear = deletions(name)
    olt.faults(f"{clear} ret=-7")
    command = f"alarm-log threshold {name} enable {good_numbers(name)}"
    assert during(olt, command) == ("", enabling(name, "db_discard_changes"))
    assert switches_shown(olt, name) == ["disable"] * 4
    olt.faults(f"{alarm} ret=-7")
    assert during(olt, command) == ("", enabling(name))


def test_when_the_last_change_of_a_disable_fails_nothing_is_applied(olt):  # noqa: F811
    for name, last in (("temp-high", "db_olt_alarm_log_set_temp_high_clear_threshold"),
                       ("temp-low", "db_olt_alarm_log_set_action_remote")):
        olt.run(f"alarm-log threshold {name} enable {good_numbers(name)}")
        olt.faults(f"{last} ret=-7")
        assert during(olt, f"alarm-log threshold {name} disable") == ("", disabling(name, "db_discard_changes"))
        olt.faults()
        assert switches_shown(olt, name) == ["enable"] * 4
        olt.run(f"alarm-log threshold {name} disable")


def test_a_lock_that_cannot_be_had_is_no_error(olt):  # noqa: F811
    olt.faults("db_apply_lock ret=-5")
    assert during(olt, "alarm-log threshold temp-high enable 70 65") == ("", enabling("temp-high"))
    assert switches_shown(olt, "temp-high") == ["enable"] * 4


def test_the_lock_is_traced_when_the_database_is_debugged(olt):  # noqa: F811
    olt.faults("db_debug_get ret=8")
    before = len(olt.stdout())
    olt.run("alarm-log threshold temp-high enable 70 65")
    olt.run("alarm-log threshold temp-high disable")
    assert olt.stdout()[before:] == 2 * (
        "[DATABASE LOCK] !!!!!!!! cli_threshold_alarm_config: db apply lock!!!!!!!!!\n"
        "[DATABASE LOCK] !!!!!!!! cli_threshold_alarm_config: db apply unlock!!!!!!!!\n")


# --- optical alarms


@pytest.fixture
def port(olt):  # noqa: F811
    """An interface node whose alarms are all disabled with thresholds of 0, and are left so."""
    node = "gpon 0/3"

    def disable_all():
        with olt.vty(node) as session:
            for name in PON_ALARMS:
                session.run(f"alarm-log threshold {name} enable 0 0")
                session.run(f"alarm-log threshold {name} disable")

    disable_all()
    yield node
    disable_all()


def table(**enabled):
    """The display, with these alarms enabled."""
    return "".join(f"{name:<20}: enable {enabled[key]} \r\n" if (key := name.replace("-", "_")) in enabled
                   else f"{name:<20}: disable \r\n" for name in PON_ALARMS), 0


def test_nothing_enabled_reads_disable(olt, port):  # noqa: F811
    assert olt.run(SHOW, port) == (
        "pon-txpower-high    : disable \r\n"
        "pon-txpower-low     : disable \r\n"
        "pon-txbias-high     : disable \r\n"
        "pon-txbias-low      : disable \r\n"
        "pon-vcc-high        : disable \r\n"
        "pon-vcc-low         : disable \r\n"
        "pon-temp-high       : disable \r\n"
        "pon-temp-low        : disable \r\n", 0)


@pytest.mark.parametrize("index", range(8))
def test_both_forms_enable_and_disable_the_same_alarm(olt, port, index):  # noqa: F811
    name, optical = PON_ALARMS[index], OPTICAL_NAMES[index]
    numbers, shown = ("-5 -4.5", "-5.00 -4.50") if name.endswith("low") else ("7.125 +3", "7.12 3.00")
    enabled = table(**{name.replace("-", "_"): shown})
    for enable, disable in [(f"alarm-log threshold {name} enable {numbers}", f"alarm-log threshold {name} disable"),
                            (f"alarm pon optical {optical} enable {numbers}", f"alarm pon optical {optical} disable"),
                            (f"alarm-log threshold {name} enable {numbers}",
                             f"no alarm-log threshold {name} enable {numbers}")]:
        assert olt.run(enable, port) == ("", 0)
        assert olt.run(SHOW, port) == enabled
        assert olt.run(disable, port) == ("", 0)
        assert olt.run(SHOW, port) == table()


def test_the_thresholds_stay_when_an_alarm_is_disabled(olt, port):  # noqa: F811
    olt.run("alarm-log threshold pon-temp-high enable 70 65", port)
    olt.run("alarm-log threshold pon-temp-high disable", port)
    alarm = json.loads(olt.run(SHOW + " json", port)[0])["pon_optical_alarm"][6]
    assert alarm == {"name": 6, "enable": 0, "set_thr_str": 70, "clear_thr_str": 65}


def test_the_no_form_looks_at_no_number(olt, port):  # noqa: F811
    olt.run("alarm-log threshold pon-vcc-low enable 3.1 3.2", port)
    assert olt.run("no alarm-log threshold pon-vcc-low enable abc x", port) == ("", 0)
    assert olt.run(SHOW, port) == table()


@pytest.mark.parametrize("kind", ["gpon", "xgpon"])
def test_every_port_of_every_type_has_its_own_thresholds(olt, kind):  # noqa: F811
    for number in range(1, 9):
        olt.run(f"alarm-log threshold pon-vcc-low enable {number} {number}", f"{kind} 0/{number}")
    for number in range(1, 9):
        assert olt.run(SHOW, f"{kind} 0/{number}") == table(pon_vcc_low=f"{number}.00 {number}.00")
        olt.run("alarm-log threshold pon-vcc-low disable", f"{kind} 0/{number}")


@pytest.mark.parametrize("word", WRONG_WORDS)
@pytest.mark.parametrize("command", ["alarm-log threshold pon-vcc-low enable", "alarm pon optical vcc_low enable"])
def test_wrong_numbers_are_refused_and_nothing_changes(olt, port, command, word):  # noqa: F811
    assert olt.run(f"{command} {word} 3", port) == WRONG
    assert olt.run(f"{command} 3 {word}", port) == WRONG
    assert olt.run(SHOW, port) == table()


@pytest.mark.parametrize("index", range(8))
def test_the_order_of_optical_thresholds_is_checked(olt, port, index):  # noqa: F811
    numbers, answer = ("1 2", TOO_SMALL) if index % 2 == 0 else ("2 1", TOO_BIG)
    for command in (f"alarm-log threshold {PON_ALARMS[index]}", f"alarm pon optical {OPTICAL_NAMES[index]}"):
        assert olt.run(f"{command} enable {numbers}", port) == answer
    assert olt.run(SHOW, port) == table()
    assert olt.run(f"alarm-log threshold {PON_ALARMS[index]} enable 2 2", port) == ("", 0)


def test_optical_thresholds_are_no_matter_of_the_database(olt, port):  # noqa: F811
    before = len(olt.trace())
    olt.run("alarm-log threshold pon-vcc-low enable 3.1 3.2", port)
    olt.run("alarm-log threshold pon-vcc-low disable", port)
    # The monitor, which may come round meanwhile, reads them all at once and then the switches.
    assert of(olt.trace()[before:], DATABASE_CALLS + "|db_olt_alarm_log_get_.*_threshold") == []


@pytest.mark.parametrize("number", NO_LIMIT_PORTS)
def test_an_interface_that_cannot_be_takes_commands_without_effect(olt, number):  # noqa: F811
    for kind in ("gpon", "xgpon"):
        node = f"{kind} {number}"
        assert olt.run("alarm-log threshold pon-vcc-low enable 3.1 3.2", node) == ("", 0)
        assert olt.run("alarm pon optical vcc_high disable", node) == ("", 0)
        assert olt.run("alarm-log threshold pon-vcc-low enable x 3.2", node) == WRONG
        assert olt.run(SHOW, node) == table()
        assert len(json.loads(olt.run(SHOW + " json", node)[0])["pon_optical_alarm"]) == 8
    assert olt.run(SHOW, "gpon 0/3") == table()


def test_json_lists_the_alarms_by_number_with_texts_when_enabled_and_numbers_when_not(olt, port):  # noqa: F811
    olt.run("alarm-log threshold pon-vcc-low enable 3.1 3.2", port)
    text, rc = olt.run(SHOW + " json", port)

    def entry(index, enable, alarm, clear):
        return (f'    {{\n      "name":{index},\n      "enable":{enable},\n      "set_thr_str":{alarm},\n'
                f'      "clear_thr_str":{clear}\n    }}')

    entries = [entry(i, 1, '"3.10"', '"3.20"') if i == 5 else entry(i, 0, 0, 0) for i in range(8)]
    assert (text, rc) == ('{\n  "pon_optical_alarm":[\n' + ",\n".join(entries) + "\n  ]\n}\r\n", 0)


@pytest.mark.parametrize("digits", [30, 38, 60, 400])
def test_huge_numbers_are_cut_in_the_display_and_harm_nothing(olt, port, digits):  # noqa: F811
    assert olt.run(f"alarm-log threshold pon-temp-high enable {'9' * digits} 1", port) == ("", 0)
    line = olt.run(SHOW, port)[0].split("\r\n")[6]
    shown = line.removeprefix("pon-temp-high       : enable ").split(" ")[0]
    assert shown == "inf" if digits > 38 else len(shown) == 31 and shown.isdigit()
    assert olt.run("alarm-log threshold pon-temp-high disable", port) == ("", 0)
    number = json.loads(olt.run(SHOW + " json", port)[0])["pon_optical_alarm"][6]["set_thr_str"]
    assert isinstance(number, int) and number > 10**18


@pytest.mark.parametrize("command, node", [
    ("alarm-log threshold pon-vcc-low enable 1 2", "config"), (SHOW, "config"),
    ("alarm pon optical vcc_low disable", "config"), ("alarm-log threshold pon-vcc-low", "gpon 0/1"),
    ("alarm-log threshold tx_power_high enable 1 1", "gpon 0/1"), ("alarm pon optical pon-vcc-low disable", "gpon 0/1"),
    ("alarm-log threshold temp-high enable 1", "config"), ("alarm temp-high enable 1 1", "config"),
    ("no alarm-log threshold pon-vcc-low disable", "gpon 0/1"),
])
def test_what_is_no_threshold_command(olt, command, node):  # noqa: F811
    assert olt.run(command, node)[1] != 0


@pytest.mark.parametrize("node", ["config", "gpon 0/1", "xgpon 0/1"])
def test_older_forms_are_not_listed(olt, node):  # noqa: F811
    listed = [line.strip() for line in olt.run("list", node)[0].splitlines()]
    assert any(line.startswith("alarm-log threshold") for line in listed)
    assert not any(line.startswith("alarm ") for line in listed)
