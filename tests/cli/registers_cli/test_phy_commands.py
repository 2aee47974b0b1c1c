# SPDX-License-Identifier: GPL-2.0-or-later
"""Registers of the Ethernet PHYs, by hand: what is asked of the PHY library, in which order, and what is shown."""
import pytest
from register_commands import board_semaphore_calls, run
from traced_fixtures import olt  # noqa: F401



@pytest.fixture(autouse=True)
def restored(olt):
    """Each test finds the PHYs as after power-on and leaves no faults."""
    yield
    olt.faults()
    with olt.vty("diagnose") as session:
        for phy in (1, 2):
            olt.boardctl("phy", "link", "aux", phy, "up")
            session.run(f"phy reset {phy}")


def read(phy, reg, value=None):
    return f"read {phy} {reg:#x}" + ("" if value is None else f" = {value:#x}")


@pytest.mark.parametrize("node", ["enable", "config"])
def test_phy_commands_are_known_in_diagnose_only(olt, node):
    assert olt.run("phy info 1", node)[1] != 0


@pytest.mark.parametrize("command", ["phy read 1 2", "phy read 0x1 0x2", "phy read 1 2 ieee", "phy read 01 02 i"])
def test_a_register_is_read_directly(olt, command):
    olt.boardctl("phy", "set", "aux", 1, 2, 0x0BEE)
    assert run(olt, command) == ("phy 0x1 register 0x2 value 0xbee\r\n", 0,
                                 ["raise debug_phy_read", read(1, 2, 0xBEE), "lower"])


@pytest.mark.parametrize("number", ["1F", "0x1F", "1f", "0X1f"])
def test_numbers_are_hexadecimal_with_or_without_0x(olt, number):
    olt.boardctl("phy", "set", "aux", 1, 0x18, 0x1F)
    text, rc, steps = run(olt, f"phy read {number} {number}")
    assert (text, rc) == ("phy 0x1f register 0x1f value 0xffff\r\n", 0), "no PHY at that address"
    assert steps == ["raise debug_phy_read", read(31, 0x1F, 0xFFFF), "lower"]
    assert run(olt, f"phy read 1 18 clause45 {number}")[2][1].startswith("read 1 0x401f0018")
    assert run(olt, f"phy write 1 18 {number}")[2][1] == "write 1 0x18 0x1f"


def test_an_rdb_register_is_read_through_its_window(olt):
    olt.boardctl("phy", "set", "aux", 1, 0x1E, 0xA5)
    olt.boardctl("phy", "set", "aux", 1, 0x1F, 0x1234)
    olt.boardctl("phy", "set", "aux", 1, 0x1E, 0)
    assert run(olt, "phy read 1 a5 rdb") == (
        "phy 0x1 register 0xa5 value 0x1234\r\n", 0,
        ["raise debug_phy_read", "write 1 0x1e 0xa5", read(1, 0x1F, 0x1234), "lower"])


@pytest.mark.parametrize("words, combined", [
    ("8010 clause45 1", 0x40018010), ("8010 clause45 0x1F", 0x401F8010), ("FFFF clause45 1e", 0x401EFFFF),
    ("18010 clause45 3", 0x40038010)])
def test_a_clause_45_register_is_read_and_shown_by_its_combined_number(olt, words, combined):
    olt.boardctl("phy", "set", "aux", 1, combined, 0xBEE)
    assert run(olt, f"phy read 1 {words}") == (
        f"phy 0x1 register {combined:#x} value 0xbee\r\n", 0,
        ["raise debug_phy_read", read(1, combined, 0xBEE), "lower"])


@pytest.mark.parametrize("mode, reg", [("", 2), (" rdb", 2), (" clause45 1", 0x40010002)])
def test_a_register_that_cannot_be_read_is_shown_as_0(olt, mode, reg):
    olt.faults("misc_phy_read ret=-1 errno=5")
    assert run(olt, "phy read 1 2" + mode)[:2] == (f"phy 0x1 register {reg:#x} value 0x0\r\n", 0)


def test_a_register_that_the_bus_does_not_give_is_shown_as_0(olt):
    olt.boardctl("fault", "add", "phy_read", "errno=5", "count=1")
    assert run(olt, "phy read 1 2")[:2] == ("phy 0x1 register 0x2 value 0x0\r\n", 0)


def test_a_write_is_one_write_and_says_nothing(olt):
    assert run(olt, "phy write 1 18 3") == ("", 0, ["raise debug_phy_write", "write 1 0x18 0x3", "lower"])
    assert olt.boardctl("phy", "get", "aux", 1, 0x18) == "0x0003\n"


def test_a_failed_write_says_nothing(olt):
    olt.faults("misc_phy_write ret=-1 errno=5")
    assert run(olt, "phy write 1 18 3")[:2] == ("", 0)


@pytest.mark.parametrize("words", ["phy read", "phy read 1", "phy write 1 2", "phy info", "phy reset", "phy dump",
                                   "phy read 1 2 clause45"])
def test_a_command_without_all_its_numbers_is_incomplete(olt, words):
    text, rc, steps = run(olt, words)
    assert rc == 4 and steps == []


@pytest.mark.parametrize("words", ["phy read 1 2 mdio", "phy dump 1 mdio", "phy read 1 2 ieee 1"])
def test_an_unknown_mode_is_no_command(olt, words):
    text, rc, steps = run(olt, words)
    assert rc == 2 and steps == []


@pytest.mark.parametrize("phy, shown", [(1, "PHY 0x01: OUI = 0x201F4, Model = 0x11, Rev = 0x03\n"),
                                        (2, "PHY 0x02: OUI = 0x201F4, Model = 0x16, Rev = 0x01\n")])
def test_identity_is_shown_in_a_line_that_ends_with_a_line_feed(olt, phy, shown):
    text, rc, steps = run(olt, f"phy info {phy}")
    assert (text, rc, steps) == (shown, 0, ["raise debug_phy_info", f"info {phy}", "lower"])


def test_identity_that_cannot_be_read_shows_nothing(olt):
    assert run(olt, "phy info 9")[:2] == ("", 0), "no PHY at that address"
    for failure in (-1, 1):
        olt.faults(f"misc_phy_info ret={failure}")
        assert run(olt, "phy info 1")[:2] == ("", 0)


def test_a_reset_is_one_call_and_says_nothing(olt):
    olt.boardctl("phy", "set", "aux", 1, 4, 1)
    assert run(olt, "phy reset 1") == ("", 0, ["raise debug_phy_reset", "reset 1", "lower"])
    assert olt.boardctl("phy", "get", "aux", 1, 4) == "0x0de1\n", "as after power-on"
    olt.faults("misc_phy_reset ret=-1 errno=110")
    assert run(olt, "phy reset 1")[:2] == ("", 0)


@pytest.mark.parametrize("mode", ["", " ieee"])
def test_a_dump_is_the_standards_sixteen_registers_on_one_line(olt, mode):
    values = [0x1000 + reg for reg in range(16)]
    for reg, value in enumerate(values):
        olt.boardctl("phy", "set", "aux", 2, reg, value)
    text, rc, steps = run(olt, "phy dump 2" + mode)
    assert (text, rc) == ("PHY 0x2\r\n00: " + "".join(f"{value:#06x} " for value in values) + "\r\n", 0)
    assert steps == ["raise debug_phy_dump", *(read(2, reg, value) for reg, value in enumerate(values)), "lower"]


def test_a_dump_shows_0_for_a_register_that_cannot_be_read(olt):
    for reg in range(16):
        olt.boardctl("phy", "set", "aux", 2, reg, 0xABC)
    olt.faults("misc_phy_read nth=3 ret=-1")
    text, rc = olt.run("phy dump 2", "diagnose")
    assert (text, rc) == ("PHY 0x2\r\n00: " + "0x0abc " * 2 + "0x0000 " + "0x0abc " * 13 + "\r\n", 0)


@pytest.mark.parametrize("mode", ["rdb", "clause45"])
def test_dumps_of_the_other_modes_are_a_heading_and_no_access(olt, mode):
    assert run(olt, f"phy dump 1 {mode}") == ("PHY 0x1\r\n", 0, [])


def test_a_dump_shows_the_board_s_phy_and_its_link(olt):
    linked = ("PHY 0x1\r\n00: 0x1140 0x796d 0x0807 0xd113 0x0de1 0xcde1 0x000d 0x0000 "
              "0x0000 0x0300 0x3c00 0x0000 0x0000 0x0000 0x0000 0x3000 \r\n")
    assert olt.run("phy dump 1", "diagnose") == (linked, 0)
    olt.boardctl("phy", "link", "aux", 1, "down")
    text, _ = olt.run("phy dump 1", "diagnose")
    assert text.split()[4] == "0x7949" and text.split()[8] == "0x0000", "no link, no partner"
    olt.boardctl("phy", "link", "aux", 1, "up")
    assert olt.run("phy read 1 1", "diagnose")[0].endswith("value 0x7969\r\n"), "it has been away"
    assert olt.run("phy dump 1", "diagnose") == (linked, 0)


@pytest.mark.parametrize("words, number, value", [
    ("a5 rdb", 0xA5, 0x0C31), ("8000 clause45 1e", 0x401E8000, 0x0102), ("2 clause45 1", 0x40010002, 0x0807),
    ("18", 0x18, 0x0400), ("2 clause45 2", 0x40020002, 0xFFFF)])
def test_the_board_describes_further_registers(olt, words, number, value):
    assert olt.run(f"phy read 1 {words}", "diagnose") == (f"phy 0x1 register {number:#x} value {value:#x}\r\n", 0)


def test_debugging_is_switched_in_the_library(olt):
    assert run(olt, "debug phy") == ("", 0, ["raise debug_phy", "debug 1", "lower"])
    assert olt.run("show debugging", "diagnose")[0].startswith("PHY")
    assert run(olt, "no debug phy") == ("", 0, ["raise debug_phy", "debug 0", "lower"])
    assert olt.run("show debugging", "diagnose") == ("", 0)


@pytest.mark.parametrize("command", ["phy read 1 2", "phy read 1 2 rdb", "phy read 1 2 clause45 1", "phy write 1 18 0",
                                     "phy info 1", "phy reset 1", "phy dump 1", "phy dump 1 rdb", "phy dump 1 clause45",
                                     "debug phy", "no debug phy"])
def test_the_boards_semaphore_is_left_alone(olt, command):
    assert board_semaphore_calls(olt, command) == []
