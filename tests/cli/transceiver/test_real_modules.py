# SPDX-License-Identifier: GPL-2.0-or-later
"""Memories of real modules, as their owners published them, agree with an independent decode.

Compared is what the displays decode as the standards do: texts, the wavelengths they know, and the values of
modules that calibrate internally, are not below zero degrees and count in single units.
"""

import pytest
from footprint import Footprint
from real_modules import DUMPS, PLAIN_NM, XG_NM, Comparison, family, need_dumps, plug, readings
from transceiver_rows import json_objects, show_detail, text_rows

need_dumps()

# One cage of each kind; GPON and XG-PON interfaces share theirs and are listed as GPON.
CAGES = {("gpon", 1): "GPON 0/1", ("xgpon", 5): "GPON 0/5", ("ge", 3): "GE 0/3"}
TEXTS = {"vendorName": "vendor_name", "vendorRevision": "vendor_rev", "vendorSerialNumber": "vendor_sn"}
LANES = range(4)


def comparisons_due(dump):
    """How many values the two displays of one cage have in common with the decode."""
    decode = dump["standard_decode"]
    if family(dump) is None:
        return 0
    due = sum(field in decode for field in TEXTS.values())
    if family(dump) == "sfp":
        due += decode.get("wavelength_nm") in PLAIN_NM + XG_NM
    if readings(dump):
        # An SFP's JSON has the bias twice.
        due += 5 + 6 if family(dump) == "sfp" else 14 + 14
    return due


def plain(text):
    """A text of a memory as JSON has it, without padding."""
    return text.encode("latin-1").decode("utf-8", "replace").strip(" \0")


def json_readings(shown, dump):
    """The values of a JSON object, in the order of readings()."""
    if family(dump) == "qsfp":
        groups = ("biasCurrentTx", "transmitPowerTx", "receivePowerRx")
        return [shown["temperature"], shown["voltage"]] + [shown[f"{group}{lane + 1}"] for group in groups for lane in LANES]
    keys = ("temperature", "voltage", "biasCurrent", "transmitPowerTx1", "receivePowerRx1")
    if dump["standard_decode"].get("wavelength_nm", 850) not in PLAIN_NM:
        keys = ["xg" + key[0].upper() + key[1:] for key in keys]
    return [shown[key] for key in keys]


def compare(comparison, dump, rows, shown, where):
    decode = dump["standard_decode"]
    for key, field in TEXTS.items():
        if field in decode:
            comparison.same(shown[key].strip(), plain(decode[field]), f"{where} {key}")
    wavelength = decode.get("wavelength_nm")
    if family(dump) == "sfp" and wavelength in PLAIN_NM + XG_NM:
        key = "wavelength" if wavelength in PLAIN_NM else "xgWavelength"
        comparison.same(shown[key], wavelength, f"{where} {key}")
    expected = readings(dump)
    if not expected:
        return
    (row,) = rows
    in_json = json_readings(shown, dump)
    assert len(row) == len(in_json) == len(expected), where
    for place, value in enumerate(expected):
        comparison.close(row[place], value, f"{where} text value {place}")
        comparison.close(in_json[place], value, f"{where} JSON value {place}")
    if family(dump) == "sfp":
        prefix = "biasCurrent" if shown["temperature"] else "xgBiasCurrent"
        comparison.close(shown[prefix + "Tx1"], expected[2], f"{where} {prefix}Tx1")


@pytest.fixture(scope="module")
def session(olt):
    with olt.vty() as session:
        text_rows(session)
        yield session


@pytest.fixture(scope="module")
def footprint(olt, session):
    return Footprint(olt)


@pytest.mark.parametrize("dump", DUMPS, ids=lambda dump: dump["id"])
def test_a_real_module_is_shown_as_the_standards_decode_it(olt, session, footprint, dump):
    for (kind, port), name in CAGES.items():
        comparison = Comparison()
        plug(olt, dump, kind, port)
        rows, shown = text_rows(session)[name], json_objects(session)[name]
        detail = show_detail(session)
        olt.boardctl("unplug", kind, port)
        footprint.check()

        assert detail.count(f"{name:<14}\r\n") == (5 if family(dump) else 0)
        if family(dump) is None:
            assert rows == [5 * ["N/A"]]
            assert not any(value for key, value in shown.items() if not key.startswith("interface"))
        else:
            compare(comparison, dump, rows, shown, f"{dump['id']} in {kind} {port}")
        assert comparison.made == comparisons_due(dump)


def test_the_folder_has_values_of_every_kind_to_compare():
    kinds = [(family(dump), bool(readings(dump))) for dump in DUMPS]
    assert kinds.count(("sfp", True)) >= 5 and kinds.count(("qsfp", True)) >= 5
    assert (None, False) in kinds, "a module of no known family"
    due = [comparisons_due(dump) for dump in DUMPS]
    assert due.count(0) <= kinds.count((None, False)), "every known module has something to compare"
