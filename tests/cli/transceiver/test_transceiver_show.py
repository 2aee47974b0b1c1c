# SPDX-License-Identifier: GPL-2.0-or-later
"""The displays of all modules: show transceiver, its detail and diagnosis forms, and JSON."""

import json
import subprocess

import pytest
from calls import of
from footprint import growth_kb
from module_memory import path, plug, qsfp, words
from olt import NO_QUARANTINE
from vty import SUCCESS

END = "\r\n"
LEGEND = END + END.join([
    "Transceiver monitoring is disabled for all interfaces.",
    "If device is externally calibrated, only calibrated values are printed.",
    "++ : high alarm, +  : high warning, -  : low warning, -- : low alarm.",
    "NA or N/A: not applicable, Tx: transmit, Rx: receive.",
    "mA: milliamperes, dBm: decibels (milliwatts).",
]) + END + END
SINGLE = (
    "Interface     Temperature (Celsius)    Voltage (Volts)    Current (mA)    Optical Tx Power(dBm)           Optical Rx Power(dBm)\r\n"
    "----------    ---------------------    ---------------    ------------    ----------------------------    ------------------------------- \r\n"
)
LANES = "Interface     Temperature (Celsius)    Voltage (Volts)    Current (mA)                    Optical Tx Power(dBm)           Optical Rx Power(dBm)\r\n"
LANES_PON = "                                                          TX1    TX2    TX3    TX4        TX1    TX2    TX3    TX4        RX1    RX2    RX3    RX4\r\n"
LANES_GE = "                                                          TX1    TX2    TX3    TX4        TX1    TX2    TX3    TX4        RX    RX2    RX3    RX4\r\n"
LANES_RULE = "----------    ---------------------    ---------------    ----------------------------    ----------------------------    ------------------------------- \r\n"
PORTS = [f"GPON 0/{port}" for port in range(1, 9)] + [f"GE 0/{port}" for port in range(1, 5)]


def row(name, *values):
    """A value row: the name's column, then the five values' columns."""
    widths = (24, 18, 15, 31, 27)
    return f"{name:<14}" + " ".join(f"{value:<{width}}" for value, width in zip(values, widths))


def absent(name):
    return SINGLE + f"{name:<13} " + " ".join(f"{'N/A':<{w}}" for w in (24, 18, 15, 31, 27)) + 3 * END


def single(name, *values):
    return SINGLE + row(name, *values) + END


def combo(name, first, second):
    return SINGLE + row(name, *first) + END + row(name, *second) + 3 * END


def lanes(name, header, temperature, voltage, bias, tx, rx):
    def group(values, last):
        return "{:<6} {:<6} {:<6} {:<{}}".format(*values, last)

    return (LANES + header + LANES_RULE + f"{name:<14}{temperature:<24} {voltage:<18} "
            + f"{group(bias, 10)} {group(tx, 10)} {group(rx, 6)}" + 4 * END)


def shown(tables):
    """The diagnosis display, with these tables in place of N/A."""
    return LEGEND + "".join(tables.get(name, absent(name)) for name in PORTS) + END


VALUES = ("25.500", "3.300", "10.000", "0.000", "-3.010")
XG_VALUES = ("25.500", "3.300", "20.000", "3.010", "-3.010")
QSFP_VALUES = ("25.500", "3.300", ("10.000", "20.000", "30.000", "131.070"), ("0.000", "-3.010", "-10.000", "-inf"),
               ("-10.000", "-6.990", "-3.010", "0.000"))
# slope and offset of bias, TX power, temperature, voltage, RX power
CONSTANTS = (0x0200, 0x0A00, 0x0100, 0x0000, 0x0180, 0x4000, 0x0010, 0x0100, 0x0200, 0x0000)


@pytest.fixture(scope="module")
def olt(make_olt):
    return make_olt().start(trace=True)


@pytest.fixture(autouse=True)
def empty_cages(olt):
    yield
    for kind, ports in (("gpon", 8), ("ge", 4)):
        for port in range(1, ports + 1):
            olt.boardctl("unplug", kind, port)
    olt.wait_free("board")


def test_an_empty_board_shows_no_values(olt):
    assert olt.run("show transceiver") == (shown({}), SUCCESS)


def test_the_monitor_switch_does_not_change_the_legend(olt):
    olt.run("transceiver monitor", node="diagnose")
    assert olt.run("show transceiver")[0].startswith(LEGEND)
    olt.run("no transceiver monitor", node="diagnose")


def test_each_kind_of_module_has_its_own_table(olt):
    plug(olt, "gpon", 1, *path())
    plug(olt, "gpon", 2, *path(), *path(1577))
    plug(olt, "gpon", 3, *path(1550))
    plug(olt, "gpon", 4, *path(monitoring=0))
    plug(olt, "gpon", 5, *path(identifier=0x0E))
    plug(olt, "gpon", 6, qsfp())
    plug(olt, "gpon", 7, *path(), *path(1490))
    plug(olt, "gpon", 8, *path(monitoring=0x10, constants=CONSTANTS))
    plug(olt, "ge", 1, *path(1310, identifier=0, temperature=-0x0500))
    plug(olt, "ge", 4, qsfp(identifier=0x0D))
    text, status = olt.run("show transceiver")
    expected = shown({
        "GPON 0/1": single("GPON 0/1", *VALUES),
        "GPON 0/2": combo("GPON 0/2", VALUES, XG_VALUES),
        "GPON 0/3": single("GPON 0/3", *VALUES),
        "GPON 0/4": SINGLE + "GPON 0/4      " + END,
        "GPON 0/6": lanes("GPON 0/6", LANES_PON, *QSFP_VALUES),
        "GPON 0/7": combo("GPON 0/7", VALUES, XG_VALUES),  # the second path counts double
        # 6528 * 1.5 + 64, 33000 / 16 + 1, 5000 * 2 + 10, TX as it is, RX doubled
        "GPON 0/8": single("GPON 0/8", "38.500", "0.206", "20.020", "0.000", "0.000"),
        "GE 0/1": single("GE 0/1", "5.000", *VALUES[1:]),
        "GE 0/4": lanes("GE 0/4", LANES_GE, *QSFP_VALUES),
    })
    assert text == expected
    assert status == SUCCESS
    assert olt.run("show transceiver diagnosis") == (expected, SUCCESS)


def test_a_dark_module_shows_minus_infinity(olt):
    plug(olt, "gpon", 1, *path(tx=0, rx=0))
    assert single("GPON 0/1", *VALUES[:3], "-inf", "-inf") in olt.run("show transceiver")[0]


def test_a_module_that_no_longer_answers_costs_no_other_its_values(olt):
    plug(olt, "gpon", 1, *path())
    plug(olt, "gpon", 2, *path())
    olt.boardctl("module", "die", "gpon", 1)
    text, _ = olt.run("show transceiver")
    assert text == shown({"GPON 0/1": SINGLE + "GPON 0/1      " + END, "GPON 0/2": single("GPON 0/2", *VALUES)})


def test_diagnostics_that_cannot_be_read_are_zero_byte_by_byte(olt):
    plug(olt, "gpon", 1, *path())
    try:
        olt.boardctl("fault", "add", "i2c_read", "addr=0x51")
        assert olt.run("show transceiver") == (
            shown({"GPON 0/1": single("GPON 0/1", "0.000", "0.000", "0.000", "-inf", "-inf")}), SUCCESS)
        olt.boardctl("fault", "clear")
        olt.boardctl("fault", "add", "i2c_read", "addr=0x51", "reg=97")  # the fraction of the temperature
        assert single("GPON 0/1", "25.000", *VALUES[1:]) in olt.run("show transceiver")[0]
    finally:
        olt.boardctl("fault", "clear")


THRESHOLD_COLUMNS = "              High Alarm   High Warn    Low Warn      Low Alarm\r\n"
THRESHOLD_RULE = "----------    -------------    ---------    ---------    ----------    ----------\r\n"
CELSIUS = "Interface     (Celsius)        (Celsius)    (Celsius)    (Celsius)     (Celsius)\r\n"


def test_detail_shows_five_headings_for_each_module_of_a_known_family(olt):
    plug(olt, "gpon", 2, *path())
    plug(olt, "gpon", 3, *path(identifier=0x0E))
    plug(olt, "ge", 1, qsfp())
    text, status = olt.run("show transceiver detail")
    assert status == SUCCESS
    assert text.startswith(
        LEGEND + THRESHOLD_COLUMNS + "              Temperature      Threshold    Threshold    Threshold     Threshold\r\n"
        + CELSIUS + THRESHOLD_RULE + "GPON 0/2      " + 3 * END + THRESHOLD_COLUMNS
    )
    tables = text.removeprefix(LEGEND).split(THRESHOLD_COLUMNS)[1:]
    assert len(tables) == 10
    assert all(table.endswith(THRESHOLD_RULE + "GPON 0/2      " + 3 * END) for table in tables[:5])
    assert all(table.endswith(THRESHOLD_RULE + "GE 0/1        " + 3 * END) for table in tables[5:])
    quantities = [table.split()[0] for table in tables]
    assert quantities == 2 * ["Temperature", "Voltage", "Current", "Transmit", "Receive"]
    assert "\r\nInterface     (Volts             (Volts)      (Volts)      (Volts)      (Volts)\r\n" in tables[6]


def test_detail_of_an_empty_board_is_the_legend(olt):
    assert olt.run("show transceiver detail") == (LEGEND, SUCCESS)


# --- JSON

LANE_KEYS = [f"{lane}{number}" for lane in ("biasCurrentTx", "transmitPowerTx", "receivePowerRx") for number in range(1, 5)]
VALUE_KEYS = ["temperature", "voltage", *LANE_KEYS, "wavelength"]
XG_KEYS = ["xg" + key[0].upper() + key[1:] for key in VALUE_KEYS]
VENDOR_KEYS = ["vendorName", "vendorRevision", "vendorSerialNumber"]
KEYS = ["interfaceName", "interfaceType", *VALUE_KEYS, *VENDOR_KEYS, *XG_KEYS]


def show_json(olt):
    text, status = olt.run("show transceiver json")
    assert status == SUCCESS and text.endswith("}\r\n")
    return json.loads(text.encode("latin-1").decode("utf-8"))


def module(olt, name):
    (only,) = show_json(olt)[name]
    return only


def filled(found):
    """What an object says beside its names, without the empty values."""
    return {key: value for key, value in found.items() if value != "" and not key.startswith("interface")}


def test_json_lists_every_interface_in_order_with_every_key(olt):
    found = show_json(olt)
    assert list(found) == [name.replace("GPON", "PON") for name in PORTS]
    for name, (only,) in found.items():
        assert list(only) == KEYS
        assert (only["interfaceName"], only["interfaceType"]) == (name, "uplink" if name.startswith("GE") else "pon")
        assert filled(only) == {}


def test_json_is_one_pretty_document(olt):
    text, _ = olt.run("show transceiver json")
    assert text.startswith('{\n  "PON 0\\/1":[\n    {\n      "interfaceName":"PON 0\\/1",\n')
    assert subprocess.run(["jq", "length"], input=text.encode("latin-1"), capture_output=True).stdout == b"12\n"


SFP_VENDOR = {"vendorName": "ACME OPTICS     ", "vendorRevision": "1.0 ", "vendorSerialNumber": "SN0001          "}


def plain(values, wavelength):
    keys = ("temperature", "voltage", "biasCurrentTx1", "transmitPowerTx1", "receivePowerRx1")
    return dict(zip(keys, values)) | ({"wavelength": wavelength} if wavelength else {}) | {"biasCurrent": values[2]}


def xg(values, wavelength):
    return {"xg" + key[0].upper() + key[1:]: value for key, value in plain(values, wavelength).items()}


@pytest.mark.parametrize("wavelength", [850, 1310, 1311, 1490, 1535])
def test_json_gives_gpon_and_gigabit_paths_under_the_plain_keys(olt, wavelength):
    plug(olt, "gpon", 1, *path(wavelength))
    found = module(olt, "PON 0/1")
    assert filled(found) == plain(VALUES, wavelength) | SFP_VENDOR
    assert list(found) == KEYS + ["biasCurrent"]


@pytest.mark.parametrize("wavelength", [1577, 1791])
def test_json_gives_xgpon_paths_under_the_xg_keys(olt, wavelength):
    plug(olt, "gpon", 1, *path(wavelength))
    found = module(olt, "PON 0/1")
    assert filled(found) == xg(XG_VALUES, wavelength) | SFP_VENDOR
    assert list(found) == KEYS + ["xgBiasCurrent"]


def test_json_gives_an_unknown_wavelength_under_the_xg_keys_without_the_wavelength(olt):
    plug(olt, "gpon", 1, *path(1550))
    assert filled(module(olt, "PON 0/1")) == xg(VALUES, None) | SFP_VENDOR


def test_json_gives_a_combo_module_under_both(olt):
    plug(olt, "gpon", 1, *path(1490), *path(1577))
    assert filled(module(olt, "PON 0/1")) == plain(VALUES, 1490) | xg(XG_VALUES, 1577) | SFP_VENDOR


def test_json_gives_only_identity_and_wavelength_of_a_module_without_diagnostics(olt):
    plug(olt, "gpon", 1, *path(monitoring=0))
    assert filled(module(olt, "PON 0/1")) == {"wavelength": 1490} | SFP_VENDOR


def test_json_gives_all_lanes_of_a_qsfp_and_its_wavelength_bytes_unswapped(olt):
    plug(olt, "ge", 2, qsfp())
    found = module(olt, "GE 0/2")
    temperature, voltage, *groups = QSFP_VALUES
    values = dict(zip(LANE_KEYS, [value for group in groups for value in group]))
    vendor = {"vendorName": "ACME OPTICS     ", "vendorRevision": "1A", "vendorSerialNumber": "SN0002          "}
    assert filled(found) == {"temperature": temperature, "voltage": voltage, "wavelength": 0x5866 // 20} | values | vendor
    assert list(found) == KEYS
    plug(olt, "ge", 2, qsfp(upper={186: words(0)}))
    assert module(olt, "GE 0/2")["wavelength"] == ""


def test_json_leaves_an_unsupported_module_empty(olt):
    plug(olt, "gpon", 1, *path(identifier=0x0E))
    found = module(olt, "PON 0/1")
    assert filled(found) == {} and list(found) == KEYS


def test_json_stays_readable_whatever_the_vendor_fields_hold(olt):
    plug(olt, "gpon", 1, *path(id_page={20: b'A"\\\x01\x1f\x7f\xff\xc3\xa9 \x00rest', 56: b"\xff" * 4, 68: bytes(16)}))
    found = module(olt, "PON 0/1")
    assert found["vendorName"] == 'A"\\\x01\x1f\x7f\ufffd\u00e9 '
    assert found["vendorRevision"] == 4 * "\ufffd"
    assert found["vendorSerialNumber"] == ""


def test_json_escapes_what_a_terminal_would_obey(olt):
    plug(olt, "gpon", 1, *path(id_page={20: b"\x1b[2J\x7f\xc2\x80\xc2\x9f\xc2\xa0"}))
    text = olt.run("show transceiver json")[0]
    assert r'"vendorName":"\u001b[2J\u007f\u0080\u009f' in text.replace(": ", ":")
    assert module(olt, "PON 0/1")["vendorName"] == "\x1b[2J\x7f\x80\x9f\xa0"


# --- what it does to the board

def board_calls(olt, command):
    """The calls of the board that one command makes."""
    before = len(olt.trace())
    olt.run(command)
    calls = of(olt.trace()[before:], "semaphore_[pv]|raise|lower|misc_.*")
    return [call for call in calls if call.thread == "main"]


@pytest.mark.parametrize("command, reason", [
    ("show transceiver", "transceiver_diag_monitor_show"),
    ("show transceiver diagnosis", "transceiver_diag_monitor_show"),
    ("show transceiver detail", "transceiver_diag_monitor_detail_show"),
    ("show transceiver json", "transceiver_diag_monitor_show_json"),
])
def test_one_bracket_holds_the_whole_command(olt, command, reason):
    plug(olt, "gpon", 8, *path())
    calls = board_calls(olt, command)
    ops = [call.op for call in calls]
    assert ops[:4] == ["semaphore_p", "raise", "misc_cpld_i2c_open", "lower"]
    assert calls[1].values["reason"] == reason
    assert ops[-2:] == ["misc_cpld_i2c_close", "semaphore_v"]
    assert ops.count("semaphore_p") == ops.count("misc_cpld_i2c_open") == 1
    assert ops.count("misc_cpld_i2c_read_byte") == len(PORTS)
    assert ops.count("misc_cpld_channel_select") == ops.count("misc_cpld_channel_select_end") == 1


def test_a_cpld_that_does_not_open_ends_the_displays(make_olt):
    olt = make_olt()
    olt.faults()
    olt.start()
    plug(olt, "gpon", 1, *path())
    olt.faults("misc_cpld_i2c_open ret=-1 errno=5 thread=main")
    assert olt.run("show transceiver") == (LEGEND, SUCCESS)
    assert olt.run("show transceiver detail") == (LEGEND, SUCCESS)
    assert show_json(olt) == {}
    olt.wait_free("board")
    olt.faults()
    assert single("GPON 0/1", *VALUES) in olt.run("show transceiver")[0]


def test_a_channel_that_cannot_be_selected_is_an_absent_module(make_olt):
    olt = make_olt()
    olt.faults()
    olt.start()
    plug(olt, "gpon", 1, *path())
    olt.faults("misc_cpld_channel_select ret=-1 errno=5 thread=main")
    assert olt.run("show transceiver") == (shown({}), SUCCESS)
    olt.wait_free("board")


@pytest.mark.parametrize("command", ["show transceiver", "show transceiver json", "show idprom interface gpon 0/1",
                                     "show idprom interface gigabitEthernet 0/1",
                                     "show optical transceiver interface gpon 0/1"])
def test_hundreds_of_displays_leave_no_memory_behind(make_olt, command):
    olt = make_olt().start(env=NO_QUARANTINE)
    plug(olt, "gpon", 1, *path(), *path(1577))
    plug(olt, "ge", 1, qsfp())
    assert growth_kb(olt, command, warm_up=100, times=400) < 256
