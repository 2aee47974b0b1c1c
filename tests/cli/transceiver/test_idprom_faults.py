# SPDX-License-Identifier: GPL-2.0-or-later
"""The display of a module's identification while the module fails: bytes that cannot be read, a module that is
pulled, memory that holds anything; and the switch that reports failed accesses."""
import re

import pytest
from calls import of
from footprint import Footprint
from module_memory import ask_board, memory, plug, set_memory
from olt import wait_until
from sff_texts import idprom
from traced_fixtures import olt  # noqa: F401
from vty import SUCCESS

SHOW = "show idprom interface gpon 0/1"
# No byte is zero where a text stands, so that a byte which is lost ends it.
SFP_PAGE = bytes([3, *range(1, 256)])
A2_PAGE = bytes(range(255, -1, -1))
QSFP_PAGE = bytes([0x11, *range(1, 256)])


@pytest.fixture
def session(olt):
    with olt.vty() as session:
        yield session
    ask_board(olt, "fault", "clear")
    olt.boardctl("unplug", "gpon", 1)
    olt.wait_free("board")


def without(pages, address, register):
    """Memory in which one byte cannot be read."""
    return lambda at, reg: 0 if (at, reg) == (address, register) else pages.get(at, bytes(256))[reg]


@pytest.mark.parametrize("pages, bytes_shown", [
    ({0x50: SFP_PAGE, 0x51: A2_PAGE}, [(0x50, reg) for reg in range(93)] + [(0x51, reg) for reg in range(128, 248)]),
    ({0x50: QSFP_PAGE}, [(0x50, reg) for reg in (0, 92, *range(128, 248))]),
], ids=["sfp", "qsfp"])
def test_a_byte_that_cannot_be_read_is_zero_and_costs_no_other(olt, session, pages, bytes_shown):
    plug(olt, "gpon", 1, *pages.values())
    footprint = Footprint(olt)
    for address, register in bytes_shown:
        ask_board(olt, "fault", "add", "i2c_read", f"addr={address:#x}", f"reg={register}")
        text, rc = session.run(SHOW)
        ask_board(olt, "fault", "clear")
        # The wavelength of an SFP is one word: both bytes go together, and not for the second one's sake.
        memory_read = without(pages, address, register)
        if (address, register) == (0x50, 60) and pages[0x50] is SFP_PAGE:
            lost = {60, 61}
            memory_read = lambda at, reg: 0 if at == 0x50 and reg in lost else pages[at][reg]
        elif (address, register) == (0x50, 61) and pages[0x50] is SFP_PAGE:
            memory_read = lambda at, reg: pages[at][reg]
        assert (text, rc) == (idprom(memory_read), SUCCESS), f"{address:#x} {register}"
    footprint.check()


def test_a_page_that_cannot_be_selected_is_read_all_the_same(olt, session):
    plug(olt, "gpon", 1, QSFP_PAGE)
    ask_board(olt, "fault", "add", "i2c_write")
    assert session.run(SHOW) == (idprom(lambda _, register: QSFP_PAGE[register]), SUCCESS)


def test_a_module_that_died_is_an_sfp_of_zeros(olt, session):
    plug(olt, "gpon", 1, SFP_PAGE, A2_PAGE)
    olt.boardctl("module", "die", "gpon", 1)
    text, rc = session.run(SHOW)
    assert (text, rc) == (idprom(lambda *_: 0), SUCCESS)
    assert "Identifier                     :    N/A (0)\r\n" in text
    assert session.run(SHOW + " vendor")[0].count("\r\n") == 5


def dump_of(text):
    return b"".join(bytes.fromhex(line[7:]) for line in text.split("\r\n") if re.match(r"[0-9a-f]{3} :  ", line))


def test_a_module_pulled_in_the_middle_of_the_dump_leaves_zeros_from_there_on(olt, session):
    page = bytes(128) + bytes(range(1, 129))  # no zero to be taken for a lost byte
    footprint = Footprint(olt)

    def pull_in_the_middle():
        plug(olt, "gpon", 1, SFP_PAGE, page)
        mark = olt.boardctl("log", "next").strip()
        ask_board(olt, "fault", "add", "i2c_read", "addr=0x51", "reg=187", "delay=800")
        session.send(SHOW)
        olt.boardctl("log", "wait", "i2c_read.*addr=0x51 reg=187", 10, mark)
        olt.boardctl("unplug", "gpon", 1)
        text, rc = session.receive()
        ask_board(olt, "fault", "clear")
        assert rc == SUCCESS and text.startswith("General Information\r\n")
        shown = dump_of(text)
        read = len(shown.rstrip(b"\0"))
        assert len(shown) == 120 and shown[:read] == page[128 : 128 + read]
        assert text.endswith("\r\nSFF-8472 Digital Diagnostic Monitoring Data\r\n===========================================\r\n\r\n")
        return 60 <= read < 120

    wait_until(pull_in_the_middle, "a module is pulled before its dump is read")
    footprint.check()
    assert session.run(SHOW) == ("Interface gpon 0/1 transceiver is absent.\r\n", SUCCESS)


# Sessions carry bytes.  What a terminal would obey is "?", one for each character.
@pytest.mark.parametrize("field, shown", [
    (b"A\0hidden behind 0", "A"),
    (b'%s%n\\"\xc3\xa9 \xe2\x82\xac', '%s%n\\"\xc3\xa9 \xe2\x82\xac'),
    (b"\x01\x1b[2J\x7f\r\n\x08\tz", "??[2J????\tz"),
    (b"\xc2\x9b2J\xc2\x80\xc2\x9f\xc2\xa0", "?2J??\xc2\xa0"),
    (b"\x9b2J\x80\x9f\xa0\xfe\xff", "?2J??\xa0\xfe?"),
    (b"\xe2\x82\x9b\xe2\x82", "\xe2\x82\x9b\xe2?"),
    (b"\xff" * 16, "?" * 16),
], ids=["zero", "text", "C0", "C1", "bytes", "inside", "erased"])
def test_texts_are_shown_as_a_terminal_may_have_them_up_to_their_first_zero_byte(olt, session, field, shown):
    plug(olt, "gpon", 1, memory({0: 3, 20: field[:16], 40: field[:16], 56: field[:4], 68: field[:16], 84: field[:8]}), A2_PAGE)
    for block, labels in {
        "": ["Vendor Name", "Vendor Part Number", "Vendor Serial Number", "Manufacture Serial Number", "Vendor Name"],
        " vendor": ["Vendor Name", "Vendor Part Number", "Vendor Serial Number"],
        " manufacture": ["Manufacture Serial Number", "Vendor Name"],
    }.items():
        text, rc = session.run(SHOW + block)
        assert rc == SUCCESS and "hidden" not in text
        assert text.count(f":    {shown}\r\n") >= len(labels)
        for label in labels:
            assert f"\r\n{label:<31}:    {shown}\r\n" in "\r\n" + text


def test_the_revision_and_the_date_are_shown_as_a_terminal_may_have_them(olt, session):
    plug(olt, "gpon", 1, memory({0: 3, 56: b"\x1b[2J"[:4], 84: b"25\x0701\x9b7\xff"}), A2_PAGE)
    text, rc = session.run(SHOW)
    assert rc == SUCCESS
    assert "\r\nVendor Revision                :    ?[2J\r\n" in text
    assert "\r\nManufacture Date               :    2025?01?7?\r\n" in text


# --- reports of failed accesses

FAILED = r"i2c access slave addr 0x%x register 0x%x failed, ret -\d+\r"


@pytest.fixture
def debugging(olt, session):
    assert olt.run("debug transceiver", "diagnose") == ("", SUCCESS)
    yield
    assert olt.run("no debug transceiver", "diagnose") == ("", SUCCESS)


def reports(olt, session, command=SHOW):
    """What a command makes the daemon say on its standard output, and its display."""
    before = len(olt.stdout())
    text, rc = session.run(command)
    assert rc == SUCCESS
    return text, olt.stdout()[before:].split("\n")[:-1]


def test_each_failed_byte_of_a_block_is_one_report(olt, session, debugging):
    plug(olt, "gpon", 1, SFP_PAGE, A2_PAGE)
    assert reports(olt, session)[1] == []
    ask_board(olt, "fault", "add", "i2c_read", "addr=0x51")
    _, lines = reports(olt, session)
    assert len(lines) == 120
    for register, line in zip(range(128, 248), lines):
        assert re.fullmatch(FAILED % (0x51, register), line), line


def test_a_failed_word_and_a_failed_write_are_one_report_each(olt, session, debugging):
    plug(olt, "gpon", 1, SFP_PAGE, A2_PAGE)
    ask_board(olt, "fault", "add", "i2c_read", "addr=0x50", "reg=60")
    (line,) = reports(olt, session)[1]
    assert re.fullmatch(FAILED % (0x50, 60), line)
    ask_board(olt, "fault", "clear")
    plug(olt, "gpon", 1, QSFP_PAGE)
    ask_board(olt, "fault", "add", "i2c_write")
    (line,) = reports(olt, session)[1]
    assert re.fullmatch(FAILED % (0x50, 127), line)


def test_nothing_is_reported_to_the_session_nor_when_the_switch_is_off(olt, session):
    plug(olt, "gpon", 1, SFP_PAGE, A2_PAGE)
    ask_board(olt, "fault", "add", "i2c_read", "addr=0x51")
    for words, said in (("no debug transceiver", 0), ("debug transceiver", 120), ("debug transceiver", 120),
                        ("no debug transceiver", 0)):
        assert olt.run(words, "diagnose") == ("", SUCCESS)
        text, lines = reports(olt, session)
        assert len(lines) == said and "i2c access" not in text


def test_a_new_daemon_reports_nothing(fresh_olt):
    plug(fresh_olt, "gpon", 1, SFP_PAGE, A2_PAGE)
    ask_board(fresh_olt, "fault", "add", "i2c_read", "addr=0x51")
    before = fresh_olt.stdout()
    assert fresh_olt.run(SHOW)[1] == SUCCESS
    assert fresh_olt.stdout() == before


def test_a_failed_read_is_not_tried_again(olt, session):
    plug(olt, "gpon", 1, SFP_PAGE, A2_PAGE)
    ask_board(olt, "fault", "add", "i2c_read", "addr=0x50", "reg=20")
    before = len(olt.trace())
    session.run(SHOW + " vendor")
    reads = [call.values["reg"] for call in of(olt.trace()[before:], "misc_i2c_read") if call.thread == "main"]
    assert reads.count("20") == 1 and len(reads) == 1 + 16 + 3 + 20 + 16


def test_the_trouble_of_one_module_is_over_when_it_answers_again(olt, session):
    plug(olt, "gpon", 1, SFP_PAGE, A2_PAGE)
    pages = {0x50: SFP_PAGE, 0x51: A2_PAGE}
    ask_board(olt, "fault", "add", "i2c_read", "count=3")
    session.run(SHOW)
    assert session.run(SHOW) == (idprom(lambda at, register: pages[at][register]), SUCCESS)
    set_memory(olt, "gpon", 1, 0x50, 20, b"OTHER")
    assert session.run(SHOW + " vendor")[0].startswith("Vendor Name                    :    OTHER")
