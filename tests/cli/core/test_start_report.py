# SPDX-License-Identifier: GPL-2.0-or-later
"""What a start could not do is told on one line, and what is wrong with the configuration wherever somebody may look."""
import re
import signal

import pytest
from olt import PASSWORD, PROJECT, wait_until

PAGE = PROJECT / "docs" / "man" / "diagd.8.md"


def report(text):
    """The parts of the one line."""
    lines = re.findall(r"(?:started without|started,) (.*)", text)
    assert len(lines) == 1, lines
    return lines[0]


def write_configuration(olt, *lines):
    path = olt.state / "conf" / "diagd.conf"
    path.write_text("".join(line + "\n" for line in lines))


def test_all_that_is_missing_is_on_one_line_of_the_log(make_olt):
    board = make_olt(board={"transport": "linux"})
    board.exec("rm", "/dev/tq_gpio_cfg", check=True)
    board.faults("database_dev_get_port_info ret=-2", "pon_mode_get ret=-2", "tq_alarm_log_init nth=1 ret=-10",
                 "db_olt_alarm_log_set_alarm_level nth=1 ret=-6")
    board.start()
    board.wait_log("started without")
    parts = re.findall(r"(\S[^(]*) \([^)]*\)", report(board.log()))
    assert [part.removeprefix(", ") for part in parts] == [
        "port record", "PON mode", "port numbers", "alarm store", "alarm defaults", "fan_monitor", "usb_monitor", "power_monitor",
        "reset_monitor"]
    assert "reset_monitor (No such file or directory); see diagd(8), Starting without" in board.log()
    assert report(board.stderr()) == report(board.log())


def test_a_refused_line_is_told_where_no_log_file_is_configured(cold_olt):
    write_configuration(cold_olt, "hostname olt", f"password {PASSWORD}", "alarm-log alarm fan levle major", "fan temperature 81",
                        "fan temperature 40")
    cold_olt.start()
    wait_until(lambda: "started without" in cold_olt.stderr(), "the start is told")
    told = re.findall(r"^diagd: .*on config line (\d+): (.*)", cold_olt.stderr(), re.M)
    assert [(number, line.strip()) for number, line in told] == [("3", "alarm-log alarm fan levle major"), ("4", "fan temperature 81")]
    assert report(cold_olt.stderr()).startswith("lines of the configuration (2 refused); ")
    assert "fan temperature 40" in cold_olt.run("show running-config fan")[0], "the other lines are in force"
    assert cold_olt.log() == ""


def test_a_line_that_a_hangup_finds_wrong_is_told_too(cold_olt):
    write_configuration(cold_olt, "hostname olt", f"password {PASSWORD}")
    cold_olt.start()
    write_configuration(cold_olt, "hostname olt", "no such command at all")
    cold_olt.send_signal(signal.SIGHUP)
    wait_until(lambda: "on config line 2: no such command at all" in cold_olt.stderr(), "the line is told")
    assert "started without" not in cold_olt.stderr()


def test_a_configuration_that_is_not_there_is_told(cold_olt):
    (cold_olt.state / "conf" / "diagd.conf").unlink()
    cold_olt.start(wait=False)
    wait_until(lambda: "started without configuration (/etc/frr/diagd.conf); see" in cold_olt.stderr(), "the start is told")
    assert "can't open configuration file [/etc/frr/diagd.conf]" in cold_olt.stderr()


@pytest.mark.parametrize("how", ["not readable", "not there"])
def test_a_configuration_that_comes_from_the_backup_is_told(cold_olt, how):
    conf = cold_olt.state / "conf" / "diagd.conf"
    lines = ["hostname olt", f"password {PASSWORD}", "log file /var/log/diagd.log"]
    write_configuration(cold_olt, *lines, "fan temperature 41")
    conf.rename(f"{conf}.sav")
    write_configuration(cold_olt, *lines, "fan temperature 42")
    if how == "not readable":
        conf.chmod(0)
    else:
        conf.unlink()
    cold_olt.start()
    assert "fan temperature 41" in cold_olt.run("show running-config fan")[0]
    assert report(cold_olt.log()) == (
        "newest configuration (/etc/frr/diagd.conf could not be opened: its .sav is in its place); "
        "see diagd(8), Starting without")
    assert "using backup configuration file!" in cold_olt.stderr()


@pytest.fixture(scope="module")
def words():
    """Everything that the daemon's sources say it goes without."""
    found = set()
    for path in (PROJECT / "diagd").rglob("*.cpp"):
        text = path.read_text()
        names = dict(re.findall(r'constexpr const char \*(thread_name) = "([^"]+)"', text))
        for what in re.findall(r"goes_without(?:_if_failed)?\(\s*(\"[^\"]+\"|\w+)", text):
            found.add(what.strip('"') if what.startswith('"') else names.get(what, what))
        found |= set(re.findall(r'(?:open_board_for_life|start_worker)\("([^"]+)"', text))
    return found - {"const", "name", "reason", "what"}  # declarations, and what other calls above pass on


def test_the_manual_page_explains_every_word_of_the_line(words):
    section = PAGE.read_text().split("## Starting without")[1].split("\n## ")[0]
    explained = {word for row in re.findall(r"^\| ([^|]+) \|", section, re.M)[1:] for word in row.split(", ")}
    assert len(words) > 10
    assert explained == words
