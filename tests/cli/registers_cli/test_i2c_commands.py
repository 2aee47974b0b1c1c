# SPDX-License-Identifier: GPL-2.0-or-later
"""Raw I2C devices, by hand: what is asked of the I2C library, in which order, and what is shown."""
import pytest
from olt import PROJECT, wait_until
from register_commands import board_semaphore_calls, run
from traced_fixtures import no_faults  # noqa: F401

CPLD = "60"  # on bus 0: a device of 256 bytes, here with values of the test's own from register 0x80 on
FIRST = 0x80


def value(k):
    return (0xA5 + 7 * k) & 0xFF


@pytest.fixture(scope="module")
def olt(traced_olt):
    for k in range(64):
        traced_olt.boardctl("reg", "set", FIRST + k, value(k))
    return traced_olt


def shown(values):
    """As the command shows bytes: two line ends, sixteen values to a line, a line end."""
    lines = ["".join(f"0x{value:04x} " for value in values[at : at + 16]) for at in range(0, len(values), 16)]
    return "\r\n" + "".join("\r\n" + line for line in lines) + "\r\n"


@pytest.mark.parametrize("node", ["enable", "config"])
def test_i2c_commands_are_known_in_diagnose_only(olt, node):
    assert olt.run("i2c 0 read 60 80", node)[1] != 0


@pytest.mark.parametrize("command", ["i2c 4 read 50 0", "i2c 4 write 50 0 0", "i2c -1 read 50 0", "i2c x read 50 0"])
def test_there_are_four_buses(olt, command):
    text, rc, steps = run(olt, command)
    assert rc == 2 and steps == []


@pytest.mark.parametrize("command", ["i2c 0 read", "i2c 0 read 50", "i2c 0 write 50 0", "i2c 0"])
def test_a_command_without_all_its_numbers_is_incomplete(olt, command):
    text, rc, steps = run(olt, command)
    assert rc == 4 and steps == []


@pytest.mark.parametrize("command", ["i2c 0 read 60 80", "i2c 0 read 0x60 0x80 1", "i2c 00 read 60 80"])
def test_without_a_length_one_byte_is_read(olt, command):
    assert run(olt, command) == ("\r\n\r\n0x00a5 \r\n", 0,
                                 ["raise debug_i2c_read", "open 0", "lower", "read 0x60 0x80 1 0 = a5"])


@pytest.mark.parametrize("length", [2, 15, 16, 17, 32, 33, 64])
def test_sixteen_bytes_are_shown_on_a_line(olt, length):
    values = [value(k) for k in range(length)]
    assert run(olt, f"i2c 0 read {CPLD} 80 {length}")[:2] == (shown(values), 0)


def test_a_read_of_seventeen_is_a_line_of_sixteen_and_a_line_of_one(olt):
    text, _ = olt.run(f"i2c 0 read {CPLD} 80 17", "diagnose")
    lines = text.split("\r\n")
    assert lines[:2] == ["", ""] and lines[4:] == [""]
    assert [len(line.split()) for line in lines[2:4]] == [16, 1]


@pytest.mark.parametrize("length", ["0", "-1", "-1025", "x"])
def test_a_length_of_0_or_none_at_all_shows_two_line_ends(olt, length):
    text, rc, steps = run(olt, f"i2c 0 read {CPLD} 80 {length}")
    assert (text, rc) == ("\r\n\r\n", 0)
    assert steps[3] == "read 0x60 0x80 0 0"


def test_the_length_is_decimal(olt):
    assert run(olt, f"i2c 0 read {CPLD} 80 10")[2][3].startswith("read 0x60 0x80 10 0")


@pytest.mark.parametrize("length", [1025, 5000, 2**32 + 1, 10**30])
def test_a_length_above_the_buffer_is_capped_and_the_log_says_so(olt, length):
    text, rc, steps = run(olt, f"i2c 0 read {CPLD} 0 {length}")
    assert (rc, len(text.split())) == (0, 1024)
    assert text == shown([int(byte, 16) for byte in text.split()])
    assert steps[3].startswith("read 0x60 0x0 1024 0")
    olt.wait_log(f"i2c read: length {min(length, 2**63 - 1)} is capped at 1024\n")


def test_a_length_of_the_whole_buffer_is_not_capped(olt):
    text, rc = olt.run(f"i2c 0 read {CPLD} 0 1024", "diagnose")
    assert (rc, len(text.split())) == (0, 1024)
    olt.run(f"i2c 0 read {CPLD} 0 1026", "diagnose")
    olt.wait_log("length 1026 is capped")
    assert "length 1024 is" not in olt.log()


@pytest.mark.parametrize("command", ["i2c 1 read 50 0 17", "i2c 1 write 50 0 1"])
def test_a_bus_that_cannot_be_opened_is_a_warning_without_a_word(olt, command):
    olt.faults("misc_i2c_device_init ret=-1 errno=2 thread=main")
    assert run(olt, command) == ("", 1, [f"raise debug_i2c_{command.split()[2]}", "open 1", "lower"])


def test_a_read_that_fails_shows_zeros(olt):
    olt.faults("misc_i2c_read ret=-1 errno=6 thread=main")
    assert run(olt, f"i2c 0 read {CPLD} 80 17")[:2] == (shown([0] * 17), 0)


def test_a_device_that_is_not_there_shows_zeros(olt):
    assert run(olt, "i2c 3 read 7 0 3")[:2] == (shown([0] * 3), 0)


def bytes_of(olt, command):
    text, rc = olt.run(command, "diagnose")
    assert rc == 0
    return bytes(int(word, 16) for word in text.split())


def test_the_memory_of_a_unit_holds_its_inventory(olt):
    memory = bytes_of(olt, "i2c 1 read 50 0 256")
    assert memory[:4] == bytes([1, 0, 0, 1]) and sum(memory[:8]) % 256 == 0
    texts, at = [], 14
    while memory[at] != 0xC1:
        length = memory[at] & 0x3F
        texts.append(memory[at + 1 : at + 1 + length].decode())
        at += 1 + length
    assert texts == ["OLT Works", "OLT8-XGS", "OLT8240100017", "110-0801-02", ""]


def test_the_temperature_sensor_is_read_as_a_word(olt):
    olt.boardctl("temp", "set", 355)
    assert olt.run("i2c 2 read 48 0 2", "diagnose") == ("\r\n\r\n0x0023 0x0080 \r\n", 0)
    olt.boardctl("temp", "set", 250)
    assert bytes_of(olt, "i2c 3 read 49 0 2") == bytes([0x1F, 0x80]), "the outlet air's"


def test_a_module_is_reached_through_the_channel_switched_on_by_hand(olt):
    olt.boardctl("plug", "gpon", 3, PROJECT / "sim" / "modules" / "gpon-1490.json")
    assert bytes_of(olt, "i2c 0 read 50 0 4") == bytes(4), "no channel yet"
    assert olt.run("i2c 0 write 70 0 4", "diagnose") == ("", 0)
    assert bytes_of(olt, "i2c 0 read 50 0 4").hex() == olt.boardctl("module", "get", "gpon", 3, "0x50", 0, 4).strip()
    assert olt.run("i2c 0 write 51 80 2A", "diagnose") == ("", 0)
    assert olt.boardctl("module", "get", "gpon", 3, "0x51", 0x80, 1) == "2a\n"
    olt.run("i2c 0 write 70 0 0", "diagnose")
    assert bytes_of(olt, "i2c 0 read 50 0 4") == bytes(4)
    olt.boardctl("unplug", "gpon", 3)


def test_a_write_is_one_byte_and_says_nothing(olt):
    assert run(olt, f"i2c 0 write {CPLD} F0 3") == (
        "", 0, ["raise debug_i2c_write", "open 0", "lower", "write 0x60 0xf0 1 0 = 03"])
    assert olt.boardctl("reg", "get", 0xF0) == "0x03\n"
    assert run(olt, f"i2c 0 write 0x{CPLD} 0xF0 0x1F")[:2] == ("", 0)
    assert olt.boardctl("reg", "get", 0xF0) == "0x1f\n"


def test_a_write_that_fails_says_nothing(olt):
    assert run(olt, "i2c 0 write 50 7F 3") == (
        "", 0, ["raise debug_i2c_write", "open 0", "lower", "write 0x50 0x7f 1 0 = 03"])
    olt.faults("misc_i2c_write ret=-1 errno=5 thread=main")
    assert run(olt, f"i2c 0 write {CPLD} F0 3")[:2] == ("", 0)


@pytest.mark.parametrize("fault", ["", "misc_i2c_read ret=-1 thread=main", "misc_i2c_write ret=-1 thread=main"])
def test_the_bus_is_closed_after_each_command(olt, fault):
    def sockets():
        return sum(target.startswith("socket:") for target in olt.fds().values())

    with olt.vty("diagnose") as session:
        before = sockets()
        olt.faults(*[fault] * bool(fault))
        for _ in range(20):
            session.run(f"i2c 0 read {CPLD} 80 4999")
            session.run(f"i2c 0 write {CPLD} F0 3")
        # The monitors have handles of their own for a moment.
        wait_until(lambda: sockets() <= before, "no more sockets than before")


def test_debugging_is_switched_in_the_library(olt):
    assert run(olt, "debug i2c") == ("", 0, ["raise debug_i2c", "debug 1", "lower"])
    assert olt.run("show debugging", "diagnose")[0].startswith("I2C")
    assert run(olt, "no debug i2c") == ("", 0, ["raise debug_i2c", "debug 0", "lower"])
    assert olt.run("show debugging", "diagnose") == ("", 0)


@pytest.mark.parametrize("command", [f"i2c 0 read {CPLD} 80 17", f"i2c 0 write {CPLD} F0 3", "debug i2c", "no debug i2c"])
def test_the_boards_semaphore_is_left_alone(olt, command):
    assert board_semaphore_calls(olt, command) == []
