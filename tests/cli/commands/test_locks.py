# SPDX-License-Identifier: GPL-2.0-or-later
"""What every command leaves behind: both semaphores free, privileges lowered, no descriptor more than before."""
import pytest
from calls import of
from olt import wait_until
from traced_fixtures import no_faults, olt  # noqa: F401

COMMANDS = [
    ("config", "show alarm-log"),
    ("config", "show alarm-log level major"),
    ("config", "show alarm-log head 3"),
    ("config", "show alarm-log tail 3"),
    ("config", "clear alarm-log level info"),
    ("config", "clear syslog"),
    ("config", "alarm-log debug send id 77 message x"),
    ("config", "show version"),
    ("config", "show version json"),
    ("config", "interface gpon 0/3"),
    ("config", "interface xgpon 0/3"),
    ("config", "show transceiver"),
    ("config", "show transceiver json"),
    ("config", "show transceiver detail"),
    ("config", "show transceiver diagnosis"),
    ("diagnose", "show debugging"),
    ("diagnose", "show diag monitor"),
    ("diagnose", "no fan monitor"),
    ("diagnose", "fan monitor"),
    ("diagnose", "system led on"),
    ("diagnose", "pon led on"),
    ("diagnose", "pon power off 8"),
    ("diagnose", "sfp power on"),
    ("diagnose", "fan speed low"),
    ("diagnose", "show pon tx"),
    ("diagnose", "show logic version"),
    ("diagnose", "cpld upgrade usb none.jed"),
    ("diagnose", "cpld restore"),
    ("diagnose", "cpld erase"),
    ("config", "show sys power"),
    ("config", "show sys power json"),
    ("config", "reload"),
]
PAUSES = "sleep|usleep|nanosleep"


def balance(olt, node, command):
    """Runs it and returns its calls of the main thread, after a look at what it left."""
    with olt.vty(node) as session:
        before, open_before = len(olt.trace()), olt.settled_fds()
        session.run(command)
        calls = [call for call in olt.trace()[before:] if call.thread == "main"]
        olt.wait_no_more_fds(open_before)
    for semaphore in ("board", "alarm"):  # a monitor may have it for a moment
        wait_until(lambda: olt.sem_value(semaphore) == 1, f"the {semaphore} semaphore is free")
    assert len(of(calls, "raise")) == len(of(calls, "lower"))
    return calls


@pytest.mark.parametrize("node, command", COMMANDS)
def test_a_command_gives_back_what_it_takes(olt, node, command):
    balance(olt, node, command)


@pytest.mark.parametrize("fault", ["misc_cpld_i2c_open ret=-1 errno=5", "misc_cpld_i2c_read_byte ret=-1 errno=5",
                                   "misc_cpld_channel_select ret=-1 errno=5", "misc_i2c_read ret=-1 errno=5",
                                   "board_mmap_read ret=-1", "tq_alarm_log_delete_by_index ret=-1",
                                   "database_dev_get_base_info ret=-1", "cli_log ret=-1"])
@pytest.mark.parametrize("node, command", COMMANDS)
def test_a_command_gives_it_back_when_the_platform_fails(olt, node, command, fault):
    olt.faults(fault)
    balance(olt, node, command)


@pytest.mark.parametrize("node, command", COMMANDS)
def test_no_semaphore_is_held_across_a_pause(olt, node, command):
    held = 0
    for call in balance(olt, node, command):
        if call.op == "semaphore_p":
            held += 1
        elif call.op == "semaphore_v":
            held -= 1
        elif call.op in PAUSES.split("|"):
            assert held == 0


def test_the_cpld_is_opened_on_the_bus_that_the_board_names(make_olt):
    cpld = {"bus": 1, "address": "0x40", "logic_version_register": 0, "device_type_register": 1, "power_register": 2,
            "operation_register": 15, "logic_version": "0x21", "device_type": "0x05", "power_status": "0x03"}
    own = make_olt(board={"cpld": cpld}).start(trace=True)
    before = len(own.trace())
    assert own.run("show transceiver")[1] == 0
    opens = of(own.trace()[before:], "misc_cpld_i2c_open")
    assert {call.values["bus"] for call in opens} == {"1"}
