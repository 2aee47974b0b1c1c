# SPDX-License-Identifier: GPL-2.0-or-later
"""The readouts of real modules (see real_modules.py) agree with the bytes of their memories, and with the independent
decode where the standards and the readout take the same fields and units."""

import math
import re

import pytest
from footprint import Footprint
from real_modules import DUMPS, XG_NM, Comparison, family, need_dumps, pages, plug, readings
from vty import SUCCESS

need_dumps()

INTERNAL, EXTERNAL = 0x20, 0x10
VALUE = re.compile(r": (-?(?:\d+\.\d+|inf|nan)) ?(?:\.C|C|V|mA|dBm)$", re.MULTILINE)
CAGES = [("gpon", 1, "GPON 0/1"), ("ge", 3, "GE 0/3")]
ZEROES = 5 * [0.0]


def dbm(tenths_of_uw):
    return 10 * math.log10(tenths_of_uw / 10000) if tenths_of_uw else -math.inf


def of_the_bytes(dump):
    """The two halves of the readout; None where it depends on external calibration."""
    memory = pages(dump)
    id_page = memory[0x50]
    is_xg = int.from_bytes(id_page[60:62], "big") in XG_NM
    double = 2 if is_xg else 1
    if id_page[92] & INTERNAL:
        values = of_fields(memory[0x51], (96, 98, 100, 102, 104), double)
    elif id_page[92] & EXTERNAL:
        return None
    else:
        values = of_fields(id_page, (22, 26, 42, 50, 34), double)
    return (ZEROES, values) if is_xg else (values, ZEROES)


def of_fields(page, registers, double):
    """Five values; double: 2 for the optics that count in double units."""
    temperature, voltage, bias, tx, rx = (page[register : register + 2] for register in registers)
    number = int.from_bytes
    return [abs(number(temperature, "big", signed=True)) / 256, number(voltage, "big") / 10000,
            number(bias, "big") * 2 * double / 1000, dbm(number(tx, "big") * double), dbm(number(rx, "big"))]


def shown_values(text):
    return [float(value) for value in VALUE.findall(text.replace("\r", ""))]


def table_values(session, name):
    """The values of the table's rows of one port: of the first, then of the second if there is one."""
    text, status = session.run("show optical transceiver")
    assert status == SUCCESS
    lines = text.split("\r\n")
    at = next(place for place, line in enumerate(lines) if line.startswith(f"{name:<14}"))
    rows = [lines[at]] + ([lines[at + 1]] if lines[at + 1].startswith(14 * " ") else [])
    return [float(value) for row in rows for value in row[14:].split()]


def same(shown, expected):
    """Equal but for the rounding of the last digit."""
    return len(shown) == len(expected) and all(
        one == other or abs(one - other) <= 0.001 for one, other in zip(shown, expected))


@pytest.fixture(scope="module")
def config(olt):
    with olt.vty() as session:
        yield session


@pytest.fixture(scope="module")
def diagnose(olt):
    with olt.vty("diagnose") as session:
        session.run("show optical transceiver")
        yield session


@pytest.fixture(scope="module")
def interface(olt):
    with olt.vty("gpon 0/1") as session:
        yield session


@pytest.fixture(scope="module")
def footprint(olt, config, diagnose, interface):
    return Footprint(olt)


@pytest.mark.parametrize("dump", DUMPS, ids=lambda dump: dump["id"])
def test_the_readouts_of_a_real_module_are_what_its_memory_says(olt, config, diagnose, interface, footprint, dump):
    halves = of_the_bytes(dump)
    for kind, port, name in CAGES:
        plug(olt, dump, kind, port)
        word = "gigabitEthernet" if kind == "ge" else kind
        shown = shown_values(config.run(f"show optical transceiver interface {word} 0/{port}")[0])
        table = table_values(diagnose, name)
        both = shown_values(interface.run("show pon optical transceiver")[0])
        olt.boardctl("unplug", kind, port)
        footprint.check()

        assert len(shown) == (10 if kind == "gpon" else 5) and same(shown[:5], table[:5])
        if kind == "gpon":
            assert same(both, shown)
        else:
            assert both == 10 * [0.0], "the cage of the interface is empty"
        if halves:
            plain, xg = halves
            assert same(shown, plain + xg if kind == "gpon" else plain), (name, shown, halves)
            assert same(table, plain + (xg if any(xg) else [])), (name, table, halves)


def of_the_standards(dump):
    """Five values of the independent decode, of a QSFP those of the first lane; None where the readout differs."""
    expected = readings(dump)
    if expected and family(dump) == "qsfp":
        temperature, voltage, *lanes = expected
        return [temperature, voltage, *lanes[::4]]
    return expected


COMPARABLE = [dump for dump in DUMPS if of_the_standards(dump)]


@pytest.mark.parametrize("dump", COMPARABLE, ids=lambda dump: dump["id"])
def test_the_readout_of_a_real_module_is_what_the_standards_make_of_it(olt, config, footprint, dump):
    comparison = Comparison()
    plug(olt, dump, "ge", 3)
    shown = VALUE.findall(config.run("show optical transceiver interface gigabitEthernet 0/3")[0].replace("\r", ""))
    olt.boardctl("unplug", "ge", 3)
    for value, expected in zip(shown, of_the_standards(dump), strict=True):
        comparison.close(value, expected, dump["id"])
    assert comparison.made == 5


def test_the_folder_has_modules_of_both_families_to_compare():
    kinds = [family(dump) for dump in COMPARABLE]
    assert kinds.count("sfp") >= 5 and kinds.count("qsfp") >= 5
