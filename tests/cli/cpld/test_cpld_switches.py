# SPDX-License-Identifier: GPL-2.0-or-later
"""Switching the board by hand: what is written, in which sessions, and what a failing CPLD leaves."""
import threading

import pytest
from semaphore_holder import board_held
from calls import of
from cpld import board_session, refused, run
from olt import wait_until

# command, label, register, value written
SINGLE = [
    ("system led on", "cpld_system_led_on", 13, 1),
    ("usb led on", "usb_led", 6, 1),
    ("usb led off", "usb_led", 6, 0),
    ("fan mode open", "fan_mode", 4, 1),
    ("fan mode close", "fan_mode", 4, 0),
    ("fan speed low", "fan_speed", 5, 1),
    ("fan speed medium", "fan_speed", 5, 2),
    ("fan speed high", "fan_speed", 5, 3),
]
# command without its state, label, register
PORTS = [
    ("pon led", "pon_led", 10),
    ("pon power", "pon_power_config", 11),
    ("pon tx", "pon_tx_config", 8),
    ("sfp power", "sfp_power_config", 12),
]
SHOWS = [
    ("show pon led", "show_pon_led"), ("show pon power", "show_pon_power"), ("show pon tx", "show_pon_tx"),
    ("show sfp power", "show_sfp_power"), ("show logic version", "show_logic_version"),
    ("show device type", "show_device_type"), ("show sys power", "show_system_power"),
    ("show sys power json", "show_system_power"),
]
LABELS = ([(command, label) for command, label, _, _ in SINGLE] + SHOWS
          + [(f"{words} on", label) for words, label, _ in PORTS]
          + [(f"{words} off 1", label) for words, label, _ in PORTS])


@pytest.fixture(scope="module")
def olt(traced_olt):
    for monitor in ("fan", "usb", "power"):
        traced_olt.run(f"no {monitor} monitor", "diagnose")
    traced_olt.boardctl("reg", "plain", "on")
    return traced_olt


@pytest.fixture(autouse=True)
def no_faults(olt):
    yield
    olt.faults()
    olt.wait_free("board")


@pytest.mark.parametrize("command, label, register, value", SINGLE)
def test_a_switch_writes_its_register_once(olt, command, label, register, value):
    assert run(olt, command) == ("", 0, board_session(label, f"W({register},{value:#x})"))
    assert int(olt.boardctl("reg", "get", register), 0) == value


@pytest.mark.parametrize("words, label, register", PORTS)
@pytest.mark.parametrize("state, port, before, after", [
    ("off", 3, 0xFF, 0xFB), ("on", 1, 0x00, 0x01), ("on", 6, 0x55, 0x75), ("off", 1, 0x00, 0x00), ("on", 5, 0xFF, 0xFF)])
def test_one_port_is_a_read_and_a_write_that_keep_the_others(olt, words, label, register, state, port, before, after):
    olt.boardctl("reg", "set", register, before)
    assert run(olt, f"{words} {state} {port}") == ("", 0, board_session(label, f"R({register})", f"W({register},{after:#x})"))


def test_port_8_is_the_highest_bit(olt):
    olt.boardctl("reg", "set", 10, 0)
    assert run(olt, "pon led on 8")[2] == board_session("pon_led", "R(10)", "W(10,0x80)")


@pytest.mark.parametrize("words, label, register", PORTS)
def test_without_a_port_all_are_switched_one_by_one_under_one_bracket(olt, words, label, register):
    count = 4 if words.startswith("sfp") else 8
    olt.boardctl("reg", "set", register, 0)
    work, value = [], 0
    for port in range(count):
        value |= 1 << port
        work += [f"R({register})", f"W({register},{value:#x})"]
    assert run(olt, f"{words} on") == ("", 0, board_session(label, *work))
    assert run(olt, f"{words} off")[:2] == ("", 0)
    assert int(olt.boardctl("reg", "get", register), 0) == 0


@pytest.mark.parametrize("command, label", LABELS)
def test_without_a_cpld_a_command_is_a_warning_without_a_word(olt, command, label):
    olt.faults("misc_cpld_i2c_open ret=-1 errno=6 thread=main")
    assert run(olt, command) == ("", 1, refused(label))


@pytest.mark.parametrize("command, label", LABELS)
def test_the_board_is_taken_before_privileges_are_raised_and_all_is_given_back(olt, command, label):
    steps = run(olt, command)[2]
    assert steps[:4] == ["take", f"raise {label}", "open", "lower"]
    assert steps[-2:] == ["close", "give"]
    for word in ("take", "give", "open", "close", "lower"):
        assert steps.count(word) == 1


@pytest.mark.parametrize("fault", ["misc_cpld_i2c_read_byte ret=-1 errno=5", "misc_cpld_i2c_set_byte ret=-1 errno=5"])
@pytest.mark.parametrize("command", ["pon led on 3", "pon led on", "sfp power off", "usb led on", "show pon led"])
def test_a_register_that_does_not_answer_is_no_failure(olt, fault, command):
    olt.faults(fault + " count=0 nth=1 thread=main")
    _, rc, steps = run(olt, command)
    assert rc == 0 and steps[-2:] == ["close", "give"]


def test_a_register_that_cannot_be_read_is_written_as_if_it_were_0(olt):
    olt.boardctl("reg", "set", 10, 0xFF)
    olt.faults("misc_cpld_i2c_read_byte ret=-1 errno=5 thread=main")
    assert run(olt, "pon led on 3")[2] == board_session("pon_led", "R(10)", "W(10,0x4)")


def test_no_command_leaves_a_descriptor(olt):
    with olt.vty("diagnose") as session:
        before = olt.settled_fds()
        for command, _ in LABELS:
            session.run(command)
        olt.wait_no_more_fds(before)


def test_switching_the_fans_by_hand_does_not_touch_their_settings(olt):
    before = olt.run("show fan")
    for command in ("fan mode close", "fan speed high"):
        olt.run(command, "diagnose")
    assert olt.run("show fan") == before


def test_a_command_waits_for_whoever_holds_the_board(olt):
    """Another user of the box's board holds the semaphore; the register is left alone until it is free."""
    before = len(olt.trace())
    with board_held(olt) as give_back, olt.vty("diagnose") as session:
        session.send("usb led on")
        wait_until(lambda: olt.sem_waiters("board") == 1, "the daemon waits")
        assert not of(olt.trace()[before:], "misc_cpld_i2c_set_byte")
        give_back()
        assert session.receive() == ("", 0)
    assert of(olt.trace()[before:], "misc_cpld_i2c_set_byte")


def test_privileges_are_raised_while_the_cpld_is_opened_and_at_no_other_time(olt):
    assert olt.root_threads() == []
    olt.faults("misc_cpld_i2c_open delay_ms=700 thread=main")
    seen = []
    with olt.vty("diagnose") as session:
        command = threading.Thread(target=lambda: seen.append(session.run("usb led on")))
        command.start()
        wait_until(lambda: olt.root_threads() == ["diagd"], "raised privileges")
        command.join()
    assert seen == [("", 0)]
    assert olt.root_threads() == []
    olt.faults("misc_cpld_i2c_set_byte delay_ms=700 thread=main")
    before = len(olt.trace())
    with olt.vty("diagnose") as session:
        session.send("usb led on")
        wait_until(lambda: of(olt.trace()[before:], "misc_cpld_i2c_open"), "the CPLD is open")
        assert olt.root_threads() == []  # the work itself needs none
        session.receive()
