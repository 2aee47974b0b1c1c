# SPDX-License-Identifier: GPL-2.0-or-later
"""Every code byte of a module's identification, in every place where the display names it."""
import pytest
from module_memory import memory, plug, set_memory
from sff_texts import (CONNECTORS, EXTENDED_TYPES, GIGABIT, IDENTIFIERS, QSFP_ENCODINGS, QSFP_TYPES, SFP_ENCODINGS,
                       TEN_GIGABIT)
from vty import SUCCESS

CODES = range(256)
SFP_PORT, QSFP_PORT = 1, 2


@pytest.fixture(scope="module")
def session(olt):
    plug(olt, "gpon", SFP_PORT, memory({0: 3}), memory({}))
    plug(olt, "gpon", QSFP_PORT, memory({0: 0x11}))
    with olt.vty() as session:
        yield session


def labels(session, port):
    """The display's lines by label, those of the first two blocks."""
    text, rc = session.run(f"show idprom interface gpon 0/{port}")
    assert rc == SUCCESS
    found = {}
    for line in text.split("Manufacture Information")[0].split("\r\n"):
        label, colon, value = line.partition(":    ")
        if colon:
            found[label.strip()] = value
    return found


def named(table, code):
    """The table's text, which reaches a session as UTF-8, or the code."""
    return table.get(code, f"N/A ({code})").encode("utf-8").decode("latin-1")


def scan(olt, session, port, registers, codes=CODES):
    """The lines of the display for each code, written to all of the registers at once; zeros are put back."""
    shown = {}
    for code in codes:
        for register in registers:
            set_memory(olt, "gpon", port, 0x50, register, [code])
        shown[code] = labels(session, port)
    for register in registers:
        set_memory(olt, "gpon", port, 0x50, register, [0])
    return shown


def check(shown, label, expected):
    assert {code: lines[label] for code, lines in shown.items()} == {code: expected(code) for code in shown}


@pytest.fixture(scope="module")
def sfp_codes(olt, session):
    """Connector, encoding and gigabit type of an SFP, each code in all three."""
    return scan(olt, session, SFP_PORT, [2, 11, 6])


@pytest.fixture(scope="module")
def qsfp_codes(olt, session):
    """Identifier, connector, compliance and encoding of a QSFP; its extended code stays 6."""
    set_memory(olt, "gpon", QSFP_PORT, 0x50, 192, [6])
    shown = scan(olt, session, QSFP_PORT, [128, 130, 131, 139])
    set_memory(olt, "gpon", QSFP_PORT, 0x50, 192, [0])
    return shown


def test_the_tables_have_all_their_rows():
    sizes = [len(table) for table in (IDENTIFIERS, CONNECTORS, SFP_ENCODINGS, QSFP_ENCODINGS, TEN_GIGABIT, GIGABIT, QSFP_TYPES,
                                      EXTENDED_TYPES)]
    assert sizes == [6, 22, 9, 9, 4, 8, 7, 9]


@pytest.mark.parametrize("code, text", [(0, "N/A (0)"), (3, "SFP")])
def test_the_identifier_of_an_sfp(olt, session, code, text):
    set_memory(olt, "gpon", SFP_PORT, 0x50, 0, [code])
    assert labels(session, SFP_PORT)["Identifier"] == text
    set_memory(olt, "gpon", SFP_PORT, 0x50, 0, [3])


def test_the_identifier_of_a_qsfp_is_that_of_the_upper_page(qsfp_codes):
    check(qsfp_codes, "Identifier", lambda code: named(IDENTIFIERS, code))


@pytest.mark.parametrize("family", [0x02, 0x0C, 0x0D])
def test_the_other_families_of_qsfp_are_decoded_alike(olt, session, family):
    set_memory(olt, "gpon", QSFP_PORT, 0x50, 0, [family])
    check(scan(olt, session, QSFP_PORT, [128], [0, 12, 13, 17, 24]), "Identifier", lambda code: named(IDENTIFIERS, code))
    set_memory(olt, "gpon", QSFP_PORT, 0x50, 0, [0x11])


def test_the_connector(sfp_codes, qsfp_codes):
    for shown in (sfp_codes, qsfp_codes):
        check(shown, "Connector", lambda code: named(CONNECTORS, code))


def test_the_connector_with_a_dash_has_it_in_utf_8(olt, session):
    set_memory(olt, "gpon", SFP_PORT, 0x50, 2, [8])
    assert labels(session, SFP_PORT)["Connector"] == "MT-RJ (Mechanical Transfer \xe2\x80\x93 Registered Jack)"
    set_memory(olt, "gpon", SFP_PORT, 0x50, 2, [0])


def test_the_encoding_is_numbered_by_the_memory_map(sfp_codes, qsfp_codes):
    check(sfp_codes, "Encoding", lambda code: named(SFP_ENCODINGS, code))
    check(qsfp_codes, "Encoding", lambda code: named(QSFP_ENCODINGS, code))


def test_the_encodings_from_four_to_six_differ_between_the_maps(sfp_codes, qsfp_codes):
    assert [sfp_codes[code]["Encoding"] for code in (4, 5, 6)] == ["Manchester", "SONET Scrambled", "64B/66B"]
    assert [qsfp_codes[code]["Encoding"] for code in (4, 5, 6)] == ["SONET Scrambled", "64B/66B", "Manchester"]


def test_the_type_of_a_gigabit_sfp_is_one_bit_of_byte_6(sfp_codes):
    check(sfp_codes, "Transceiver Type", lambda code: named(GIGABIT, code))


def test_the_type_of_a_ten_gigabit_sfp_is_one_bit_of_the_upper_half_of_byte_3(olt, session):
    # Without a bit there, byte 6 decides, which is 1000BASE-T; the lower half is of other standards.
    set_memory(olt, "gpon", SFP_PORT, 0x50, 6, [0x08])
    check(scan(olt, session, SFP_PORT, [3]), "Transceiver Type",
          lambda code: TEN_GIGABIT.get(code & 0xF0, f"N/A ({code})") if code & 0xF0 else "1000BASE-T")
    set_memory(olt, "gpon", SFP_PORT, 0x50, 6, [0])


@pytest.mark.parametrize("byte3, without", [(0x00, "1000BASE-T"), (0x02, "1000BASE-T"), (0x03, "1000BASE-T"),
                                            (0x04, "1000BASE-T"), (0x10, "10GBASE-SR"), (0xFF, "N/A (255)")])
def test_the_type_of_an_sfp_with_an_extended_code_is_byte_3_as_a_number(olt, session, byte3, without):
    set_memory(olt, "gpon", SFP_PORT, 0x50, 3, [byte3, 0, 0, 0x08])
    check(scan(olt, session, SFP_PORT, [36], [*range(8), 0x30, 0x80, 0xFF]), "Transceiver Type",
          lambda code: f"N/A ({byte3})" if code else without)
    set_memory(olt, "gpon", SFP_PORT, 0x50, 3, [0, 0, 0, 0])


def test_the_type_of_a_qsfp_is_byte_131_unless_that_is_exactly_0x80(qsfp_codes):
    check(qsfp_codes, "Transceiver Type", lambda code: "100G CWDM4)" if code == 0x80 else named(QSFP_TYPES, code))


def test_the_type_of_a_qsfp_with_an_extended_code_is_byte_192(olt, session):
    set_memory(olt, "gpon", QSFP_PORT, 0x50, 131, [0x80])
    check(scan(olt, session, QSFP_PORT, [192]), "Transceiver Type", lambda code: named(EXTENDED_TYPES, code))
    set_memory(olt, "gpon", QSFP_PORT, 0x50, 131, [0])


def test_unknown_codes_of_one_display_do_not_run_into_one_another(olt, session):
    """Each line keeps its own number, though none of them has a name."""
    set_memory(olt, "gpon", QSFP_PORT, 0x50, 128, [200, 0, 201, 202])
    set_memory(olt, "gpon", QSFP_PORT, 0x50, 139, [203])
    shown = labels(session, QSFP_PORT)
    assert [shown[label] for label in ("Identifier", "Connector", "Transceiver Type", "Encoding")] == [
        "N/A (200)", "N/A (201)", "N/A (202)", "N/A (203)"]
    set_memory(olt, "gpon", QSFP_PORT, 0x50, 128, bytes(4))
    set_memory(olt, "gpon", QSFP_PORT, 0x50, 139, [0])


@pytest.mark.parametrize("nm", [0, 850, 1310, 1311, 1490, 1577, 0x05D2, 65535])
def test_the_wavelength_of_an_sfp_is_its_big_endian_word(olt, session, nm):
    set_memory(olt, "gpon", SFP_PORT, 0x50, 60, nm.to_bytes(2, "big"))
    assert labels(session, SFP_PORT)["Wavelength(nm)"] == str(nm)


@pytest.mark.parametrize("word, nm", [(0, 0), (19, 0), (17000, 850), (26200, 1310), (26041, 1302), (65535, 3276)])
def test_the_wavelength_of_a_qsfp_counts_twentieths(olt, session, word, nm):
    set_memory(olt, "gpon", QSFP_PORT, 0x50, 186, word.to_bytes(2, "big"))
    assert labels(session, QSFP_PORT)["Wavelength(nm)"] == str(nm)
