# SPDX-License-Identifier: GPL-2.0-or-later
"""The identification of real modules, as their owners published their memories, is shown as it was decoded by
others; and byte by byte as an independent decoder has it."""
import re

import pytest
from footprint import Footprint
from real_modules import DUMPS, family, need_dumps, pages, plug
from sff_texts import CONNECTORS, QSFP_ENCODINGS, SFP_ENCODINGS, idprom, name
from vty import SUCCESS

need_dumps()

CAGES = {("gpon", 1): "gpon", ("xgpon", 5): "xgpon", ("ge", 3): "gigabitEthernet"}
# Decoded fields by the label under which they are shown as they are.
TEXTS = {"Vendor Name": "vendor_name", "Vendor Part Number": "vendor_pn", "Vendor Revision": "vendor_rev",
         "Vendor Serial Number": "vendor_sn", "Manufacture Serial Number": "vendor_sn"}


@pytest.fixture(scope="module")
def session(olt):
    with olt.vty() as session:
        session.run("show idprom interface gpon 0/1")
        yield session


@pytest.fixture(scope="module")
def footprint(olt, session):
    return Footprint(olt)


def shown_fields(text):
    return {line[:31].strip(): line[31:].removeprefix(":    ") for line in text.split("\r\n") if line[31:32] == ":"}


def plain(text):
    """A decoded text as a terminal may have it: what an unwritten memory holds would begin a telnet command."""
    return text.encode("latin-1", "replace").decode("latin-1").strip(" \0").split("\0")[0].rstrip().replace("\xff", "?")


def compare(text, dump):
    """Compares the fields of a display with the decode; returns how many there were."""
    decode, shown = dump["standard_decode"], shown_fields(text)
    compared = {label: (shown[label].rstrip(), plain(decode[field])) for label, field in TEXTS.items() if field in decode}
    if "date_code" in decode:
        compared["Manufacture Date"] = (shown["Manufacture Date"].rstrip(), ("20" + plain(decode["date_code"])))
    if "vendor_oui" in decode:
        compared["Vendor OUI"] = (shown["Vendor OUI"], decode["vendor_oui"].replace(":", " "))
    if "connector" in decode:
        compared["Connector"] = (shown["Connector"], name(CONNECTORS, decode["connector"]))
    if "encoding" in decode:
        encodings = SFP_ENCODINGS if family(dump) == "sfp" else QSFP_ENCODINGS
        compared["Encoding"] = (shown["Encoding"], name(encodings, decode["encoding"]))
    if "transceiver" in decode:
        compared["Transceiver"] = (bytes.fromhex(shown["Transceiver"].replace("0x", "")).hex(), decode["transceiver"])
    if decode.get("wavelength_nm"):
        compared["Wavelength(nm)"] = (int(shown["Wavelength(nm)"]), int(decode["wavelength_nm"]))
    if "diag_type" in decode and family(dump) == "sfp":
        compared["Digital Diagnostic Monitoring"] = (int(shown["Digital Diagnostic Monitoring"], 16), decode["diag_type"])
    wrong = {label: pair for label, pair in compared.items() if pair[0] != pair[1]}
    assert not wrong
    return len(compared)


@pytest.mark.parametrize("dump", DUMPS, ids=lambda dump: dump["id"])
def test_the_identification_of_a_real_module_is_shown_as_others_decoded_it(olt, session, footprint, dump):
    memory = pages(dump)

    def read(address, register):
        return memory[address][register]

    for (kind, port), word in CAGES.items():
        plug(olt, dump, kind, port)
        for block in (None, "vendor", "manufacture"):
            text, rc = session.run(f"show idprom interface {word} 0/{port}" + (f" {block}" if block else ""))
            assert (text, rc) == (idprom(read, block), SUCCESS)
            if block is None and family(dump) is not None:
                assert compare(text, dump) >= 7 or "a0" not in dump["files"]
                rows = re.findall(r"^[0-9a-f]{3} :  ((?:[0-9a-f]{2} ){10})\r$", text, re.MULTILINE)
                raw = memory[0x51 if family(dump) == "sfp" else 0x50][128:248]
                assert bytes.fromhex("".join(rows)) == raw
        olt.boardctl("unplug", kind, port)
    footprint.check()


def test_the_folder_has_modules_of_both_maps_and_of_neither():
    families = [family(dump) for dump in DUMPS]
    assert min(families.count("sfp"), families.count("qsfp")) >= 10 and None in families
