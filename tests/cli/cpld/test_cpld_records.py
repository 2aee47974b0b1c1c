# SPDX-License-Identifier: GPL-2.0-or-later
"""Which ports of the board records the commands and the start switch."""
import pytest
from calls import in_order, of
from cpld import PON, SFP, board_session, record, run, steps
from traced_fixtures import no_faults  # noqa: F401


@pytest.fixture(scope="module")
def olt(make_olt):
    """A board with a record of every kind."""
    board = make_olt(board={"records": [
        record(1, PON, word8=1, pon1=[5]),  # takes no register commands
        record(2, PON, pon1=[{"port": 0}, 1, {"port": 2, "in_use": False}], pon2=[1, 3]),
        record(3, PON, word108=5, pon1=[6]),  # not in service
        record(4, PON | SFP, pon1=[9, 31], sfp=[1]),
        record(5, SFP, word8=1, sfp=[2, {"port": 4, "present": False}]),
        record(6, SFP, word108=0, sfp=[3]),
        record(12, SFP, sfp=[6, {"port": 5, "in_use": False}]),
    ]})
    board.boardctl("reg", "plain", "on")
    board.boardctl("reg", "set", 12, 0)
    board.faults()
    return board.start(trace=True)


def start_calls(olt):
    calls = olt.trace()
    end = [call.op for call in calls].index("frr_config_fork")
    return calls[:end]


def test_the_start_lights_the_system_led_and_powers_every_usable_sfp_port(olt):
    words = steps(start_calls(olt))
    begin = words.index("raise cpld_system_led_on") - 1
    # no semaphore around the second part, and the record that takes no register commands counts
    assert words[begin:] == [
        *board_session("cpld_system_led_on", "W(13,0x1)"),
        "raise cpld_init", "open", "lower",
        "R(12)", "W(12,0x1)", "R(12)", "W(12,0x3)", "R(12)", "W(12,0x23)",
        "close"]
    assert int(olt.boardctl("reg", "get", 13), 0) == 1


def test_the_start_switches_come_after_the_commands_are_installed(olt):
    in_order(start_calls(olt), r"install_element .*cmd=debug_cpld_cmd", r"raise .*cpld_system_led_on", r"raise .*cpld_init",
             r"install_element .*cmd=transceiver_show_cmd")


def test_pon_ports_of_all_records_in_service_that_take_commands_are_switched(olt):
    olt.boardctl("reg", "set", 10, 0)
    # entries 0, 1, 3 of one record; 9 and 31 of another, which have no bit in the register
    work = ["R(10)", "W(10,0x0)", "R(10)", "W(10,0x1)", "R(10)", "W(10,0x5)", "R(10)", "W(10,0x5)", "R(10)", "W(10,0x5)"]
    assert run(olt, "pon led on") == ("", 0, board_session("pon_led", *work))


def test_sfp_ports_of_a_record_that_takes_no_commands_are_left_alone(olt):
    olt.boardctl("reg", "set", 12, 0xFF)
    work = ["R(12)", "W(12,0xfe)", "R(12)", "W(12,0xde)"]
    assert run(olt, "sfp power off") == ("", 0, board_session("sfp_power_config", *work))


def test_the_walk_ends_at_the_first_record_that_cannot_be_read(olt):
    olt.boardctl("reg", "set", 10, 0)
    olt.faults("board_mmap_read nth=3 ret=-1 thread=main")
    before = len(olt.trace())
    assert run(olt, "pon led on") == ("", 0, board_session("pon_led"))
    assert [int(call.values["index"]) for call in of(olt.trace()[before:], "board_mmap_read")] == [0, 1, 2]


def test_all_13_records_are_looked_at(olt):
    before = len(olt.trace())
    run(olt, "sfp power on")
    assert [int(call.values["index"]) for call in of(olt.trace()[before:], "board_mmap_read")] == list(range(13))


def test_on_a_board_without_such_ports_nothing_is_accessed(make_olt):
    bare = make_olt(board={"records": []})
    bare.faults()
    bare.start(trace=True)
    assert run(bare, "sfp power on") == ("", 0, board_session("sfp_power_config"))
    assert run(bare, "pon tx off") == ("", 0, board_session("pon_tx_config"))


def test_a_start_without_led_goes_on_to_the_sfp_ports(olt, cold_olt):
    words = steps(start_calls(olt))
    opens_before = words[: words.index("raise cpld_system_led_on")].count("open")
    cold_olt.boardctl("reg", "plain", "on")
    cold_olt.boardctl("reg", "set", 12, 0)
    cold_olt.faults(f"misc_cpld_i2c_open nth={opens_before + 1} ret=-1 errno=5 thread=main")
    cold_olt.start(trace=True)
    words = steps(start_calls(cold_olt))
    begin = words.index("raise cpld_system_led_on") - 1
    assert words[begin : begin + 8] == ["take", "raise cpld_system_led_on", "open", "give", "lower", "raise cpld_init",
                                        "open", "lower"]
    assert "W(13,0x1)" not in words and words[-2:] == ["W(12,0xf)", "close"]


def test_a_start_without_cpld_is_a_start(cold_olt):
    cold_olt.faults("misc_cpld_i2c_open ret=-1 errno=5 thread=main")
    cold_olt.start(trace=True)
    words = steps(start_calls(cold_olt))
    begin = words.index("raise cpld_system_led_on") - 1
    assert words[begin:] == ["take", "raise cpld_system_led_on", "open", "give", "lower", "raise cpld_init", "open", "lower"]
    assert cold_olt.run("show sys power")[1] == 1
    cold_olt.wait_free("board")
