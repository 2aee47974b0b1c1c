# SPDX-License-Identifier: GPL-2.0-or-later
"""Memories of real modules, as their owners published them: where they lie, and plugging them.

They lie outside the project, in the folder that DIAGD_MODULE_DUMPS names: `index.json` with a list "dumps" of
objects {"id", "files": {part: file name}, "standard_decode": {field: value}}.  A part is "a0" or "a2" of an SFP,
"lower" or "pageNN" of a QSFP; the decode is what SFF-8472 and SFF-8636 make of the bytes.
"""

import json
import os
from pathlib import Path

import pytest
from module_memory import path as sfp_path
from olt import PROJECT
from sff_texts import QSFP, SFP

FOLDER = Path(os.environ.get("DIAGD_MODULE_DUMPS", PROJECT.parent / "shared" / "modules"))
PRESENT = (FOLDER / "index.json").exists()
DUMPS = json.loads((FOLDER / "index.json").read_text())["dumps"] if PRESENT else []
LAST_DIGIT = 0.001
PLAIN_NM, XG_NM = (850, 1310, 1311, 1490, 1535), (1577, 1791)  # under the plain keys, under the xg keys


def need_dumps():
    """Skips the calling test module, and says so, on a machine that has no dumps."""
    if not PRESENT:
        pytest.skip(f"memories of real modules are their owners' and not in the tree; none in {FOLDER}, DIAGD_MODULE_DUMPS "
                    "names a folder of them", allow_module_level=True)


def is_sfp(dump):
    return "a0" in dump["files"] or "a2" in dump["files"]


def family(dump):
    """Which memory the displays take it for: sfp, qsfp or None."""
    identifier = dump["standard_decode"].get("identifier", 0x03)
    return "sfp" if identifier in SFP else "qsfp" if identifier in QSFP else None


def part(dump, name):
    """A part of the dump, filled up with zeros."""
    data = (FOLDER / dump["files"][name]).read_bytes() if name in dump["files"] else b""
    return data.ljust(256, b"\0")


def pages(dump):
    """The module's memory once it is plugged, by address; of a QSFP, with page 00h."""
    if not is_sfp(dump):
        return {0x50: part(dump, "lower")[:128] + part(dump, "page00")[:128]}
    identity = part(dump, "a0") if "a0" in dump["files"] else sfp_path(850)[0]
    return {0x50: identity, 0x51: part(dump, "a2")}


def readings(dump):
    """The five values of an SFP, the two and three times four of a QSFP; None where the formulas differ."""
    decode = dump["standard_decode"]
    kind = family(dump)
    if kind is None or decode.get("temp_c") is None or decode["temp_c"] < 0:
        return None
    if kind == "sfp" and (decode.get("calibration", "internal") != "internal" or decode.get("wavelength_nm") in XG_NM):
        return None
    fields = [decode[field] for field in ("temp_c", "vcc_v", "bias_ma", "tx_dbm", "rx_dbm")]
    return fields if kind == "sfp" else fields[:2] + sum(fields[2:], [])


class Comparison:
    def __init__(self):
        self.made = 0

    def same(self, shown, expected, what):
        assert shown == expected, what
        self.made += 1

    def close(self, shown, expected, what):
        """expected: None is the power of a lane that gives no light."""
        if expected is None:
            assert shown == "-inf", what
        else:
            assert abs(float(shown) - expected) <= LAST_DIGIT, f"{what}: {shown} is not {expected}"
        self.made += 1


def plug(olt, dump, kind, port):
    """Plugs the files as they are; where the dump ends early, only the operator's --pad fills it up."""
    files = [FOLDER / name for name in dump["files"].values()]
    before = olt.boardctl("show")
    if "a2" in dump["files"] and "a0" not in dump["files"]:
        assert "give the dump of its identification first" in olt.boardctl_refused("plug", kind, port, *files)
        identity = olt.state / "identity.a0.bin"
        identity.write_bytes(sfp_path(850)[0])
        files = [identity, *files]
    if any(file.stat().st_size not in ((128, 256) if is_sfp(dump) else (128,)) for file in files):
        assert "truncated at offset" in olt.boardctl_refused("plug", kind, port, *files)
        assert olt.boardctl("show") == before, "a refused dump leaves the cage as it was"
        files.append("--pad")
    olt.boardctl("plug", kind, port, *files)
