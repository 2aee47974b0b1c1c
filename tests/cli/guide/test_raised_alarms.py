# SPDX-License-Identifier: GPL-2.0-or-later
"""The guide's table of alarms against the catalogue and against the calls of the daemon's sources."""
import re

import pytest
from olt import PROJECT

DAEMON = PROJECT / "diagd"
CATALOGUE = PROJECT / "platform" / "include" / "tq_alarms.def"
PAGE = PROJECT / "docs" / "guide" / "raised-alarms.md"
ROW = re.compile(r'^TQ_(ALARM|EVENT|PON_THRESHOLD|BOARD_THRESHOLD)\((\d+), (\w+), "([^"]+)", "([^"]+)", (.*)\)', re.M)
# What the page calls the units that file records; debug_cmd.cpp files what an operator types.
UNITS = {
    "monitors/fan/fan_monitor.cpp": "fan monitor",
    "monitors/power/power_monitor.cpp": "power monitor",
    "monitors/reset_button/reset_monitor.cpp": "reset button",
    "cpld/image_fetch.cpp": "CPLD upgrade",
    "cpld/cpld_cli.cpp": "reboot command",
    "alarm_log/thresholds/threshold_monitor.cpp": "threshold monitor",
}
BY_HAND = "alarm_log/records/debug_cmd.cpp"
THE_CALL_ITSELF = "core/alarm_record.cpp"


class Alarm:
    def __init__(self, kind, number, identifier, name, description, rest):
        self.kind, self.id, self.identifier, self.name, self.description = kind, int(number), identifier, name, description
        self.words = [word.strip(' "') for word in rest.split(",")]

    def is_threshold(self):
        return self.kind.endswith("THRESHOLD")


@pytest.fixture(scope="module")
def catalogue():
    return [Alarm(*row) for row in ROW.findall(CATALOGUE.read_text())]


def without_comments(text):
    return re.sub(r"//.*", "", text)


@pytest.fixture(scope="module")
def sources():
    """The daemon's files that file records, by their names below diagd."""
    texts = {str(path.relative_to(DAEMON)): without_comments(path.read_text()) for path in DAEMON.rglob("*.cpp")}
    return {name: text for name, text in texts.items() if re.search(r"\b(?:cli_log|file_alarm)\(", text)}


def tables():
    """The rows of the page by section: lists of cells."""
    found, section = {}, None
    for line in PAGE.read_text().splitlines():
        if line.startswith("## "):
            section = line[3:]
        elif re.match(r"\| \d", line):
            found.setdefault(section, []).append([cell.strip() for cell in line.strip("|").split("|")])
    return found


def raised_rows():
    return tables()["Raised by diagd"] + tables()["Thresholds"]


def units_of(row):
    return row[2].split(", ")


def test_every_alarm_of_the_catalogue_is_in_one_table_once(catalogue):
    rows = [(int(row[0]), row[1]) for rows in tables().values() for row in rows]
    assert sorted(rows) == [(alarm.id, alarm.name) for alarm in catalogue]
    assert f"has {len(catalogue)} alarms" in PAGE.read_text()


def test_every_source_that_files_records_has_a_name_in_the_table(sources):
    assert set(sources) == {*UNITS, BY_HAND, THE_CALL_ITSELF}
    assert {unit for row in raised_rows() for unit in units_of(row)} == set(UNITS.values())


def test_the_alarms_that_are_raised_are_those_of_the_calls(catalogue, sources):
    called = set()
    for file, unit in UNITS.items():
        called |= {(identifier, unit) for identifier in re.findall(r"TQ_ALARM_(\w+)", sources[file])}
    # The threshold monitor goes through the tables that are made of the catalogue's rows of these kinds.
    assert re.search(r"\bboard_alarms\[", sources["alarm_log/thresholds/threshold_monitor.cpp"])
    assert re.search(r"\bpon_alarms_with_threshold\[", sources["alarm_log/thresholds/threshold_monitor.cpp"])
    called |= {(alarm.identifier, "threshold monitor") for alarm in catalogue if alarm.is_threshold()}
    identifiers = {alarm.id: alarm.identifier for alarm in catalogue}
    assert {(identifiers[int(row[0])], unit) for row in raised_rows() for unit in units_of(row)} == called


def test_texts_are_those_of_the_unit(sources):
    folders = {unit: (DAEMON / file).parent for file, unit in UNITS.items()}
    for row in raised_rows():
        sources = "".join(path.read_text() for unit in units_of(row) for path in folders[unit].glob("*.[ch]pp"))
        for text in re.findall(r"`([^`]+)`", row[4]):
            assert re.search(rf'"[^"\n]*{re.escape(text)}[^"\n]*"', sources), (row[1], text)


def test_thresholds_have_the_units_and_directions_of_the_catalogue(catalogue):
    rows = {row[1]: row for row in tables()["Thresholds"]}
    watched = [alarm for alarm in catalogue if alarm.is_threshold()]
    assert set(rows) == {alarm.name for alarm in watched}
    for alarm in watched:
        _, direction, unit, *_ = alarm.words
        row = rows[alarm.name]
        assert row[6].startswith(f"{unit}, ")
        assert row[4] == ("`is above threshold`" if direction == "high" else "`is below threshold`")
        assert row[5].startswith("a reading below" if direction == "high" else "a reading above")


def test_those_that_are_not_raised_say_what_the_catalogue_says(catalogue):
    by_id = {alarm.id: alarm for alarm in catalogue}
    for number, _, description, kind in tables()["Not raised by diagd"]:
        alarm = by_id[int(number)]
        assert description == alarm.description
        assert kind == ("event" if alarm.kind == "EVENT" else "alarm")
