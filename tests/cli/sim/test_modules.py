# SPDX-License-Identifier: GPL-2.0-or-later
"""The modules of sim/modules in the daemon's eyes: what a description says is what is shown."""

import json

import pytest

from olt import PROJECT

FILES = sorted((PROJECT / "sim" / "modules").glob("*.json"))
DESCRIPTIONS = {file.stem: json.loads(file.read_text()) for file in FILES}
READ = [name for name, module in DESCRIPTIONS.items() if module["class"] == "sfp" and "diagnostics" in module]
XG_NM = (1577, 1791)
FIELDS = {  # of a description: key shown, and how far rounding in the memory may lead
    "temperature_c": ("temperature", 0.005),
    "vcc_v": ("voltage", 0.001),
    "bias_ma": ("biasCurrentTx1", 0.01),
    "tx_dbm": ("transmitPowerTx1", 0.005),
    "rx_dbm": ("receivePowerRx1", 0.1),  # a bit is worth 0.06 dB of the weakest
}


def shown_key(key, wavelength):
    return "xg" + key[0].upper() + key[1:] if wavelength in XG_NM else key


@pytest.mark.parametrize("name", READ)
def test_readings_are_shown_as_described(olt, name):
    olt.boardctl("plug", "gpon", 1, PROJECT / "sim" / "modules" / f"{name}.json")
    (found,) = json.loads(olt.run("show transceiver json")[0])["PON 0/1"]
    module = DESCRIPTIONS[name]
    for path in filter(None, (module, module.get("second_path"))):
        for field, (key, error) in FIELDS.items():
            value = float(found[shown_key(key, path["wavelength_nm"])])
            assert value == pytest.approx(path["diagnostics"][field], abs=error), (field, value)


@pytest.mark.parametrize("wavelength, units, factor", [(1490, "double", 0.5), (1577, "standard", 2)])
def test_units_that_contradict_the_wavelength_are_shown_in_those_of_the_wavelength(olt, tmp_path, wavelength, units, factor):
    file = tmp_path / "odd.json"
    olt.boardctl("module", "make", file, "--wavelength", wavelength, "--units", units, "--bias", 20, "--tx", 0)
    olt.boardctl("plug", "gpon", 1, file)
    (found,) = json.loads(olt.run("show transceiver json")[0])["PON 0/1"]
    assert float(found[shown_key("biasCurrentTx1", wavelength)]) == 20 * factor
    assert float(found[shown_key("transmitPowerTx1", wavelength)]) == pytest.approx({0.5: -3.01, 2: 3.01}[factor], abs=0.001)
