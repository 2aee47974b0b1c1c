# SPDX-License-Identifier: GPL-2.0-or-later
"""Fixtures around the threshold monitor, imported by the tests that need them."""
import os

import pytest
from alarm_fixtures import edit_database, let_changes_be_heard
from calls import of, read_trace
from command_table import SETS
from olt import wait_until

MONITOR = "alarm_log_threshold_monitor"
FETCH = "db_olt_alarm_log_show_xml_threshold"  # the first call of a pass; arming the timer is the last
ARM = "thread_add_timer"
BOARD_ALARMS = {"temp-high": 102, "temp-low": 103, "cpu-usage-high": 104, "mem-usage-high": 105}
PON_ALARMS, OPTICAL_NAMES = SETS["PON_THRESHOLD"], SETS["OPTICAL_NAME"]


def start_hurried(olt, ms=20, env=None):
    """Starts the daemon traced, open to faults, its monitor's timer hurried."""
    olt.faults()
    olt.reported_to = 0
    return olt.start(trace=True, env={"CALL_SHIM_TIMER": f"{MONITOR}={ms}", **(env or {})})


@pytest.fixture(scope="module")
def olt(make_olt):
    """An OLT that the tests of a module share, whose monitor does not wait three seconds."""
    return start_hurried(make_olt())


@pytest.fixture(autouse=True)
def at_rest(olt):
    """No alarm is watched, no threshold stored, nothing fails."""
    yield
    olt.faults()
    with olt.vty() as session:
        for name in BOARD_ALARMS:
            session.run(f"alarm-log threshold {name} disable")
    store_thresholds(olt, **{name: (None, None) for name in BOARD_ALARMS})
    set_temperature(olt, 250)


def a_pass(olt):
    """The calls of one pass that begins after now, to its end."""
    start = os.path.getsize(olt.trace_path)

    def complete():
        calls = [call for call in read_trace(olt.trace_path, start) if call.thread == "main"]
        first = next((i for i, call in enumerate(calls) if call.op == FETCH), None)
        if first is None:
            return None
        last = next((i for i in range(first, len(calls)) if calls[i].op == ARM and MONITOR in calls[i].arguments), None)
        return None if last is None else calls[first : last + 1]

    return wait_until(complete, "the monitor passes")


def reports(calls):
    """What was reported: alarm id and text."""
    return [(int(call.values["id"]), call.values["text"]) for call in of(calls, "cli_log")]


def reported(olt):
    """What was reported since this was last asked, to the end of a pass that begins after now."""
    a_pass(olt)
    start, olt.reported_to = getattr(olt, "reported_to", 0), os.path.getsize(olt.trace_path)
    return reports([call for call in read_trace(olt.trace_path, start, olt.reported_to) if call.thread == "main"])


def set_temperature(olt, tenths):
    """Sets the board's sensor to the reading nearest to zero that gives these tenths of a degree."""
    raw = -(-abs(tenths) * 128 // 5)
    olt.boardctl("temp", "raw", f"0x{(raw if tenths >= 0 else -raw) & 0xFFFF:04x}")


def store_thresholds(olt, **thresholds):
    """Puts board thresholds into the database as operators do; None removes one."""
    def leaf(name, value):
        if value is None:
            return f'<{name} nc:operation="remove"/>'
        return f"<{name}>{value}</{name}>"

    content = "".join(f"<{name}>{leaf('alarm-threshold', alarm)}{leaf('clear-threshold', clear)}</{name}>"
                      for name, (alarm, clear) in thresholds.items())
    edit_database(olt, '<alarm-log xmlns="urn:norvale:yang:olt-alarm-log"'
                       ' xmlns:nc="urn:ietf:params:xml:ns:netconf:base:1.0">'
                       f"<threshold>{content}</threshold></alarm-log>")
    if olt.daemon:
        let_changes_be_heard(olt)


def watch(olt, name, *actions):
    """Switches actions of an alarm on, without touching its thresholds."""
    for action in actions or ["record"]:
        assert olt.run(f"alarm-log alarm {name} enable {action}") == ("", 0)


def enable(olt, node, name, alarm, clear):
    """Enables an optical alarm of the interface whose node it is."""
    assert olt.run(f"alarm-log threshold {name} enable {alarm} {clear}", node) == ("", 0)
