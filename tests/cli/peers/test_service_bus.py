# SPDX-License-Identifier: GPL-2.0-or-later
"""The daemon on the service bus: it says who it is, is told to stop and start monitoring, and finds the bus again."""
import pytest
from calls import in_order, of
from monitors import hurried, wait_call
from olt import wait_until

ALL_ON = ("FAN Monitor         : Enable\r\nUSB Monitor         : Enable\r\n"
          "Power Monitor       : Enable\r\nTransceiver Monitor : Enable\r\n")
ALL_OFF = ALL_ON.replace("Enable", "Disable")
HELLO = "command=1 body=000a0000"


@pytest.fixture(scope="module")
def olt(traced_olt):
    wait_connected(traced_olt)
    return traced_olt


@pytest.fixture(autouse=True)
def as_found(olt):
    olt.boardctl("bus", "up")
    wait_connected(olt)
    yield
    olt.faults()
    for monitor in ("fan", "usb", "power", "transceiver"):
        olt.run(f"{monitor} monitor", "diagnose")


def clients(olt):
    return olt.boardctl("bus", "clients")


def wait_connected(olt):
    wait_until(lambda: clients(olt) == "type=10 instance=0\n", "the daemon is on the bus")


def switches(olt):
    return olt.run("show diag monitor", "diagnose")[0]


def oper_calls(olt, since):
    return [int(call.values["on"]) for call in of(olt.trace()[since:], "misc_cpld_oper_set")]


def test_the_client_is_made_and_started_before_the_zebra_client(olt):
    in_order(olt.trace(), r"frr_init", r"sclient_new instance=0 -> ok", r"sclient_init type=10 instance=0", r"zclient_new",
             r"zclient_init route_type=32 instance=0")


def test_it_says_its_type_and_instance_and_nothing_else(olt):
    assert {line.split(maxsplit=3)[3] for line in olt.boardctl("bus", "log").splitlines()} == {HELLO}


@pytest.mark.parametrize("value", [1, 7, 0x100, 0x80000000, 0xFFFFFFFF])
def test_any_value_but_0_switches_all_monitors_off_then_tells_the_board(olt, value):
    before = len(olt.trace())
    assert olt.boardctl("bus", "send", value) == "sent to 1\n"
    wait_until(lambda: oper_calls(olt, before) == [0], "the board is told")
    assert switches(olt) == ALL_OFF


def test_0_switches_all_monitors_on_whatever_was_switched_off_by_hand(olt):
    olt.run("no fan monitor", "diagnose")
    olt.run("no transceiver monitor", "diagnose")
    before = len(olt.trace())
    olt.boardctl("bus", "send", 0)
    wait_until(lambda: oper_calls(olt, before) == [1], "the board is told")
    assert switches(olt) == ALL_ON


def test_the_switches_come_before_the_board_is_told(olt):
    """The event loop waits while the board is told; the power monitor is at work meanwhile."""
    olt.faults(*hurried("power_monitor"), "misc_cpld_oper_set nth=2 delay_ms=3000")
    mark = len(olt.trace())
    olt.boardctl("bus", "send", 7)
    wait_until(lambda: oper_calls(olt, mark) == [0], "the board is told to rest")
    wait_call(olt, "power_monitor", "nanosleep", since=len(olt.trace()), count=2)
    before = len(olt.trace())
    olt.boardctl("bus", "send", 0)
    wait_until(lambda: oper_calls(olt, before) == [1], "the board is told")
    in_order(olt.trace()[before:], "misc_cpld_i2c_power_state_get ", "misc_cpld_oper_set on=1")


def test_switches_change_although_the_board_cannot_be_told(olt):
    olt.faults("misc_cpld_oper_set ret=-1 errno=5 count=0 nth=1")
    olt.boardctl("bus", "send", 7)
    wait_until(lambda: switches(olt) == ALL_OFF, "the switches are off")
    olt.boardctl("bus", "send", 0)
    wait_until(lambda: switches(olt) == ALL_ON, "the switches are on")


def test_a_message_too_short_for_its_value_changes_nothing(olt):
    before = len(olt.trace())
    for body in ("", "07", "000007"):
        olt.boardctl("bus", "raw", f"{4 + len(body) // 2:04x}002e{body}")
    olt.boardctl("bus", "send", 0)  # the same connection is still in step
    wait_until(lambda: oper_calls(olt, before) == [1], "the message behind")
    assert switches(olt) == ALL_ON
    assert "backtrace" not in olt.log().lower()


def test_a_message_in_pieces_is_put_together(olt):
    before = len(olt.trace())
    for piece in ("00", "08002e00", "000000", "0008002e00000000"):
        olt.boardctl("bus", "raw", piece)
    wait_until(lambda: oper_calls(olt, before) == [1, 1], "both messages")


def test_what_follows_the_value_is_left_alone(olt):
    before = len(olt.trace())
    olt.boardctl("bus", "raw", "000c002e0000000100000000")
    wait_until(lambda: oper_calls(olt, before) == [0], "the board is told once")


@pytest.mark.parametrize("garbage", ["0000", "00030000", "0001ffffffff"])
def test_a_bus_that_breaks_the_framing_is_left_and_found_anew(olt, garbage):
    hellos = olt.boardctl("bus", "log").count(HELLO)
    olt.boardctl("bus", "raw", garbage if len(garbage) > 4 else garbage + "0000")
    wait_until(lambda: olt.boardctl("bus", "log").count(HELLO) == hellos + 1, "a new connection")
    wait_connected(olt)
    assert switches(olt) == ALL_ON


def test_a_bus_that_goes_away_is_found_again(olt):
    descriptors = olt.settled_fds()
    for _ in range(2):
        olt.boardctl("bus", "down")
        wait_until(lambda: len(olt.fds()) < len(descriptors), "the daemon gives its socket up")
        assert olt.run("show version")[1] == 0
        olt.boardctl("bus", "up")
        wait_connected(olt)
    olt.wait_no_more_fds(descriptors)
    before = len(olt.trace())
    olt.boardctl("bus", "send", 7)
    wait_until(lambda: oper_calls(olt, before) == [0], "the board is told")


def test_looking_for_an_absent_bus_costs_nothing_to_speak_of(olt):
    olt.boardctl("bus", "down")

    def ticks():
        return sum(map(int, open(f"/proc/{olt.pid}/stat").read().rsplit(")", 1)[1].split()[11:13]))

    before, calls = ticks(), len(olt.trace())
    wait_until(lambda: len([1 for call in olt.trace()[calls:] if call.thread == "reset_monitor"]) >= 10, "two seconds or so")
    assert ticks() - before <= 20  # of 10 ms


def test_without_a_client_the_daemon_runs(cold_olt):
    cold_olt.faults("sclient_new ret=0")
    cold_olt.start(trace=True)
    assert not of(cold_olt.trace(), "sclient_init")
    assert cold_olt.run("show version")[1] == 0
    assert cold_olt.boardctl("bus", "clients") == "none\n"


def test_a_daemon_that_starts_before_the_bus_finds_it(cold_olt):
    cold_olt.boardctl("bus", "down")
    cold_olt.start()
    cold_olt.boardctl("bus", "up")
    wait_connected(cold_olt)
