# SPDX-License-Identifier: GPL-2.0-or-later
"""Every transaction that the displays of all modules make on a board without an empty cage, in order: what each
module's kind takes, and nothing else."""

import pytest
from cpld import board_session
from module_memory import path, plug, qsfp
from module_steps import FIRST, SECOND, fields, in_cage, readout, reads, run, word
from vty import SUCCESS

CAGES = [("gpon", port) for port in range(1, 9)] + [("ge", port) for port in range(1, 5)]
IDENTIFIER = reads(0x50, 0, 0)
ASK_FOR_SECOND = word(0x58, 60)
PAGE_0 = ["O(0x50,127,1)=00"]


# --- what a module takes: of show transceiver, of its JSON form, of the readout

def calibrated(addresses, calibration):
    """The values of a path whose wavelength is known."""
    id_address, diagnostics = addresses
    values = {"internal": reads(diagnostics, 96, 105), "external": reads(diagnostics, 76, 151), None: []}
    return [*reads(id_address, 92, 92), *values[calibration]]


class Sfp:
    def __init__(self, pages, first, second=...):
        """first, second: how the paths are calibrated; without a second there is one path."""
        self.pages = pages
        self.paths = [(FIRST, first)] + ([(SECOND, second)] if second is not ... else [])

    def text(self):
        values = [calibrated(*path) for path in self.paths]
        return [*IDENTIFIER, *word(0x50, 60), *values[0], *ASK_FOR_SECOND, *sum(values[1:], [])]

    def json(self):
        texts = [*reads(0x50, 20, 35), *reads(0x50, 56, 59), *reads(0x50, 68, 83)]  # vendor, revision, serial number
        return [*IDENTIFIER, *texts, *self.text()[1:]]

    def readout(self):
        values = [readout(*addresses, calibration) for addresses, calibration in self.paths]
        return [*values[0], *ASK_FOR_SECOND, *sum(values[1:], [])]


class Qsfp:
    def __init__(self, **fields_):
        self.pages = [qsfp(**fields_)]

    def text(self):
        lanes = fields(0x50, 42, 44, 46, 48, 50, 52, 54, 56, 34, 36, 38, 40)  # bias, TX and RX power
        return [*IDENTIFIER, *fields(0x50, 22, 26), *lanes]

    def json(self):
        texts = [*reads(0x50, 196, 211), *reads(0x50, 184, 185), *reads(0x50, 148, 163)]  # serial number, revision, vendor
        return [*IDENTIFIER, *PAGE_0, *texts, *PAGE_0, *self.text()[1:], *word(0x50, 186)]

    def readout(self):
        return [*readout(*FIRST, None), *ASK_FOR_SECOND]


class Unsupported(Sfp):
    """Of a family that show transceiver does not decode; the readout does not ask for the family."""

    def text(self):
        return IDENTIFIER

    json = text


MODULES = [
    Sfp(path(), "internal"),
    Sfp([*path(), *path(1577)], "internal", "internal"),
    Sfp(path(monitoring=0x10), "external"),
    Sfp(path(1577), "internal"),
    Qsfp(),
    Sfp(path(monitoring=0), None),
    Unsupported(path(identifier=0x0E), "internal"),
    Sfp([*path(monitoring=0x10), *path(1577, monitoring=0)], "external", None),
    Sfp(path(850), "internal"),
    Sfp([*path(1310, monitoring=0x30, identifier=0), *path(1490, monitoring=0x10)], "internal", "external"),
    Qsfp(identifier=0x0D),
    Sfp(path(1550), "internal"),
]


@pytest.fixture(scope="module")
def olt(make_olt):
    olt = make_olt().start(trace=True)
    for (kind, port), module in zip(CAGES, MODULES, strict=True):
        plug(olt, kind, port, *module.pages)
    return olt


def each(work):
    """Looking into every cage, one after another; work: what each module takes."""
    return [in_cage(kind, port, *work(module)) for (kind, port), module in zip(CAGES, MODULES, strict=True)]


@pytest.mark.parametrize("command, reason, work", [
    ("show transceiver", "transceiver_diag_monitor_show", lambda module: module.text()),
    ("show transceiver diagnosis", "transceiver_diag_monitor_show", lambda module: module.text()),
    ("show transceiver detail", "transceiver_diag_monitor_detail_show", lambda _: IDENTIFIER),
    ("show transceiver json", "transceiver_diag_monitor_show_json", lambda module: module.json()),
], ids=["text", "diagnosis", "detail", "json"])
def test_a_display_of_all_modules_takes_the_board_once_and_reads_what_it_shows(olt, command, reason, work):
    _, rc, steps = run(olt, command)
    assert (rc, steps) == (SUCCESS, board_session(reason, *sum(each(work), [])))


def test_the_table_of_readouts_takes_the_board_for_each_module(olt):
    _, rc, steps = run(olt, "show optical transceiver", "diagnose")
    rows = [board_session("show_port_laser", *row) for row in each(lambda module: module.readout())]
    assert (rc, steps) == (SUCCESS, sum(rows, []))


@pytest.mark.parametrize("node, reason", [("diagnose", "show_port_laser"), ("config", "show_transceiver_optical")])
@pytest.mark.parametrize("place", range(len(CAGES)), ids=[f"{kind}-{port}" for kind, port in CAGES])
def test_one_port_takes_the_board_once(olt, node, reason, place):
    (kind, port), module = CAGES[place], MODULES[place]
    word_ = "gigabitEthernet" if kind == "ge" else kind
    _, rc, steps = run(olt, f"show optical transceiver interface {word_} 0/{port}", node)
    assert (rc, steps) == (SUCCESS, board_session(reason, *in_cage(kind, port, *module.readout())))


@pytest.mark.parametrize("port", range(1, 9))
def test_an_interface_takes_the_board_once(olt, port):
    _, rc, steps = run(olt, "show pon optical transceiver", f"gpon 0/{port}")
    work = in_cage("gpon", port, *MODULES[port - 1].readout())
    assert (rc, steps) == (SUCCESS, board_session("show_pon_transceiver_optical", *work))


def test_the_displays_call_nothing_else_of_the_boards_libraries(olt):
    """The lists above would not show a call of another kind."""
    listed = {f"misc_{name}" for name in ("cpld_i2c_open", "cpld_i2c_close", "cpld_i2c_read_byte", "cpld_channel_select",
                                          "cpld_channel_select_end", "i2c_read", "i2c_write")}
    before = len(olt.trace())
    for command, node in (("show transceiver", "config"), ("show transceiver json", "config"),
                          ("show optical transceiver", "diagnose")):
        olt.run(command, node)
    called = {call.op for call in olt.trace()[before:] if call.thread == "main" and call.op.startswith("misc_")}
    assert called == listed
