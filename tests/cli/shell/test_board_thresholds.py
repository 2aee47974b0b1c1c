# SPDX-License-Identifier: GPL-2.0-or-later
"""board-thresholds: what it keeps is in force after every start, and no start files a record of nothing."""

import signal

import pytest
from olt import OLT, wait_until

# Far from what the simulated board and this machine measure.
KEPT = {
    "temp-high": ("90", "80.5"),
    "temp-low": ("-20", "-10"),
    "cpu-usage-high": ("1000", "999"),
    "mem-usage-high": ("1000", "999"),
}


def thresholds(olt, *words):
    return olt.exec(OLT, "thresholds", *words)


def in_force(olt):
    lines = olt.run("show running-config alarm-log")[0].splitlines()
    return [line for line in lines if line.startswith("alarm-log threshold ")]


def expected_in_force():
    return [f"alarm-log threshold {name} enable {raised} {cleared}" for name, (raised, cleared) in KEPT.items()]


def records(olt):
    return olt.run("show alarm-log tail 100")[0].splitlines()


def wait_looked_at(olt):
    """Until the monitor has compared all four: it says each first value that is normal."""

    def compared():
        normal = [line for line in records(olt) if "returns to normal" in line]
        return len(normal) >= len(KEPT)

    wait_until(compared, "the four first values")


@pytest.mark.parametrize("written", [False, True], ids=["kept alone", "configuration written as well"])
def test_all_four_are_in_force_after_restarts_without_a_false_record(fresh_olt, written):
    for name, (raised, cleared) in KEPT.items():
        done = thresholds(fresh_olt, "set", name, raised, cleared)
        assert done.returncode == 0, done.stderr
    assert in_force(fresh_olt) == expected_in_force()
    wait_looked_at(fresh_olt)
    for _ in range(2):
        if written:
            assert fresh_olt.run("write", "enable")[1] == 0
        assert fresh_olt.run("clear alarm-log")[1] == 0
        fresh_olt.restart()
        assert in_force(fresh_olt) == expected_in_force()
        wait_looked_at(fresh_olt)
        assert not [line for line in records(fresh_olt) if " is above " in line or " is below " in line]


def test_they_are_in_force_when_the_start_takes_the_backup(fresh_olt):
    for name, (raised, cleared) in KEPT.items():
        assert thresholds(fresh_olt, "set", name, raised, cleared).returncode == 0
    for _ in range(2):  # the second puts their lines into the backup
        assert fresh_olt.run("write", "enable")[1] == 0
    assert fresh_olt.run("clear alarm-log")[1] == 0
    fresh_olt.kill()
    (fresh_olt.state / "conf" / "diagd.conf").chmod(0)
    fresh_olt.start()
    fresh_olt.wait_log("started without newest configuration")
    assert in_force(fresh_olt) == expected_in_force()
    wait_looked_at(fresh_olt)
    assert not [line for line in records(fresh_olt) if " is above " in line or " is below " in line]


def test_a_hangup_behind_restore_leaves_them_in_force_without_a_false_record(fresh_olt):
    assert thresholds(fresh_olt, "set", "temp-high", "90", "80").returncode == 0
    assert fresh_olt.run("write", "enable")[1] == 0
    assert thresholds(fresh_olt, "restore").returncode == 0
    with open(fresh_olt.state / "conf" / "diagd.conf", "a") as configuration:
        configuration.write("fan temperature 43\n")
    fresh_olt.send_signal(signal.SIGHUP)
    wait_until(lambda: "43" in fresh_olt.run("show running-config fan")[0], "the file is read again")
    assert in_force(fresh_olt) == ["alarm-log threshold temp-high enable 90 80"]
    fresh_olt.boardctl("temp", "set", 950)  # a look after that
    wait_until(lambda: any(" is above " in line for line in records(fresh_olt)), "the record")
    assert not [line for line in records(fresh_olt) if "threshold 0.00" in line]


def test_actions_that_somebody_chose_are_kept_over_a_start(fresh_olt):
    assert thresholds(fresh_olt, "set", "temp-high", "90", "80").returncode == 0
    assert fresh_olt.run("alarm-log alarm temp-high disable trap") == ("", 0)
    assert fresh_olt.run("write", "enable")[1] == 0
    fresh_olt.restart()
    lines = fresh_olt.run("show running-config alarm-log")[0].splitlines()
    assert "alarm-log alarm temp-high enable record" in lines
    assert "alarm-log alarm temp-high enable trap" not in lines
    assert in_force(fresh_olt) == ["alarm-log threshold temp-high enable 90 80"]


def test_an_alarm_that_is_put_off_stays_off(fresh_olt):
    assert thresholds(fresh_olt, "set", "temp-high", "90", "80").returncode == 0
    assert thresholds(fresh_olt, "set", "temp-low", "-20", "-10").returncode == 0
    assert thresholds(fresh_olt, "off", "temp-high").returncode == 0
    fresh_olt.restart()
    assert in_force(fresh_olt) == ["alarm-log threshold temp-low enable -20 -10"]
    assert thresholds(fresh_olt, "show").stdout == "temp-low: raised at -20, cleared at -10 degrees\n"


@pytest.mark.parametrize("words, said", [
    (("temp-high", "60", "70"), "temp-high: 70 does not clear what 60 raises"),
    (("temp-low", "10", "5"), "temp-low: 5 does not clear what 10 raises"),
    (("temp-high", "6o", "50"), "temp-high: 6o is no number"),
    (("pon-temp-high", "60", "50"), "no threshold of the board is named pon-temp-high"),
])
def test_what_is_wrong_changes_nothing(olt, words, said):
    done = thresholds(olt, "set", *words)
    assert done.returncode == 1 and done.stdout == ""
    assert said in done.stderr and done.stderr.count("\n") == 1
    assert thresholds(olt, "show").stdout == "" and in_force(olt) == []


def test_wrong_words_show_the_usage(olt):
    for words in ((), ("set", "temp-high"), ("put",)):
        done = thresholds(olt, *words)
        assert done.returncode == 2 and done.stderr.startswith("usage: board-thresholds")
