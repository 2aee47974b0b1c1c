# SPDX-License-Identifier: GPL-2.0-or-later
"""show version: what the device says about itself."""
import json

import pytest
from footprint import growth_kb
from olt import NO_QUARANTINE

BASE = {
    "device_model": "OLT8-XGS",
    "device_mac": "02:4f:4c:54:08:77",
    "serial_number": "SERIAL-0042",
    "hardware_version": "V9.8",
    "software_version": "V7.6.5",
    "software_created": "2026-01-02 03:04:05",
    "copyright": "Copyright (c) somebody.",
}
KEYS = ["deviceMacAddress", "deviceModel", "serialNumber", "hardwareVersion", "softwareVersion", "softwareCreatedTime",
        "copyright"]
JSON_OF = dict(zip(KEYS, ["device_mac", "device_model", "serial_number", "hardware_version", "software_version",
                          "software_created", "copyright"]))


@pytest.fixture(scope="module")
def olt(make_olt):
    shared = make_olt(board={"base_information": BASE})
    shared.faults()
    return shared.start(trace=True)


def test_six_lines_name_the_device(olt):
    assert olt.run("show version") == (
        "  OLT Serial Number     : SERIAL-0042\r\n"
        "  Device Model          : OLT8-XGS\r\n"
        "  Hardware Version      : V9.8\r\n"
        "  Software Version      : V7.6.5\r\n"
        "  Software Created Time : 2026-01-02 03:04:05\r\n"
        "  Copyright: Copyright (c) somebody.\r\n",
        0,
    )


def test_the_text_form_does_not_show_the_mac_address(olt):
    assert BASE["device_mac"] not in olt.run("show version")[0]


def test_json_is_one_pretty_object_of_texts_in_its_order(olt):
    text, rc = olt.run("show version json")
    assert rc == 0
    members = [f'  "{key}":"{BASE[JSON_OF[key]]}"' for key in KEYS]
    assert text == "{\n" + ",\n".join(members) + "\n}\r\n"
    assert list(json.loads(text)) == KEYS


def test_json_may_be_abbreviated(olt):
    assert olt.run("show ver js") == olt.run("show version json")


def test_what_a_terminal_would_obey_is_a_question_mark(make_olt):
    strange = BASE | {"serial_number": "A\x1b[2JB\x7f\tC", "copyright": "\u00e9 \u20ac\u009b2J\r\n"}
    own = make_olt(board={"base_information": strange}).start()
    lines = own.run("show version")[0].split("\r\n")
    assert lines[0] == "  OLT Serial Number     : A?[2JB?\tC"
    assert lines[5].encode("latin-1").decode() == "  Copyright: \u00e9 \u20ac?2J??"
    text = own.run("show version json")[0]
    assert '"serialNumber":"A\\u001b[2JB\\u007f\\tC"' in text
    assert '\\u009b2J\\r\\n"' in text


def test_json_escapes_what_texts_may_hold(make_olt):
    strange = BASE | {"copyright": 'a "quoted" \\ text\twith more', "device_model": "mod/el"}
    own = make_olt(board={"base_information": strange}).start()
    parsed = json.loads(own.run("show version json")[0])
    assert parsed["copyright"] == strange["copyright"]
    assert parsed["deviceModel"] == "mod/el"


@pytest.mark.parametrize("form", ["show version", "show version json"])
def test_it_is_a_command_of_configuration(olt, form):
    assert olt.run(form)[1] == 0
    assert olt.run(form, "diagnose")[0] == olt.run(form)[0] or olt.run(form, "diagnose")[1] != 0


def test_without_base_information_six_lines_are_printed_with_empty_values(olt):
    olt.faults("database_dev_get_base_info ret=-1")
    try:
        text, rc = olt.run("show version")
        parsed = json.loads(olt.run("show version json")[0])
    finally:
        olt.faults()
    assert rc == 0
    labels = [line.split(":")[0] for line in text.split("\r\n")]
    assert labels == ["  OLT Serial Number     ", "  Device Model          ", "  Hardware Version      ",
                      "  Software Version      ", "  Software Created Time ", "  Copyright", ""]
    assert list(parsed) == KEYS
    assert all(isinstance(value, str) for value in parsed.values())


def test_the_record_is_fetched_once_per_command(olt):
    before = len(olt.trace())
    olt.run("show version")
    assert [call.op for call in olt.trace()[before:]].count("database_dev_get_base_info") == 1


def test_a_thousand_json_documents_leave_no_memory_behind(fresh_olt):
    fresh_olt.restart(env=NO_QUARANTINE)
    assert growth_kb(fresh_olt, "show version json") < 256
