# SPDX-License-Identifier: GPL-2.0-or-later
"""diagsh's verbs: jobs of several commands with one answer."""

import re
import subprocess

import pytest
from olt import BUILD, PROJECT, wait_until

DIAGSH = str(BUILD / "bin" / "diagsh")
USAGE = 64
# Name and type of every alarm, of which the table of alarms has columns as wide as they may be.
CATALOGUE = (PROJECT / "platform" / "include" / "tq_alarms.def").read_text()
ALARM_TYPES = re.findall(r'^TQ_(?:ALARM|PON_THRESHOLD|BOARD_THRESHOLD)\(\d+, \w+, "([^"]+)", "[^"]+", (\w+)',
                         CATALOGUE, re.M)
PON_THRESHOLDS = re.findall(r'^TQ_PON_THRESHOLD\(\d+, \w+, "([^"]+)", "[^"]+", (\w+)', CATALOGUE, re.M)


def diagsh(olt, *words):
    return subprocess.run([DIAGSH, "-s", str(olt.state), *words], stdin=subprocess.DEVNULL, capture_output=True,
                          text=True, timeout=60)


@pytest.fixture(scope="module")
def populated(make_olt):
    """Modules as README has them: GPON in 1 and 2, XG-PON in 3, both in 4, none in 5, 7, 8, no diagnostics in 6."""
    olt = make_olt()
    olt.populate()
    return olt.start()


def enabled(olt, node, name):
    text = olt.run("show alarm-log threshold configuration", node)[0]
    return [line for line in text.splitlines() if line.startswith(name) and ": enable" in line]


# --- thresholds of modules


def test_threshold_goes_to_every_port_in_the_node_that_fits_its_module(populated):
    done = diagsh(populated, "threshold", "pon-temp-high", "70", "65")
    command = "alarm-log threshold pon-temp-high enable 70 65"
    assert (done.returncode, done.stderr) == (0, "")
    assert done.stdout.splitlines() == [
        f"gpon 0/1    {command}",
        f"gpon 0/2    {command}",
        f"xgpon 0/3   {command}",
        f"gpon 0/4    {command}",
        f"xgpon 0/4   {command}",
        "0/5         skipped, no module that is decoded",
        "0/6         skipped, its module measures nothing",
        "0/7         skipped, no module that is decoded",
        "0/8         skipped, no module that is decoded",
        "5 set, 4 ports skipped; to keep it: diagsh -c write",
    ]
    nodes = [f"{kind} 0/{port}" for port in range(1, 9) for kind in ("gpon", "xgpon")]
    assert [node for node in nodes if enabled(populated, node, "pon-temp-high")] == [
        "gpon 0/1", "gpon 0/2", "xgpon 0/3", "gpon 0/4", "xgpon 0/4"]
    assert enabled(populated, "xgpon 0/3", "pon-temp-high")[0].split(":")[1].split() == ["enable", "70.00", "65.00"]


def test_threshold_goes_to_ports_that_are_named_and_off_again(populated):
    done = diagsh(populated, "threshold", "pon-txpower-low", "-5", "-4", "1", "0/3")
    assert (done.returncode, done.stderr) == (0, "")
    assert done.stdout.splitlines()[-1].startswith("2 set, 0 ports skipped")
    assert enabled(populated, "gpon 0/1", "pon-txpower-low") and enabled(populated, "xgpon 0/3", "pon-txpower-low")
    assert not enabled(populated, "gpon 0/2", "pon-txpower-low")
    assert diagsh(populated, "threshold", "pon-txpower-low", "off", "1").returncode == 0
    assert not enabled(populated, "gpon 0/1", "pon-txpower-low") and enabled(populated, "xgpon 0/3", "pon-txpower-low")


def test_a_threshold_is_ended_whatever_is_plugged_now(populated):
    assert diagsh(populated, "threshold", "pon-vcc-high", "4", "3", "1", "3").returncode == 0
    populated.boardctl("unplug", "gpon", 1)
    assert [node for node in ("gpon 0/1", "xgpon 0/3") if not enabled(populated, node, "pon-vcc-high")] == []
    before = populated.run("show running-config")[0]
    done = diagsh(populated, "threshold", "pon-vcc-high", "off")
    populated.boardctl("plug", "gpon", 1, PROJECT / "sim" / "modules" / "gpon-1490.json")
    assert (done.returncode, done.stderr) == (0, "")
    assert [node for node in ("gpon 0/1", "xgpon 0/3") if enabled(populated, node, "pon-vcc-high")] == []
    after = populated.run("show running-config")[0]
    assert after == "\n".join(line for line in before.split("\n") if "pon-vcc-high" not in line)


def test_threshold_that_is_refused_is_a_failure(populated):
    done = diagsh(populated, "threshold", "pon-vcc-high", "3", "4")
    assert (done.returncode, done.stdout) == (1, "")
    assert done.stderr == "Msg:argc set threshold can not be smaller than clean threshold error!\n"
    assert diagsh(populated, "threshold", "pon-vcc-high", "x", "4").stderr == "wrong threshold value.\n"


def test_threshold_of_an_unknown_name_is_told_which_names_there_are(populated):
    thresholds = {name for name, kind in PON_THRESHOLDS}
    assert len(thresholds) == 8
    for name in ("pon-rxpower-low", "temp-high", "pon-nonsense"):
        done = diagsh(populated, "threshold", name, "3", "2")
        assert (done.returncode, done.stdout) == (USAGE, "")
        said, beside = done.stderr.splitlines()
        begin = f"diagsh: no threshold of modules is named {name}; there are "
        assert said.startswith(begin) and set(said.removeprefix(begin).rstrip(".").split(", ")) == thresholds
        assert "board-thresholds" in beside


@pytest.mark.parametrize("words", [
    ("threshold",), ("threshold", "temp-high", "70", "65"), ("threshold", "pon-temp-high", "70"),
    ("threshold", "pon-temp-high", "70", "65", "0/9"), ("fans", "now"), ("traps", "all"), ("logic",),
    ("logic", "cpld erase"), ("nonsense",),
])
def test_words_that_a_verb_does_not_take_are_refused(populated, words):
    done = diagsh(populated, *words)
    assert (done.returncode, done.stdout) == (USAGE, "") and done.stderr.startswith("diagsh: ")


# --- where alarms go


def test_traps_tells_sinks_servers_and_how_many_alarms(make_olt):
    olt = make_olt()
    olt.start()
    done = diagsh(olt, "traps")
    assert (done.returncode, done.stderr) == (0, "")
    lines = done.stdout.splitlines()
    assert lines[0] == "traps go nowhere: /etc/olt/trap-sinks.conf is not there"
    assert lines[1].startswith("alarm-log remote server ipv4 :")
    assert re.fullmatch(r"\d+ alarms and events are sent as traps, \d+ to log servers: show alarm-log all configuration",
                        lines[-1])
    traps = int(lines[-1].split()[0])
    assert olt.run("alarm-log alarm fan enable trap") == ("", 0)
    assert olt.exec("tee", "/etc/olt/trap-sinks.conf",
                    input="# nobody\n192.0.2.9 hidden\n[2001:db8::9]:162 hidden # both\n").returncode == 0
    lines = diagsh(olt, "traps").stdout.splitlines()
    assert lines[:2] == ["traps go to 192.0.2.9", "traps go to [2001:db8::9]:162"]
    assert int(lines[-1].split()[0]) == traps + 1 and "hidden" not in "".join(lines)


def test_traps_counts_alarms_of_every_type(fresh_olt):
    def sent():
        return int(diagsh(fresh_olt, "traps").stdout.splitlines()[-1].split()[0])

    assert fresh_olt.run("alarm-log event config-save disable trap") == ("", 0)  # the one that is on from the beginning
    assert sent() == 0
    names = {kind: name for name, kind in ALARM_TYPES}
    assert set(names) == {"environment", "equipment", "communication", "processing"}
    for number, name in enumerate(names.values(), 1):
        assert fresh_olt.run(f"alarm-log alarm {name} enable trap") == ("", 0)
        assert sent() == number, name
    for word in ("alarm", "event"):
        assert fresh_olt.run(f"alarm-log {word} all enable trap") == ("", 0)
    # Four of the board are not taken along, and of the two entries of one name it is the alarm that is meant.
    left_out = {"temp-high", "temp-low", "cpu-usage-high", "mem-usage-high"} - set(names.values())
    assert sent() == 106 - len(left_out) - 1


# --- why the fans run


def test_fans_tell_what_they_do_and_why(make_olt):
    olt = make_olt().start()
    still = ["They are told to stand still: the board has 25.0 degrees, they run at 27.1 degrees and above (fan temperature is 35.0 degrees, less 7.9).",
             "Their speed is low by the temperature: medium above 50.0 degrees, high above 65.0 degrees."]
    wait_until(lambda: '"currentFanMode":"close"' in olt.run("show fan json")[0], "the monitor's first look")
    done = diagsh(olt, "fans")
    assert (done.returncode, done.stderr, done.stdout.splitlines()) == (0, "", still)
    assert olt.run("fan speed high") == ("", 0)
    assert diagsh(olt, "fans").stdout.splitlines()[1] == (
        "Their speed is high because that was asked for (fan speed high); fan speed auto ends that.")


def test_fans_of_a_monitor_that_is_off_stand_still_for_that_reason(make_olt):
    olt = make_olt().start()
    wait_until(lambda: '"currentFanMode":"close"' in olt.run("show fan json")[0], "the monitor's first look")
    assert olt.run("no fan monitor", "diagnose") == ("", 0)
    olt.boardctl("temp", "set", 600)
    first = diagsh(olt, "fans").stdout.splitlines()[0]
    assert first == ("They are told to stand still although the board has 60.0 degrees, they run at 27.1 degrees and above "
                     "(fan temperature is 35.0 degrees, less 7.9): the fan monitor is off (fan monitor in diagnose switches it on).")


# --- the logic

IMAGE = "/tmp/f.jed"
PROGRAMMER = "/usr/sbin/jtag"


def put_image(olt):
    assert olt.exec("tee", IMAGE, input="an image\n").returncode == 0


def test_logic_that_cannot_be_restored_is_a_failure(populated):
    done = diagsh(populated, "logic", "cpld", "restore")
    assert done.returncode == 1
    assert done.stdout.splitlines()[-1] == "failed: the logic is as it was"


def test_logic_that_was_not_fetched_is_a_failure(populated):
    done = diagsh(populated, "logic", "cpld", "upgrade", "usb", "none.jed")
    assert done.returncode == 1
    assert done.stdout.splitlines()[-1] == "failed: no image was fetched, the logic is as it was"


@pytest.mark.slow
def test_logic_of_another_version_has_worked_and_that_of_the_same_is_not_known(fresh_olt):
    fresh_olt.boardctl("logic", 0x21)
    put_image(fresh_olt)
    done = diagsh(fresh_olt, "logic", "cpld", "upgrade", "usb", "f.jed")
    assert done.returncode == 1
    assert "not known: the version is 0x21 as before" in done.stdout

    assert fresh_olt.exec("tee", PROGRAMMER, input="#!/bin/bash\nboardctl logic 34\n").returncode == 0
    put_image(fresh_olt)
    done = diagsh(fresh_olt, "logic", "cpld", "upgrade", "usb", "f.jed")
    assert done.returncode == 0
    assert done.stdout.splitlines()[-1] == "worked: logic 0x22 runs, before it was 0x21"
