# SPDX-License-Identifier: GPL-2.0-or-later
"""The readouts of what optical modules measure: of an interface, of one port, and as a table."""

import pytest
from cpld import PON, SFP, board_session, record
from module_memory import path, plug, qsfp, words
from module_steps import FIRST, SECOND, in_cage, readout, refused, run, word
from olt import wait_until
from traced_fixtures import olt  # noqa: F401
from vty import SUCCESS, WARNING

END = "\r\n"
VALUES = ("25.500", "3.300", "10.000", "0.000", "-3.010")
XG_VALUES = ("25.500", "3.300", "20.000", "3.010", "-3.010")
QSFP_VALUES = ("25.500", "3.300", "10.000", "0.000", "-10.000")  # of its first lane
ZEROES = 5 * ("0.000",)
DEAD = ("0.000", "0.000", "0.000", "-inf", "-inf")
# slope and offset of bias, TX power, temperature, voltage, RX power, and what path() then comes to:
# 6528 * 1.5 + 64, 33000 / 16 + 1, 5000 * 2 + 10, TX as it is, RX doubled
CONSTANTS = (0x0200, 0x0A00, 0x0100, 0x0000, 0x0180, 0x4000, 0x0010, 0x0100, 0x0200, 0x0000)
EXTERNAL_VALUES = ("38.500", "0.206", "20.020", "0.000", "0.000")

TABLE = (
    "Interface     Temperature (Celsius)    Voltage (Volts)    Current (mA)    Optical Tx Power(dBm)           Optical Rx Power(dBm)\r\n"
    "----------    ---------------------    ---------------    ------------    ----------------------------    ---------------------------- \r\n"
)
INTERFACE = "show pon optical transceiver"
PORT = "show optical transceiver interface"


def interface_lines(plain, xg=ZEROES):
    """What an interface node shows."""
    def half(generation, values):
        names = ("Tempperature: {} C", "Voltage: {} V", "TxBias: {} mA", "TxPower: {} dBm", "RxPower: {} dBm")
        return "".join(generation + name.format(value) + END for name, value in zip(names, values))

    return half("", plain) + half("XG ", xg)


def port_lines(plain, xg=None):
    """What one port shows; of GPON ports with the other half."""
    def half(generation, values):
        names = ("Tempperature   : {}.C", "Voltage        : {}V", "Bias Current   : {}mA", "Transmit Power : {}dBm",
                 "Receiver Power : {}dBm")
        return "".join(generation + name.format(value) + END for name, value in zip(names, values))

    return half("", plain) + (END + half("XG ", xg) if xg else "")


def row(name, values):
    widths = (24, 18, 15, 31, 27)
    return f"{name:<13} " + " ".join(f"{value:<{width}}" for value, width in zip(values, widths)) + END


@pytest.fixture(autouse=True)
def as_found(olt):
    yield
    olt.faults()
    olt.boardctl("fault", "clear")
    olt.run("no debug cpld", "diagnose")
    for kind, ports in (("gpon", 8), ("ge", 4)):
        for port in range(1, ports + 1):
            olt.boardctl("unplug", kind, port)
    olt.wait_free("board")


# --- in an interface's node

@pytest.mark.parametrize("node", ["gpon", "xgpon"])
@pytest.mark.parametrize("pages, plain, xg, paths", [
    ([*path()], VALUES, ZEROES, [readout(*FIRST, "internal"), word(0x58, 60)]),
    ([*path(), *path(1577)], VALUES, XG_VALUES,
     [readout(*FIRST, "internal"), word(0x58, 60), readout(*SECOND, "internal")]),
    ([*path(), *path(0)], VALUES, ZEROES, [readout(*FIRST, "internal"), word(0x58, 60)]),
    ([*path(1577)], ZEROES, XG_VALUES, [readout(*FIRST, "internal"), word(0x58, 60)]),
    ([*path(monitoring=0x10, constants=CONSTANTS)], EXTERNAL_VALUES, ZEROES, [readout(*FIRST, "external"), word(0x58, 60)]),
    ([*path(monitoring=0x30)], VALUES, ZEROES, [readout(*FIRST, "internal"), word(0x58, 60)]),
    ([qsfp()], QSFP_VALUES, ZEROES, [readout(*FIRST, None), word(0x58, 60)]),
], ids=["single", "combo", "second-without-wavelength", "xgpon", "external", "internal-wins", "qsfp"])
def test_an_interface_shows_both_generations_of_its_module(olt, node, pages, plain, xg, paths):
    plug(olt, "gpon", 3, *pages)
    text, rc, steps = run(olt, INTERFACE, f"{node} 0/3")
    assert (text, rc) == (interface_lines(plain, xg), SUCCESS)
    assert steps == board_session("show_pon_transceiver_optical", *in_cage("gpon", 3, *sum(paths, [])))


def test_an_interface_without_a_module_shows_zeroes(olt):
    plug(olt, "gpon", 2, *path())
    assert run(olt, INTERFACE, "gpon 0/3") == (
        interface_lines(ZEROES), SUCCESS, board_session("show_pon_transceiver_optical", *in_cage("gpon", 3)))
    for beyond in ("gpon 0/0", "gpon 0/9", "xgpon 0/99999999999"):
        assert run(olt, INTERFACE, beyond)[:2] == (interface_lines(ZEROES), SUCCESS)


def test_an_interface_on_a_board_that_does_not_open_shows_nothing_and_warns(olt):
    plug(olt, "gpon", 1, *path())
    olt.faults("misc_cpld_i2c_open ret=-1 errno=5 thread=main")
    assert run(olt, INTERFACE, "gpon 0/1") == ("", WARNING, refused("show_pon_transceiver_optical"))


def test_an_interface_is_read_even_when_its_channel_cannot_be_selected(olt):
    plug(olt, "gpon", 1, *path())
    olt.faults("misc_cpld_channel_select ret=-1 errno=5 thread=main")
    text, rc, steps = run(olt, INTERFACE, "gpon 0/1")
    # nothing answers, so it counts as a module without calibration
    assert (text, rc) == (interface_lines(DEAD), SUCCESS)
    assert steps == board_session("show_pon_transceiver_optical",
                                  *in_cage("gpon", 1, *readout(*FIRST, None), *word(0x58, 60)))


def test_the_wavelength_decides_which_generation_a_path_belongs_to(olt):
    for wavelength in (850, 1310, 1311, 1490, 1535, 1550, 0):
        plug(olt, "gpon", 1, *path(wavelength))
        assert run(olt, INTERFACE, "gpon 0/1")[0] == interface_lines(VALUES), wavelength
    for wavelength in (1577, 1791):
        plug(olt, "gpon", 1, *path(wavelength))
        assert run(olt, INTERFACE, "gpon 0/1")[0] == interface_lines(ZEROES, XG_VALUES), wavelength


def test_of_two_paths_of_one_generation_the_second_stands(olt):
    plug(olt, "gpon", 1, *path(), *path(1490, temperature=0x2000))
    # the GPON optics of a second path count double
    assert run(olt, INTERFACE, "gpon 0/1")[0] == interface_lines(("32.000", *XG_VALUES[1:]))


@pytest.mark.parametrize("wavelength, is_xg", [(1490, False), (1577, True)])
def test_a_second_path_has_its_own_units_when_it_is_externally_calibrated(olt, wavelength, is_xg):
    plug(olt, "gpon", 1, *path(850), *path(wavelength, monitoring=0x10, constants=CONSTANTS))
    double = (*EXTERNAL_VALUES[:2], "40.040", "3.010", "0.000")
    expected = interface_lines(VALUES, double) if is_xg else interface_lines(double)
    assert run(olt, INTERFACE, "gpon 0/1")[0] == expected


def test_temperatures_below_zero_lose_their_sign(olt):
    plug(olt, "gpon", 1, *path(temperature=-0x0500))
    assert run(olt, INTERFACE, "gpon 0/1")[0] == interface_lines(("5.000", *VALUES[1:]))


# --- modules without calibration

@pytest.mark.parametrize("identifier", [0x00, 0x03, 0x02, 0x0C, 0x0D, 0x11, 0x0E, 0x18, 0xFF])
def test_a_module_without_calibration_is_read_from_lower_memory_whatever_it_is(olt, identifier):
    plug(olt, "gpon", 1, qsfp(identifier=identifier))
    text, _, steps = run(olt, INTERFACE, "gpon 0/1")
    assert text == interface_lines(QSFP_VALUES)
    assert steps == board_session("show_pon_transceiver_optical",
                                  *in_cage("gpon", 1, *readout(*FIRST, None), *word(0x58, 60)))


def test_lower_memory_has_the_units_of_the_wavelength(olt):
    plug(olt, "gpon", 1, qsfp(lower={60: words(1577)}))
    assert run(olt, INTERFACE, "gpon 0/1")[0] == interface_lines(ZEROES, ("25.500", "3.300", "20.000", "3.010", "-10.000"))


# --- failing modules

def test_a_module_that_died_shows_what_its_zeroes_come_to(olt):
    plug(olt, "gpon", 1, *path())
    plug(olt, "gpon", 2, *path())
    plug(olt, "ge", 1, *path(850))
    for kind in ("gpon", "ge"):
        olt.boardctl("module", "die", kind, 1)
    assert run(olt, INTERFACE, "gpon 0/1")[:2] == (interface_lines(DEAD), SUCCESS)
    assert run(olt, f"{PORT} gigabitEthernet 0/1")[:2] == (port_lines(DEAD), SUCCESS)
    assert run(olt, "show optical transceiver", "diagnose")[:2] == (
        TABLE + row("GPON 0/1", DEAD) + row("GPON 0/2", VALUES) + row("GE 0/1", DEAD), SUCCESS)


def test_a_byte_that_cannot_be_read_is_zero_and_costs_no_other(olt):
    plug(olt, "gpon", 1, *path())
    olt.boardctl("fault", "add", "i2c_read", "addr=0x51", "reg=97")  # the fraction of the temperature
    text, _, steps = run(olt, INTERFACE, "gpon 0/1")
    assert text == interface_lines(("25.000", *VALUES[1:]))
    assert steps == board_session("show_pon_transceiver_optical",
                                  *in_cage("gpon", 1, *readout(*FIRST, "internal"), *word(0x58, 60))), "no retry"


def test_a_module_pulled_in_the_middle_shows_what_was_read_before(olt):
    def pull_in_the_middle():
        plug(olt, "gpon", 3, *path())
        mark = olt.boardctl("log", "next").strip()
        olt.boardctl("fault", "add", "i2c_read", "addr=0x51", "reg=99", "delay=800")
        with olt.vty("gpon 0/3") as session:
            session.send(INTERFACE)
            olt.boardctl("log", "wait", "i2c_read.*addr=0x51 reg=99", 10, mark)
            olt.boardctl("unplug", "gpon", 3)
            text, rc = session.receive()
        olt.boardctl("fault", "clear")
        assert rc == SUCCESS
        return text == interface_lines((*VALUES[:2], *DEAD[2:]))

    wait_until(pull_in_the_middle, "a module is pulled before its bias is read")
    assert run(olt, INTERFACE, "gpon 0/3")[0] == interface_lines(ZEROES)


def test_powers_below_zero_are_no_numbers(olt):
    minus_one = 0xFF00
    plug(olt, "gpon", 1, *path(monitoring=0x10, constants=(0x0100, 0, minus_one, 0, 0x0100, 0, 0x0100, 0, minus_one, 0)))
    text, _, _ = run(olt, INTERFACE, "gpon 0/1")
    lines = text.split(END)
    assert [line.replace("-nan", "nan") for line in lines[3:5]] == ["TxPower: nan dBm", "RxPower: nan dBm"]


# --- one port

@pytest.mark.parametrize("kind, cage", [("gigabitEthernet", "ge"), ("gpon", "gpon"), ("xgpon", "gpon")])
@pytest.mark.parametrize("pages, plain, xg", [
    ([*path()], VALUES, ZEROES), ([*path(), *path(1577)], VALUES, XG_VALUES), ([*path(1577)], ZEROES, XG_VALUES),
    ([qsfp()], QSFP_VALUES, ZEROES)], ids=["single", "combo", "xgpon", "qsfp"])
def test_a_port_shows_its_first_half_and_a_gpon_port_both(olt, kind, cage, pages, plain, xg):
    plug(olt, cage, 4, *pages)
    assert run(olt, f"{PORT} {kind} 0/4")[:2] == (port_lines(plain, xg if kind == "gpon" else None), SUCCESS)


@pytest.mark.parametrize("kind, cage, port", [("gigabitEthernet", "ge", 1), ("gigabitEthernet", "ge", 4), ("gpon", "gpon", 1),
                                              ("gpon", "gpon", 8), ("xgpon", "gpon", 8)])
def test_a_port_is_looked_for_at_its_presence_bit_and_read_on_its_channel(olt, kind, cage, port):
    plug(olt, cage, port, *path(), *path(1577))
    work = [*readout(*FIRST, "internal"), *word(0x58, 60), *readout(*SECOND, "internal")]
    assert run(olt, f"{PORT} {kind} 0/{port}")[2] == board_session("show_transceiver_optical", *in_cage(cage, port, *work))


@pytest.mark.parametrize("node, reason", [("config", "show_transceiver_optical"), ("diagnose", "show_port_laser")])
@pytest.mark.parametrize("kind, cage", [("gigabitEthernet", "ge"), ("gpon", "gpon"), ("xgpon", "gpon")])
def test_a_port_without_a_module_shows_no_values(olt, node, reason, kind, cage):
    heading = TABLE if node == "diagnose" else ""
    assert run(olt, f"{PORT} {kind} 0/2", node) == (heading, SUCCESS, board_session(reason, *in_cage(cage, 2)))
    plug(olt, cage, 2, *path())
    olt.faults("misc_cpld_channel_select ret=-1 errno=5 thread=main")
    look = ["R(12)", "CH(9)"] if cage == "ge" else ["R(11)", "CH(1)"]
    assert run(olt, f"{PORT} {kind} 0/2", node) == (heading, SUCCESS, board_session(reason, *look))


@pytest.mark.parametrize("node, reason", [("config", "show_transceiver_optical"), ("diagnose", "show_port_laser")])
@pytest.mark.parametrize("kind", ["gigabitEthernet", "gpon", "xgpon"])
def test_a_port_on_a_board_that_does_not_open_shows_no_values_and_warns(olt, node, reason, kind):
    olt.faults("misc_cpld_i2c_open ret=-1 errno=5 thread=main")
    heading = TABLE if node == "diagnose" else ""
    assert run(olt, f"{PORT} {kind} 0/1", node) == (heading, WARNING, refused(reason))


@pytest.mark.parametrize("node", ["config", "diagnose"])
@pytest.mark.parametrize("word_, name", [("gigabitEthernet", "GE"), ("gpon", "GPON"), ("xgpon", "XGPON")])
@pytest.mark.parametrize("position", ["0/9", "0/0", "1/1", "0/32", "0/99"])
def test_a_port_that_the_board_does_not_have_is_said_so_and_nothing_is_touched(olt, node, word_, name, position):
    assert run(olt, f"{PORT} {word_} {position}", node) == (f"{name} {position} not exist{END}", SUCCESS, [])


@pytest.mark.parametrize("port", range(5, 9))
def test_a_board_has_as_many_gigabit_ports_as_its_records_say(olt, port):
    assert run(olt, f"{PORT} gigabitEthernet 0/{port}") == (f"GE 0/{port} not exist{END}", SUCCESS, [])


# --- the table

def test_an_empty_board_is_an_empty_table(olt):
    looks = [look for cage, ports in (("gpon", 8), ("ge", 4)) for port in range(1, ports + 1)
             for look in board_session("show_port_laser", *in_cage(cage, port))]
    assert run(olt, "show optical transceiver", "diagnose") == (TABLE, SUCCESS, looks)


def test_the_table_has_a_row_for_each_module_and_a_second_one_for_xgpon(olt):
    plug(olt, "gpon", 1, *path())
    plug(olt, "gpon", 2, *path(), *path(1577))
    plug(olt, "gpon", 4, *path(1577))
    plug(olt, "gpon", 5, *path(monitoring=0x10, constants=CONSTANTS))
    plug(olt, "gpon", 8, qsfp())
    plug(olt, "ge", 1, *path(850, identifier=0))
    plug(olt, "ge", 4, qsfp(identifier=0x0D))
    assert run(olt, "show optical transceiver", "diagnose")[:2] == (
        TABLE + row("GPON 0/1", VALUES) + row("GPON 0/2", VALUES) + row("", XG_VALUES) + row("GPON 0/4", ZEROES)
        + row("", XG_VALUES) + row("GPON 0/5", EXTERNAL_VALUES) + row("GPON 0/8", QSFP_VALUES) + row("GE 0/1", VALUES)
        + row("GE 0/4", QSFP_VALUES), SUCCESS)


def test_an_xgpon_path_without_light_or_power_has_its_row_all_the_same(olt):
    plug(olt, "gpon", 1, *path(), *path(1577, temperature=0, voltage=0, bias=0, tx=0, rx=0))
    assert olt.run("show optical transceiver", "diagnose") == (TABLE + row("GPON 0/1", VALUES) + row("", DEAD), SUCCESS)


@pytest.mark.parametrize("kind, cage, name", [("gigabitEthernet", "ge", "GE"), ("gpon", "gpon", "GPON"),
                                              ("xgpon", "gpon", "XGPON")])
def test_the_table_of_one_interface_has_its_rows_alone(olt, kind, cage, name):
    for port in (2, 3):
        plug(olt, cage, port, *path(), *path(1577))
    text, rc, steps = run(olt, f"{PORT} {kind} 0/3", "diagnose")
    assert (text, rc) == (TABLE + row(f"{name} 0/3", VALUES) + row("", XG_VALUES), SUCCESS)
    work = [*readout(*FIRST, "internal"), *word(0x58, 60), *readout(*SECOND, "internal")]
    assert steps == board_session("show_port_laser", *in_cage(cage, 3, *work))


def test_a_board_that_does_not_open_ends_the_table_at_once(olt):
    plug(olt, "gpon", 1, *path())
    plug(olt, "gpon", 2, *path())
    olt.faults("misc_cpld_i2c_open nth=2 ret=-1 errno=5 thread=main")
    text, rc, steps = run(olt, "show optical transceiver", "diagnose")
    assert (text, rc) == (TABLE + row("GPON 0/1", VALUES), WARNING)
    assert steps[-5:] == refused("show_port_laser") and steps.count("open") == 2


def test_ports_are_named_by_the_table_of_the_records_that_has_them(make_olt):
    board = make_olt(board={"records": [
        record(1, PON, word108=5, pon1=[7]),  # not in service
        record(2, PON, word8=1, pon1=[1, {"port": 2, "in_use": False}], pon2=[1, 3]),
        record(3, PON, pon1=[5]),  # the second of them
        record(4, SFP, sfp=[2, {"port": 3, "present": False}]),
    ]}).start()
    for cage, port in (("gpon", 1), ("gpon", 2), ("gpon", 3), ("gpon", 5), ("ge", 2), ("ge", 3)):
        plug(board, cage, port, *path())
    assert board.run("show optical transceiver", "diagnose") == (
        TABLE + row("GPON 0/1", VALUES) + row("XGPON 0/3", VALUES) + row("GE 0/2", VALUES), SUCCESS)
    shown = {f"{kind} 0/{port}": board.run(f"{PORT} {kind} 0/{port}")[0]
             for kind in ("gpon", "xgpon") for port in (1, 2, 3, 5)}
    assert [name for name, text in shown.items() if "not exist" not in text] == ["gpon 0/1", "xgpon 0/1", "xgpon 0/3"]


def test_a_board_without_records_has_no_ports(make_olt):
    bare = make_olt(board={"records": []}).start()
    assert bare.run("show optical transceiver", "diagnose") == (TABLE, SUCCESS)
    assert bare.run(f"{PORT} gpon 0/1") == (f"GPON 0/1 not exist{END}", SUCCESS)


# --- debugging

class Output:
    """What the daemon writes to its standard output from now on, as far as it is about modules."""

    def __init__(self, olt):
        self.olt = olt
        self.start = len(olt.stdout())

    def lines(self, *starts):
        return [line for line in self.olt.stdout()[self.start:].split(END) if line.startswith(starts)]


@pytest.mark.parametrize("pages, expected", [
    (path(), ["cpld i2c read 0x50 register 0x5c value 0x20",
              "interAdjust cpld i2c read 0x51 register 0x60 value 0x19 0x80 0x80 0xe8 0x13 0x88 0x27 0x10 0x13 0x88"]),
    (path(monitoring=0x10, constants=range(0x0101, 0x010B)),
     ["cpld i2c read 0x50 register 0x5c value 0x10",
      "outerAdjust cpld i2c read 0x51 register 0x4c value " + " ".join(f"0x1 {number:#x}" for number in range(1, 11))
      + " 0x19 0x80 0x80 0xe8 0x13 0x88 0x27 0x10 0x13 0x88"]),
    ([qsfp()], ["cpld i2c read 0x50 register 0x5c value 0x0",
                "cpld i2c read 0x50 register 0x16 value 0xe6 0x80 0x80 0xe8 0x13 0x88 0x27 0x10 0x3 0xe8"]),
], ids=["internal", "external", "lower-memory"])
@pytest.mark.parametrize("command, node", [(INTERFACE, "gpon 0/3"), (f"{PORT} gpon 0/3", "config"),
                                           ("show optical transceiver", "diagnose")])
def test_debugging_tells_what_was_read(olt, command, node, pages, expected):
    plug(olt, "gpon", 3, *pages)
    assert olt.run("debug cpld", "diagnose")[1] == SUCCESS
    output = Output(olt)
    olt.run(command, node)
    starts = ("choose", "cpld i2c", "interAdjust", "outerAdjust")
    wait_until(lambda: len(output.lines(*starts)) >= 3, "the lines")
    assert output.lines(*starts) == ["choose channel 2", *expected]


def test_debugging_tells_what_failed(olt):
    plug(olt, "gpon", 3, *path())
    olt.run("debug cpld", "diagnose")
    olt.boardctl("fault", "add", "i2c_read", "addr=0x50", "reg=92")
    output = Output(olt)
    *_, steps = run(olt, INTERFACE, "gpon 0/3")
    assert "I(0x50,22,1)" in steps
    failed = next(call for call in reversed(olt.trace()) if call.op == "misc_i2c_read" and call.values["reg"] == "92")
    line = f"cpld i2c {failed.values['h']} from 92  read 1 bytes failed, ret {failed.result.split()[0]}"
    wait_until(lambda: line in output.lines("cpld"), line)


def test_debugging_tells_of_a_channel_that_cannot_be_selected(olt):
    plug(olt, "gpon", 3, *path())
    olt.run("debug cpld", "diagnose")
    olt.faults("misc_cpld_channel_select ret=-1 errno=5 thread=main")
    for command, node in ((INTERFACE, "gpon 0/3"), (f"{PORT} gpon 0/3", "config")):
        output = Output(olt)
        olt.run(command, node)
        handle = next(call for call in reversed(olt.trace()) if call.op == "misc_cpld_channel_select").values["h"]
        line = f"cpld i2c {handle} set register 119 failed"
        wait_until(lambda: line in output.lines("cpld"), line)
        assert output.lines("choose") == ["choose channel 2"]


def test_debugging_of_modules_tells_of_each_byte_that_cannot_be_read(olt):
    plug(olt, "gpon", 3, *path())
    olt.boardctl("fault", "add", "i2c_read", "addr=0x51")
    assert olt.run("debug transceiver", "diagnose")[1] == SUCCESS
    try:
        output = Output(olt)
        olt.run(INTERFACE, "gpon 0/3")
        starts = [f"i2c access slave addr 0x51 register {register:#x} failed, ret -" for register in range(96, 106)]
        starts.append("i2c access slave addr 0x58 register 0x3c failed, ret -")  # there is no second path
        wait_until(lambda: len(output.lines("i2c access")) >= len(starts), "a line for each")
        lines = output.lines("i2c access")
        assert len(lines) == len(starts) and all(map(str.startswith, lines, starts)), lines
    finally:
        olt.run("no debug transceiver", "diagnose")


def test_without_debugging_nothing_is_told(olt):
    plug(olt, "gpon", 3, *path())
    olt.boardctl("module", "die", "gpon", 3)
    output = Output(olt)
    olt.run(INTERFACE, "gpon 0/3")
    olt.run("debug cpld", "diagnose")
    olt.run(INTERFACE, "gpon 0/3")
    wait_until(lambda: output.lines("choose"), "the first line with debugging")
    assert len(output.lines("choose", "cpld i2c", "interAdjust", "outerAdjust")) == 3
