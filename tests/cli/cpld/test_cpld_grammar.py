# SPDX-License-Identifier: GPL-2.0-or-later
"""What is none of the board's commands, in a node or at all, is rejected and does nothing."""
import pytest
from calls import of


@pytest.fixture(scope="module")
def olt(make_olt):
    return make_olt().start(trace=True)


@pytest.mark.parametrize("node, command", [
    ("diagnose", "pon led on 9"), ("diagnose", "pon led on 0"), ("diagnose", "sfp power on 7"),
    ("diagnose", "pon tx on x"), ("diagnose", "system led off"), ("diagnose", "fan mode on"),
    ("diagnose", "fan speed 1"), ("enable", "reboot"), ("config", "usb led on"), ("enable", "show sys power"),
    ("diagnose", "show sys power xml"), ("config", "show optical transceiver"), ("config", "show pon optical transceiver"),
    ("diagnose", "show pon optical transceiver"), ("gpon 0/1", "show optical transceiver"),
    ("config", "show optical transceiver interface gpon 1"), ("config", "show optical transceiver interface ge 0/1"),
    ("enable", "show optical transceiver interface gpon 0/1"),
    ("config", "cpld restore"), ("diagnose", "cpld upgrade tftp f.jed"),
    ("diagnose", "cpld upgrade tftp f.jed host"), ("diagnose", "cpld upgrade tftp f.jed 10.0.0.256"),
    ("diagnose", "cpld upgrade tftp f.jed 1::2::3"), ("diagnose", "cpld upgrade ftp f.jed 10.0.0.1 joe"),
    ("diagnose", "cpld upgrade usb"), ("config", "cpld erase")])
def test_what_is_no_command_there_is_rejected(olt, node, command):
    before = len(olt.trace())
    assert olt.run(command, node)[1] != 0
    assert not [call for call in of(olt.trace()[before:], "misc_cpld_.*") if call.thread == "main"]
