# SPDX-License-Identifier: GPL-2.0-or-later
"""What every command leaves behind: both semaphores free, privileges lowered, no descriptor more than before.

The commands are those of the table, each typed in a few forms, on a board with modules of all kinds."""
import os
import re
from collections import Counter

import pytest
from calls import of, read_trace
from command_table import COMMANDS, CONFIG, DIAGNOSE, GPON, XGPON
from every_command import LEAVES_OPEN, SLOW, descriptors, lines_of
from syntax import typed
from olt import wait_until

NODES = {"config": CONFIG, "gpon 0/1": GPON, "xgpon 0/4": XGPON, "diagnose": DIAGNOSE}
FORMS = 3  # the first ones and as many last ones
PAUSES = "sleep|usleep|nanosleep"
FAULTS = [
    "misc_cpld_i2c_open ret=-1 errno=5", "misc_cpld_i2c_read_byte ret=-1 errno=5",
    "misc_cpld_i2c_set_byte ret=-1 errno=5", "misc_cpld_channel_select ret=-1 errno=5", "misc_i2c_device_init ret=-1 errno=5",
    "misc_i2c_read ret=-1 errno=5", "misc_i2c_write ret=-1 errno=5", "misc_phy_read ret=-1 errno=5", "board_mmap_read ret=-1",
    "tq_alarm_log_get_shm_pointer ret=0 errno=13", "tq_alarm_log_delete_by_index ret=-1", "db_apply_changes ret=-1",
    "database_dev_get_base_info ret=-1", "cli_log ret=-1",
]


@pytest.fixture(scope="module")
def olt(traced_olt):
    traced_olt.populate()
    return traced_olt


def forms(syntax):
    lines = [typed(words) for words in lines_of(syntax)]
    return list(dict.fromkeys([*lines[:FORMS], *lines[-FORMS:]]))


def calls_of_command(olt, node, line):
    """What the main thread called for it."""
    start = os.path.getsize(olt.trace_path)
    with olt.vty(node) as session:
        session.run(line)
        return [call for call in read_trace(olt.trace_path, start) if call.thread == "main"]


def faults_of(calls):
    """What is wrong with the calls of one command."""
    held = Counter()
    for call in calls:
        if call.op == "semaphore_p" and call.result == "0":
            held[call.values["id"]] += 1
        elif call.op == "semaphore_v":
            held[call.values["id"]] -= 1
        elif re.fullmatch(PAUSES, call.op) and any(held.values()):
            yield f"holds {dict(held)} across a pause"
    if any(held.values()):
        yield f"keeps {dict(held)}"
    if len(of(calls, "raise")) != len(of(calls, "lower")):
        yield "keeps its privileges"


def check(olt, node, lines):
    complaints, before = [], descriptors(olt)
    for line in lines:
        complaints += [f"{line}: {fault}" for fault in faults_of(calls_of_command(olt, node, line))]
        before.update(target for pattern, target, _ in LEAVES_OPEN if re.fullmatch(pattern, line))
        wait_until(lambda: descriptors(olt) <= before, f"{line!r} leaves no descriptor, as of {descriptors(olt) - before},")
        for semaphore in ("board", "alarm"):
            olt.wait_free(semaphore)
    assert not complaints, "\n".join(complaints)


@pytest.mark.parametrize("node", NODES)
def test_a_command_gives_back_what_it_takes_and_holds_nothing_across_a_pause(olt, node):
    check(olt, node, [line for command in COMMANDS if command.node == NODES[node] for line in forms(command.syntax)])


@pytest.mark.parametrize("fault", FAULTS, ids=[fault.split()[0] for fault in FAULTS])
@pytest.mark.parametrize("node", NODES)
def test_a_command_gives_back_what_it_takes_when_the_platform_fails(olt, node, fault):
    olt.faults(fault)
    lines = [forms(command.syntax)[0] for command in COMMANDS if command.node == NODES[node]]
    check(olt, node, [line for line in lines if not any(re.search(pattern, line) for pattern, *_ in SLOW)])
    olt.faults()


def test_the_cpld_is_opened_on_the_bus_that_the_board_names(make_olt):
    cpld = {"bus": 1, "address": "0x40", "logic_version_register": 0, "device_type_register": 1, "power_register": 2,
            "operation_register": 15, "logic_version": "0x21", "device_type": "0x05", "power_status": "0x03"}
    own = make_olt(board={"cpld": cpld}).start(trace=True)
    before = len(own.trace())
    assert own.run("show transceiver")[1] == 0
    opens = of(own.trace()[before:], "misc_cpld_i2c_open")
    assert {call.values["bus"] for call in opens} == {"1"}
