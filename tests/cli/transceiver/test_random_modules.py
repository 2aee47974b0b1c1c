# SPDX-License-Identifier: GPL-2.0-or-later
"""Whatever bytes a module holds, it is displayed, and nothing is lost by it.

Seeded: memory number N is always the same.  500 memories, and 10000 under AddressSanitizer;
DIAGD_RANDOM_MODULES gives another number.
"""

import collections
import os
import random
import re
import string

import pytest
from footprint import Footprint
from module_memory import plug_image
from module_readings import DOUBLE_NM, PLAIN_NM, qsfp, sfp_path
from olt import BUILD
from sff_texts import QSFP, SFP, idprom
from transceiver_rows import INTERFACES, json_objects, show_detail, text_name, text_rows
from vty import SUCCESS

SEED = 8472
COUNT = int(os.environ.get("DIAGD_RANDOM_MODULES", 10000 if BUILD.name == "asan" else 500))

MONITORING = (0x20, 0x10, 0x30, 0x68, 0x58, 0x00)
A0, A2, B0, B2 = 0x50, 0x51, 0x58, 0x59
VENDOR_KEYS = ("vendorName", "vendorRevision", "vendorSerialNumber")
LANE_KEYS = ("temperature", "voltage", *(f"{lane}{number}" for lane in ("biasCurrentTx", "transmitPowerTx", "receivePowerRx")
                                         for number in range(1, 5)))
BLOCKS = (None, "vendor", "manufacture")


def half(rng):
    """128 bytes: mostly anything, sometimes of one kind."""
    kind = rng.random()
    if kind < 0.7:
        return bytearray(rng.randbytes(128))
    if kind < 0.8:
        return bytearray([rng.choice((0x00, 0xFF, 0x7F, 0x80))] * 128)
    if kind < 0.9:
        return bytearray(rng.choices(string.printable.encode(), k=128))
    return bytearray(rng.choices((0, 0, 0, 1, 0x80, 0xFF), k=128))


class RandomMemory:
    """A module: its memories by address, and what the displays have to make of some of their bytes."""

    def __init__(self, number):
        rng = random.Random(f"{SEED}-{number}")
        self.number = number
        self.devices = {}
        for address, share in ((A0, 0.98), (A2, 0.9), (B0, 0.4), (B2, 0.4)):
            if rng.random() < share:
                pages = {page: half(rng) for page in (0, *rng.sample(range(1, 256), rng.choice((0, 0, 1, 3))))}
                self.devices[address] = half(rng), pages
        if not self.devices:
            self.devices[A2] = half(rng), {0: half(rng)}
        if A0 in self.devices:
            family = rng.random()
            self.devices[A0][0][0] = rng.choice(SFP if family < 0.5 else QSFP if family < 0.85 else range(256))
        for address in self.devices.keys() & {A0, B0}:
            lower = self.devices[address][0]
            if rng.random() < 0.8:
                lower[60:62] = rng.choice(PLAIN_NM + DOUBLE_NM + (0, 1550)).to_bytes(2, "big")
            if rng.random() < 0.8:
                lower[92] = rng.choice(MONITORING)

    def read(self, address, register):
        """The big-endian word at a register of a lower half; nothing answers with zeros."""
        lower = self.devices[address][0] if address in self.devices else bytes(128)
        return int.from_bytes(lower[register : register + 2], "big")

    def byte(self, address, register):
        return self.read(address, register) >> 8

    @property
    def family(self):
        identifier = self.byte(A0, 0)
        return "sfp" if identifier in SFP else "qsfp" if identifier in QSFP else None

    def paths(self):
        """Of each optical path of an SFP: its wavelength, calibration, and what it measures, None without one."""
        for identity, diagnostics in ((A0, A2), (B0, B2)):
            wavelength, monitoring = self.read(identity, 60), self.byte(identity, 92)
            if identity == B0 and wavelength == 0:
                return
            calibration = "internal" if monitoring & 0x20 else "external" if monitoring & 0x10 else None
            values = sfp_path(lambda register: self.read(diagnostics, register), wavelength, monitoring, identity == A0)
            yield wavelength, calibration, values

    def lanes(self):
        """What an SFF-8636 module measures."""
        return qsfp(lambda register: self.read(A0, register))

    def check_rows(self, rows):
        if self.family is None:
            assert rows == [5 * ["N/A"]]
            return
        expected = [self.lanes()] if self.family == "qsfp" else [values or [] for _, _, values in self.paths()]
        assert list(map(len, rows)) == list(map(len, expected))
        for row, values in zip(rows, expected):
            for text, value in zip(row, values):
                assert value.shows(text), (text, value)

    def text(self, first, last):
        """A text of the identity as JSON has it; each byte that is no UTF-8 is U+FFFD."""
        field = bytes(self.addressed(A0, register) for register in range(first, last + 1)).split(b"\0")[0]
        return re.sub("[\udc80-\udcff]", "\ufffd", field.decode("utf-8", "surrogateescape"))

    def expected_json(self):
        """The keys that are filled: texts, numbers, and quantities that are texts of a number."""
        if self.family is None:
            return {}
        places = {"sfp": ((20, 35), (56, 59), (68, 83)), "qsfp": ((148, 163), (184, 185), (196, 211))}[self.family]
        filled = {key: self.text(*place) for key, place in zip(VENDOR_KEYS, places)}
        if self.family == "qsfp":
            word = self.addressed(A0, 186) + 256 * self.addressed(A0, 187)
            return filled | dict(zip(LANE_KEYS, self.lanes())) | {"wavelength": word // 20 if word else ""}
        for wavelength, _, values in self.paths():
            plain = wavelength in PLAIN_NM
            if plain or wavelength in DOUBLE_NM:
                filled["wavelength" if plain else "xgWavelength"] = wavelength
            if values:
                temperature, voltage, bias, transmitted, received = values
                found = {"temperature": temperature, "voltage": voltage, "biasCurrent": bias, "biasCurrentTx1": bias,
                         "transmitPowerTx1": transmitted, "receivePowerRx1": received}
                filled |= found if plain else {"xg" + key[0].upper() + key[1:]: value for key, value in found.items()}
        return filled

    def check_json(self, shown):
        expected = self.expected_json()
        for key, found in shown.items():
            if not key.startswith("interface"):
                value = expected.pop(key, "")
                assert value.shows(found) if hasattr(value, "shows") else found == value, (key, found, value)
        assert not expected

    def check_detail(self, detail, name):
        assert detail.count(f"{name:<14}\r\n") == (5 if self.family else 0)


    def addressed(self, address, register):
        """A byte as a reader gets it who has selected page 0 of a QSFP, and no page of others."""
        if address not in self.devices:
            return 0
        lower, pages = self.devices[address]
        if register < 128:
            return lower[register]
        page = 0 if self.family == "qsfp" or len(pages) == 1 else lower[127]
        return pages.get(page, pages[0])[register - 128]

    def check_idprom(self, session, kind, port):
        """One of the blocks, or the whole display; which one comes by turns."""
        block = BLOCKS[self.number % len(BLOCKS)]
        word = "gigabitEthernet" if kind == "ge" else ("gpon", "xgpon")[self.number % 2]
        shown = session.run(f"show idprom interface {word} 0/{port}" + (f" {block}" if block else ""))
        assert shown == (idprom(self.addressed, block), SUCCESS)


def display(session, memories):
    """Runs all displays and compares each cage with the memory in it."""
    rows, objects, detail = text_rows(session), json_objects(session), show_detail(session)
    for interface, memory in zip(INTERFACES, memories):
        name = text_name(*interface)
        memory.check_rows(rows[name])
        memory.check_json(objects[name])
        memory.check_detail(detail, name)
        memory.check_idprom(session, *interface)


@pytest.mark.slow
def test_any_bytes_are_displayed_and_nothing_is_lost(olt):
    decoded = collections.Counter()
    with olt.vty() as session:
        text_rows(session)
        footprint = Footprint(olt)
        for first in range(0, COUNT, len(INTERFACES)):
            memories = [RandomMemory(number) for number in range(first, first + len(INTERFACES))]
            try:
                for (kind, port), memory in zip(INTERFACES, memories):
                    kind = "xgpon" if kind == "gpon" and memory.number % 2 else kind
                    plug_image(olt, kind, port, memory.devices)
                display(session, memories)
                footprint.check()
            except Exception as error:
                raise AssertionError(f"memories {first} to {first + len(INTERFACES) - 1} of seed {SEED}") from error
            for memory in memories:
                decoded[memory.family] += 1
                if memory.family == "sfp":
                    decoded.update(f"{calibration} path" for _, calibration, _ in memory.paths())
    assert sum(decoded[family] for family in ("sfp", "qsfp", None)) >= COUNT
    for what in ("sfp", "qsfp", "internal path", "external path"):
        assert decoded[what] >= COUNT // 20, f"{what} is decoded too rarely to tell anything: {decoded}"
