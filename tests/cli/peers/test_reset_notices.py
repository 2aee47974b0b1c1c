# SPDX-License-Identifier: GPL-2.0-or-later
"""What the peers hear of a reset: from the long press of the push-button, and from nothing else."""
import contextlib
import signal
import subprocess

import pytest
from calls import in_order, of
from monitors import calls_of
from olt import OLT, wait_until
from proc_files import bound
from vty import Vty, takes_commands
from zebra_recorder import ZebraRecorder

RESET = bytes.fromhex("000AFE06000000000088")


@pytest.fixture
def zebra(cold_olt):
    recorder = ZebraRecorder(cold_olt)
    yield recorder
    recorder.close()


def start(olt):
    olt.faults()
    olt.start(trace=True)
    wait_until(lambda: "type=10" in olt.boardctl("bus", "clients"), "the daemon is on the bus")


def hold_button(olt):
    olt.boardctl("button", "press")
    wait_until(lambda: len(of(olt.trace(), "pal_system")) == 2, "the long press")


def bus_resets(olt):
    return [line for line in olt.boardctl("bus", "log").splitlines() if line.endswith("client=10/0 command=45 body=")]


def commands(messages):
    return [int.from_bytes(message[8:10], "big") for message in messages]


@pytest.mark.slow
def test_zebra_and_the_bus_hear_of_a_long_press_once_each(cold_olt, zebra):
    start(cold_olt)
    wait_until(zebra.messages, "the daemon's hello")
    hello = zebra.messages()
    assert 136 not in commands(hello)
    hold_button(cold_olt)
    wait_until(lambda: len(zebra.messages()) > len(hello), "zebra's notice")
    assert zebra.messages()[len(hello) :] == [RESET]
    assert zebra.received.endswith(RESET)
    assert len(bus_resets(cold_olt)) == 1
    in_order(cold_olt.trace(), r"sclient_create_header command=45", r"sclient_send_message .*-> 0",
             r"zclient_send_message command=136 ", r"system .*vtysh -c write", r"cli_log id=31 ", r"cli_log id=29 ",
             r"pal_system .*laststart", r"pal_system .*watchfrr")


@pytest.mark.slow
def test_a_long_press_without_zebra_and_bus_goes_on(cold_olt):
    start(cold_olt)
    cold_olt.boardctl("bus", "down")
    hold_button(cold_olt)
    assert "reset_monitor_thread sclient_send_message() failed\r\n" in cold_olt.stdout()
    in_order(cold_olt.trace(), r"sclient_send_message .*-> -1", r"pal_system .*laststart", r"pal_system .*watchfrr")


# The samples come every 50 ms, and the shell that saves the configuration, which needs the event loop, is left out.
PRESS_ONLY = ["nanosleep thread=reset_monitor ret=0 delay_ms=50", "system thread=reset_monitor ret=0"]


@contextlib.contextmanager
def waits_for_a_program(olt):
    go = olt.state / "log" / "go"
    with bound(olt, "/usr/bin/mpstat", "#!/bin/sh\nuntil [ -e /var/log/go ]; do sleep 0.01; done\n", mode=0o755):
        yield "show sys cpu-usage", go.touch


@contextlib.contextmanager
def pressed_while_busy(olt, zebra):
    """Until it is left, the event loop does one command; the press is past its notice to zebra.  Gives the messages
    that zebra had before."""
    olt.faults(*PRESS_ONLY)
    olt.start(trace=True)
    hello = wait_until(zebra.messages, "the daemon's hello")
    with waits_for_a_program(olt) as (command, release), olt.vty() as session:
        session.send(command)
        olt.boardctl("button", "press")
        wait_until(lambda: of(calls_of(olt, "reset_monitor"), "system"), "the press goes on")
        assert zebra.messages() == hello
        yield hello
        release()


def test_a_notice_to_zebra_outlives_a_busy_event_loop(cold_olt, zebra):
    with pressed_while_busy(cold_olt, zebra) as hello:
        pass
    wait_until(lambda: len(zebra.messages()) > len(hello), "zebra's notice")
    assert cold_olt.run("show version")[1] == 0
    assert zebra.messages()[len(hello) :] == [RESET], "once"
    in_order(of(cold_olt.trace(), "zclient_send_message|system"), r"system ", r"zclient_send_message command=136 ")


@pytest.mark.parametrize("number", [signal.SIGTERM, signal.SIGINT], ids=["terminate", "interrupt"])
def test_a_notice_to_zebra_that_waits_is_sent_before_the_end(cold_olt, zebra, number):
    with pressed_while_busy(cold_olt, zebra) as hello:
        cold_olt.send_signal(number)
    assert cold_olt.wait_end() == 0
    assert zebra.messages()[len(hello) :] == [RESET]


def test_a_notice_to_a_zebra_that_is_away_is_tried_once(cold_olt, zebra):
    with pressed_while_busy(cold_olt, zebra):
        zebra.go_away()

    def tries():
        return [call for call in of(cold_olt.trace(), "zclient_send_message") if call.values["command"] == "136"]

    wait_until(tries, "the notice is tried")
    zebra.listen()
    wait_until(zebra.messages, "a new hello")
    assert cold_olt.run("show version")[1] == 0
    assert 136 not in commands(zebra.messages())
    assert len(tries()) == 1


def test_a_short_press_and_reboot_and_reload_notify_nobody(cold_olt, zebra):
    start(cold_olt)
    wait_until(zebra.messages, "the daemon's hello")
    hello = len(zebra.messages())
    cold_olt.run("reboot")
    cold_olt.run("reload")
    cold_olt.boardctl("button", "samples", 2)
    wait_until(lambda: len(of(cold_olt.trace(), "pal_system")) == 6, "the short press")
    assert not of(cold_olt.trace(), "sclient_send_message|sclient_create_header")
    assert len(zebra.messages()) == hello
    assert not bus_resets(cold_olt)


def test_zebra_is_found_again_after_it_went_away(cold_olt, zebra):
    cold_olt.start()
    wait_until(zebra.messages, "the daemon's hello")
    hello = zebra.messages()
    zebra.hang_up()
    wait_until(zebra.messages, "a new hello")
    assert zebra.messages()[0] == hello[0]


@pytest.mark.slow
def test_the_distributions_zebra_survives_the_notice_and_keeps_the_client(fresh_olt):
    console = open(fresh_olt.state / "log" / "zebra-console", "wb")
    peer = subprocess.Popen(fresh_olt.inside(OLT, "zebra"), stdin=subprocess.DEVNULL, stdout=console,
                            stderr=subprocess.STDOUT)
    socket = fresh_olt.state / "run" / "zebra.vty"

    def clients():
        with Vty(str(socket), "enable") as session:
            return session.run("show zebra client summary")[0]

    try:
        wait_until(lambda: takes_commands(socket), "zebra's vty")
        wait_until(lambda: "system" in clients(), "the daemon among zebra's clients")
        fresh_olt.boardctl("button", "press")
        wait_until(lambda: "Restarting system by push-button" in fresh_olt.stdout(), "the long press")
        assert bus_resets(fresh_olt)
        assert peer.poll() is None
        assert "system" in clients()
    finally:
        peer.kill()
        peer.wait()
        console.close()
