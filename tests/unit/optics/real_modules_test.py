# SPDX-License-Identifier: GPL-2.0-or-later
"""Memories of real modules, as their owners published them, through `optics decode --json`.

They lie outside the project, in the folder that DIAGD_MODULE_DUMPS names or in shared/modules beside it; without them
nothing is tested, and the exit status is 77.  index.json has for each dump what SFF-8472 and SFF-8636 make of its bytes
("standard_decode"), calculated by others; every value of it is compared.  A second test takes the mistakes that readers
make with such memories, one by one, and counts where each could happen: none may.

usage: real_modules_test.py OPTICS
"""

import json
import os
import subprocess
import sys
import unittest
from pathlib import Path

PROJECT = Path(__file__).resolve().parents[3]
FOLDER = Path(os.environ.get("DIAGD_MODULE_DUMPS", PROJECT.parent / "shared" / "modules"))
SKIPPED = 77
PROGRAM = ""  # path of optics

CMIS = (0x18, 0x19, 0x1E)
QUANTITIES = {"temperature": "temp_c", "voltage": "vcc_v", "bias": "bias_ma", "tx_power": "tx_mw", "rx_power": "rx_mw"}
LIMITS = {"high_alarm": "hi_alarm", "low_alarm": "lo_alarm", "high_warning": "hi_warn", "low_warning": "lo_warn"}
IDENTITY = {
    "identifier": "identifier",
    "ext_identifier": "ext_identifier",
    "connector": "connector",
    "compliance": "transceiver",
    "ext_compliance": "ext_compliance",
    "encoding": "encoding",
    "encoding_name": "encoding_name",
    "rate_id": "rate_id",
    "oui": "vendor_oui",
    "standard_revision": "sff8472_rev",
    "device_technology": "device_tech",
}
TEXTS = {"vendor": "vendor_name", "part": "vendor_pn", "revision": "vendor_rev", "serial": "vendor_sn", "date": "date_code"}


def escaped(text):
    """What may be shown of a field's text."""
    return "".join(c if " " <= c <= "~" and c != "\\" else f"\\x{ord(c):02x}" for c in text)


class Dump:
    def __init__(self, entry):
        self.id = entry["id"]
        self.decode = entry["standard_decode"]
        self.published = entry["published"]
        self.bytes = {part: (FOLDER / name).read_bytes() for part, name in entry["files"].items()}
        files = [str(FOLDER / name) for name in entry["files"].values()]
        run = subprocess.run([PROGRAM, "decode", "--json", *files], capture_output=True, text=True, timeout=60, check=False)
        assert run.returncode in (0, 1) and run.stderr == "", f"{self.id}: {run.returncode} {run.stderr}"
        self.status = run.returncode
        self.shown = json.loads(run.stdout)

    @property
    def is_qsfp(self):
        return "page00" in self.bytes

    @property
    def is_cmis(self):
        return self.decode.get("identifier") in CMIS

    @property
    def identity(self):
        return self.shown["identity"]

    def shown_values(self):
        """Every value shown: quantity, index of the lane or None, JSON."""
        yield "temperature", None, self.shown["temperature"]
        yield "voltage", None, self.shown["voltage"]
        for lane in self.shown["lanes"]:
            for quantity in ("bias", "tx_power", "rx_power"):
                yield quantity, lane["lane"] - 1, lane[quantity]

    def word(self, quantity, lane):
        """The decode's number, whatever it is worth; None where the dump has none."""
        number = self.decode.get(QUANTITIES[quantity])
        return number[lane] if isinstance(number, list) else number

    def measures(self, quantity, lane):
        """Whether the number is a measurement, by the standards and by what silent modules prove."""
        decode = self.decode
        if self.word(quantity, lane) is None:
            return False
        if not self.is_qsfp:
            return decode.get("ddm", True) and not decode.get("addr_change", False)
        live = self.bytes["lower"][22:58]
        of_lanes = quantity in ("bias", "tx_power", "rx_power")
        if decode["copper"] and (decode["flat_mem"] or of_lanes):
            return False
        numbers = decode[QUANTITIES[quantity]]
        proved = any(numbers) if isinstance(numbers, list) else numbers != 0
        if quantity in ("bias", "rx_power"):
            return any(live)
        claim = {"temperature": 1 << 5, "voltage": 1 << 4, "tx_power": 1 << 2}[quantity]
        told = quantity == "tx_power" or self.bytes["lower"][1] >= 8
        return proved or (told and decode["diag_type"] & claim != 0)


class RealModules(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.dumps = [Dump(entry) for entry in json.loads((FOLDER / "index.json").read_text())["dumps"]]
        cls.compared = 0

    def same(self, shown, expected, what):
        self.assertEqual(shown, expected, what)
        type(self).compared += 1

    def close(self, shown, expected, what):
        self.assertIsNotNone(shown, what)
        self.assertAlmostEqual(shown, expected, delta=1e-6 * max(1, abs(expected)), msg=what)
        type(self).compared += 1

    def compare_identity(self, dump):
        decode, identity = dump.decode, dump.identity
        for key, name in IDENTITY.items():
            if name in decode:
                self.same(identity[key], decode[name], f"{dump.id} {key}")
        for key, name in TEXTS.items():
            if name in decode:
                self.same(identity[key], escaped(decode[name]), f"{dump.id} {key}")
        if decode.get("identifier_name") not in (None, "reserved"):
            self.same(identity["identifier_name"], decode["identifier_name"], dump.id)
        if decode.get("connector_name") not in (None, "reserved"):
            self.same(identity["connector_name"], decode["connector_name"], dump.id)
        # A rate byte of 255 refers to another one, which is not in a memory that was cut off.
        beyond = "a0" in dump.bytes and dump.bytes["a0"][12] == 255 and len(dump.bytes["a0"]) <= 66
        self.same(identity["rate_mbd"], None if beyond else decode["br_nominal_mbd"] or None, f"{dump.id} rate")
        self.compare_wavelength(dump)
        self.compare_lengths(dump)
        if "options" in decode:
            self.same(int(identity["options"], 16), decode["options"], f"{dump.id} options")

    def compare_wavelength(self, dump):
        decode, identity = dump.decode, dump.identity
        self.same(identity["wavelength_nm"], decode["wavelength_nm"] or None, f"{dump.id} wavelength")
        if "wavelength_tol_nm" in decode and identity["wavelength_nm"] is not None:
            self.close(identity["wavelength_tolerance_nm"], decode["wavelength_tol_nm"], dump.id)
        if "cable_compliance" in decode:
            self.same(identity["cable_compliance"], decode["cable_compliance"], dump.id)
        if "cu_att_2g5" in decode:
            attenuations = {entry["ghz"]: entry["db"] for entry in identity["attenuation"]}
            expected = {2.5: "cu_att_2g5", 5: "cu_att_5g", 7: "cu_att_7g", 12.9: "cu_att_12g9"}
            self.same(attenuations, {ghz: decode[name] for ghz, name in expected.items()}, f"{dump.id} attenuation")

    def compare_lengths(self, dump):
        decode, lengths = dump.decode, dump.identity["lengths_m"]
        for fibre in ("om1", "om2", "om3"):
            self.same(lengths[fibre], decode[f"len_{fibre}_m"] or None, f"{dump.id} {fibre}")
        # Two fields of single mode fibre: hundreds of metres as far as they reach, else kilometres.
        hundreds, kilometres = decode.get("len_smf_100m_m", 0), decode["len_smf_km"] * 1000
        smf = kilometres if hundreds in (0, 25500) and kilometres else hundreds
        self.same(lengths["smf"], smf or None, f"{dump.id} smf")
        copper = decode.get("len_copper_m", decode.get("len_cable_m"))
        unit = 2 if dump.is_qsfp else 10  # of OM4, which shares the field
        self.same(lengths["cable"] or (lengths["om4"] or 0) / unit, copper, f"{dump.id} cable")

    def compare_checks(self, dump):
        checks = {check["name"]: check for check in dump.shown["checks"]}
        for key in ("base", "ext", "dmi"):
            if f"cc_{key}_ok" not in dump.decode or (key == "dmi" and not dump.decode.get("ddm", True)):
                continue
            check = checks.get("CC_" + key.upper())
            if check is None:
                self.assertTrue(dump.decode.get("addr_change"), f"{dump.id} {key}")
                continue
            self.same(check["computed"], dump.decode[f"cc_{key}_computed"], f"{dump.id} {key}")
            self.same(check["stored"], dump.decode[f"cc_{key}_stored"], f"{dump.id} {key}")
            self.same(check["result"] == "good", dump.decode[f"cc_{key}_ok"], f"{dump.id} {key}")

    def compare_values(self, dump):
        for quantity, lane, value in dump.shown_values():
            what = f"{dump.id} {quantity} of lane {lane}"
            if not dump.measures(quantity, lane):
                self.same((value["value"], value["state"]), (None, "unsupported"), what)
                continue
            number = dump.word(quantity, lane)
            if quantity.endswith("_power") and number == 0:
                self.same((value["value"], value["state"], value["reason"]), (None, "no-light", "no-light"), what)
            elif quantity.endswith("_power"):
                self.close(value["mw"], number, what)
                dbm = dump.decode[QUANTITIES[quantity].replace("_mw", "_dbm")]
                self.close(value["value"], dbm[lane] if isinstance(dbm, list) else dbm, what)
            else:
                self.close(value["value"], number, what)

    def compare_thresholds(self, dump):
        if dump.decode.get("addr_change") or not dump.decode.get("ddm", True):
            return
        for quantity, name in QUANTITIES.items():
            limits = dump.decode.get("thr", {}).get(name)
            shown = dump.shown["thresholds"][quantity]
            if limits is None:
                self.same(shown["state"], "unsupported", f"{dump.id} {quantity}")
                continue
            for key, limit in LIMITS.items():
                shown_as = key + "_mw" if name.endswith("_mw") else key
                self.close(shown[shown_as], limits[limit], f"{dump.id} {quantity} {key}")
                if name.endswith("_mw"):
                    dbm = dump.decode["thr"][name.replace("_mw", "_dbm")][limit]
                    if dbm is None:
                        self.same(shown[key], None, f"{dump.id} {quantity} {key}")
                    else:
                        self.close(shown[key], dbm, f"{dump.id} {quantity} {key}")

    def compare_diagnostics(self, dump):
        decode, shown = dump.decode, dump.shown["diagnostics"]
        pairs = {"diag_type": "type", "enhanced_options": "enhanced_options", "addr_change": "address_change"}
        pairs |= {"flat_mem": "flat_memory", "data_not_ready": "data_not_ready"}
        for name, key in pairs.items():
            if name in decode:
                self.same(shown[key], decode[name], f"{dump.id} {key}")
        if "calibration" in decode:
            self.same(shown["calibration"], decode["calibration"], f"{dump.id} calibration")
        if decode.get("ddm"):
            kind = "average" if decode["rx_power_average"] else "modulation-amplitude"
            self.same(shown["rx_power_kind"], kind, f"{dump.id} kind of power")
            if "status" in decode and not decode["addr_change"]:
                self.same(shown["status"], decode["status"], f"{dump.id} status")
        for name, key in {"flags.rx_los": "rx_los", "flags.tx_los": "tx_los", "flags.tx_fault": "tx_fault"}.items():
            if name in decode and not decode["flat_mem"]:
                lanes = "".join("1" if lane[key] else "0" for lane in dump.shown["lanes"])
                self.same(lanes, decode[name], f"{dump.id} {key}")

    def test_every_value_is_what_the_standards_say(self):
        for dump in self.dumps:
            if dump.is_cmis:
                # A standard of its own: the decode by SFF-8636 is of no use.
                self.assertEqual(dump.shown["family"], "CMIS")
                self.assertEqual(dump.identity["vendor"], dump.published["onl_vendor"], dump.id)
                continue
            if dump.identity is not None:
                self.compare_identity(dump)
            self.compare_checks(dump)
            self.compare_values(dump)
            self.compare_thresholds(dump)
            self.compare_diagnostics(dump)
        print(f"{type(self).compared} values of {len(self.dumps)} modules compared")
        self.assertGreater(type(self).compared, 0)

    def count(self, what, cases, wrong):
        """cases: dumps in which the mistake can be made; wrong(dump) is whether it is."""
        mistaken = [dump.id for dump in cases if wrong(dump)]
        print(f"{what:<48} possible in {len(cases):2}, wrong in {len(mistaken)}")
        self.assertTrue(cases, what)
        self.assertEqual(mistaken, [], what)

    def test_no_mistake_of_other_readers_is_made(self):
        dumps = self.dumps
        plain = [dump for dump in dumps if not dump.is_cmis and dump.identity is not None]
        qsfp = [dump for dump in plain if dump.is_qsfp]
        sfp = [dump for dump in plain if not dump.is_qsfp]
        text = lambda dump: json.dumps(dump.shown)
        values = lambda dump: [value for _, _, value in dump.shown_values()]
        silent = [d for d in plain if d.decode.get("ddm") is False or (d.is_qsfp and d.decode["flat_mem"] and d.decode["copper"])]
        self.count("identity or other bytes as readings", [d for d in sfp if "a2" not in d.bytes],
                   lambda d: any(value["value"] is not None for value in values(d)))
        self.count("wavelength of a QSFP", [d for d in qsfp if d.decode["wavelength_nm"]],
                   lambda d: d.identity["wavelength_nm"] != d.decode["wavelength_nm"])
        self.count("rate unknown", [d for d in plain if d.decode["br_nominal_mbd"] not in (0, 25500) or d.bytes.get("a0", b"")[66:67]],
                   lambda d: d.identity["rate_mbd"] != (d.decode["br_nominal_mbd"] or None))
        for lane_power in ("tx_power", "rx_power"):
            dark = [d for d in plain if 0 in [d.word(lane_power, lane) for lane in (range(4) if d.is_qsfp else [None])]]
            self.count(f"-inf, {lane_power}", dark, lambda d: "-inf" in text(d).lower() or "infinity" in text(d).lower() or any(
                value["value"] is not None for quantity, lane, value in d.shown_values()
                if quantity == lane_power and d.word(quantity, lane) == 0))
        self.count("diagnostics byte of a QSFP", qsfp, lambda d: d.shown["diagnostics"]["type"] != d.bytes["page00"][220 - 128])
        self.count("code of a cable as wavelength", [d for d in sfp if "cable_compliance" in d.decode],
                   lambda d: d.identity["wavelength_nm"] is not None)
        self.count("attenuation as wavelength", [d for d in qsfp if "cu_att_2g5" in d.decode],
                   lambda d: d.identity["wavelength_nm"] is not None)
        self.count("no diagnostics as numbers", silent,
                   lambda d: any(value["state"] != "unsupported" or value["value"] is not None for value in values(d)))
        self.count("type not told", [d for d in plain if d.decode["identifier_name"] != "reserved"],
                   lambda d: d.identity["identifier_name"] != d.decode["identifier_name"])
        bad = [d for d in plain if False in [d.decode.get(f"cc_{key}_ok") for key in ("base", "ext", "dmi")]]
        self.count("wrong check code not told", bad,
                   lambda d: d.status != 1 or d.shown["trusted"] or any(v["judgement"] != "not-judged" for v in values(d)))
        odd = [d for d in plain if any(escaped(d.decode.get(name, "")) != d.decode.get(name, "") for name in TEXTS.values())]
        self.count("bytes that are no text", odd, lambda d: not text(d).isascii() or any(
            d.identity[key] != escaped(d.decode[name]) for key, name in TEXTS.items() if name in d.decode))
        live = [d for d in qsfp if d.measures("temperature", None) and d.decode["diag_type"] & 0x30 == 0]
        self.count("live module without values", live, lambda d: d.shown["temperature"]["state"] != "ok")
        classes = (850, 1310, 1311, 1490, 1535, 1577, 1791)
        self.count("wavelength of no known class", [d for d in sfp if d.decode["wavelength_nm"] not in (None, 0, *classes)],
                   lambda d: d.identity["wavelength_nm"] != d.decode["wavelength_nm"])

    def test_flags_of_the_module_are_shown(self):
        flagged = 0
        for dump in self.dumps:
            a0, a2 = dump.bytes.get("a0", b""), dump.bytes.get("a2", b"")
            if len(a0) < 96 or len(a2) < 118 or not a0[93] & 0x80 or dump.decode["addr_change"]:
                continue
            alarms, warnings = int.from_bytes(a2[112:114], "big"), int.from_bytes(a2[116:118], "big")
            flagged += alarms != 0 or warnings != 0
            for place, (quantity, _, value) in enumerate(dump.shown_values()):
                high, low = 1 << 15 - 2 * place, 1 << 14 - 2 * place
                expected = {name for name, word, bit in (("high-alarm", alarms, high), ("low-alarm", alarms, low),
                                                         ("high-warning", warnings, high), ("low-warning", warnings, low)) if word & bit}
                self.assertEqual(set(value["flags"]), expected, f"{dump.id} {quantity}")
        print(f"flags raised by {flagged} modules")
        self.assertGreater(flagged, 0)


if __name__ == "__main__":
    PROGRAM = sys.argv.pop(1)
    if not (FOLDER / "index.json").exists():
        print(f"not tested: no memories of real modules in {FOLDER}; DIAGD_MODULE_DUMPS names a folder of them")
        sys.exit(SKIPPED)
    unittest.main()
