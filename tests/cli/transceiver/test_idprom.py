# SPDX-License-Identifier: GPL-2.0-or-later
"""The display of one module's identification: show idprom interface."""
import pytest
from cpld import board_session, record
from module_memory import memory, plug, set_memory, words
from module_steps import absent, reached, reads, run
from sff_texts import idprom
from traced_fixtures import olt  # noqa: F401
from vty import NO_MATCH, SUCCESS

BLOCKS = {None: "transceiver_idprom_show", "vendor": "transceiver_vendor_information_show",
          "manufacture": "transceiver_manue_show"}
KINDS = [("gigabitEthernet", "ge", 12, 8), ("gpon", "gpon", 11, 0), ("xgpon", "xgpon", 11, 0)]
SFP_PAGE = memory({0: 3, 2: 1, 3: b"\x00\x11\x22\x80\x44\x55\x66\x77", 11: 3, 12: 0x19, 14: b"\x14\xc8\x00\x32\x0a\xff",
                   20: "ACME OPTICS     ", 37: b"\x02\xa1\xc4", 40: "AO-GPON-C+      ", 56: "A1  ", 60: words(1490),
                   68: "AO25G000141     ", 84: "250614  ", 92: 0x68})
A2_PAGE = memory({128: bytes(range(1, 121))})
QSFP_PAGE = memory({0: 0x11, 92: 0x0C, 128: 0x11, 130: 7, 131: b"\x80\x01\x02\x03\x04\x05\x06\x07", 139: 5, 140: 0xFF,
                    142: b"\x0a\x14\x1e\x28\x32", 148: "ACME OPTICS     ", 165: b"\x02\xa1\xc4", 168: "AO-Q28-LR4      ",
                    184: "1A", 186: b"\x65\xb9", 192: 3, 196: "AO25Q000093     ", 212: "250127  "})

RULE = "-----------------------------------------------------\r\n"
DOUBLE_RULE = "===========================================\r\n"
SFP_VENDOR = (
    "Vendor Name                    :    ACME OPTICS     \r\n"
    "Vendor OUI                     :    02 a1 c4\r\n"
    "Vendor Part Number             :    AO-GPON-C+      \r\n"
    "Vendor Revision                :    A1  \r\n"
    "Vendor Serial Number           :    AO25G000141     \r\n"
)
SFP_MANUFACTURE = (
    "Manufacture Information\r\n" + RULE +
    "Manufacture Serial Number      :    AO25G000141     \r\n"
    "Manufacture Date               :    20250614  \r\n"
    "Vendor Name                    :    ACME OPTICS     \r\n"
)
SFP_WHOLE = (
    "General Information\r\n" + RULE +
    "Identifier                     :    SFP\r\n"
    "Connector                      :    SC (Subscriber Connector)\r\n"
    "Wavelength(nm)                 :    1490\r\n"
    "Transceiver Type               :    BASE-PX\r\n"
    "Transfer Distance(m)           :    0x14 0xc8 0x00 0x32 0x0a 0xff\r\n"
    "Digital Diagnostic Monitoring  :    0x68\r\n"
    "Transceiver                    :    0x00 0x11 0x22 0x80 0x44 0x55 0x66 0x77\r\n"
    "Encoding                       :    NRZ\r\n"
    "BR_Norminal                    :    0x19\r\n"
    + SFP_VENDOR + SFP_MANUFACTURE + "SFF-8472 MSA EEPROM Data\r\n" + DOUBLE_RULE +
    "000 :  01 02 03 04 05 06 07 08 09 0a \r\n"
    "001 :  0b 0c 0d 0e 0f 10 11 12 13 14 \r\n"
    "002 :  15 16 17 18 19 1a 1b 1c 1d 1e \r\n"
    "003 :  1f 20 21 22 23 24 25 26 27 28 \r\n"
    "004 :  29 2a 2b 2c 2d 2e 2f 30 31 32 \r\n"
    "005 :  33 34 35 36 37 38 39 3a 3b 3c \r\n"
    "006 :  3d 3e 3f 40 41 42 43 44 45 46 \r\n"
    "007 :  47 48 49 4a 4b 4c 4d 4e 4f 50 \r\n"
    "008 :  51 52 53 54 55 56 57 58 59 5a \r\n"
    "009 :  5b 5c 5d 5e 5f 60 61 62 63 64 \r\n"
    "00a :  65 66 67 68 69 6a 6b 6c 6d 6e \r\n"
    "00b :  6f 70 71 72 73 74 75 76 77 78 \r\n"
    "\r\n"
    "SFF-8472 Digital Diagnostic Monitoring Data\r\n" + DOUBLE_RULE + "\r\n"
)
QSFP_VENDOR = (
    "Vendor Name                    :    ACME OPTICS     \r\n"
    "Vendor OUI                     :    02 a1 c4\r\n"
    "Vendor Part Number             :    AO-Q28-LR4      \r\n"
    "Vendor Revision                :    1A\r\n"
    "Vendor Serial Number           :    AO25Q000093     \r\n"
)
QSFP_MANUFACTURE = (
    "Manufacture Information\r\n" + RULE +
    "Manufacture Serial Number      :    AO25Q000093     \r\n"
    "Manufacture Date               :    20250127  \r\n"
    "Vendor Name                    :    ACME OPTICS     \r\n"
)
QSFP_GENERAL = (
    "General Information\r\n" + RULE +
    "Identifier                     :    QSFP28\r\n"
    "Connector                      :    LC (Lucent Connector)\r\n"
    "Wavelength(nm)                 :    1302\r\n"
    "Transceiver Type               :    100GBASE-LR4\r\n"
    "Transfer Distance(m)           :    0x0a 0x14 0x1e 0x28 0x32\r\n"
    "Digital Diagnostic Monitoring  :    0x0c\r\n"
    "Transceiver                    :    0x80 0x01 0x02 0x03 0x04 0x05 0x06 0x07\r\n"
    "Encoding                       :    64B/66B\r\n"
    "BR_Norminal                    :    0xff\r\n"
)


@pytest.fixture(autouse=True)
def as_found(olt):
    yield
    olt.faults()
    for kind, ports in (("gpon", (1, 2, 8)), ("ge", (1, 4))):
        for port in ports:
            olt.boardctl("unplug", kind, port)
    olt.wait_free("board")


def command(kind, port, block=None):
    return f"show idprom interface {kind} 0/{port}" + (f" {block}" if block else "")


@pytest.mark.parametrize("kind, cage, _register, _channel", KINDS)
def test_an_sfp_is_shown_whole_or_by_block(olt, kind, cage, _register, _channel):
    plug(olt, cage, 1, SFP_PAGE, A2_PAGE)
    assert olt.run(command(kind, 1)) == (SFP_WHOLE, SUCCESS)
    assert olt.run(command(kind, 1, "vendor")) == (SFP_VENDOR, SUCCESS)
    assert olt.run(command(kind, 1, "manufacture")) == (SFP_MANUFACTURE, SUCCESS)


@pytest.mark.parametrize("kind, cage, _register, _channel", KINDS)
def test_a_qsfp_is_shown_whole_or_by_block(olt, kind, cage, _register, _channel):
    plug(olt, cage, 1, QSFP_PAGE)
    text, rc = olt.run(command(kind, 1))
    assert rc == SUCCESS
    head = QSFP_GENERAL + QSFP_VENDOR + QSFP_MANUFACTURE + "SFF-8636 MSA EEPROM Data\r\n" + DOUBLE_RULE
    assert text.startswith(head)
    dump = text.removeprefix(head).split("\r\n")
    assert [line[:7] for line in dump] == [f"{row:03x} :  " for row in range(12)] + [""]
    shown = b"".join(bytes.fromhex(line[7:]) for line in dump)
    assert shown == QSFP_PAGE[128:248]
    assert olt.run(command(kind, 1, "vendor")) == (QSFP_VENDOR, SUCCESS)
    assert olt.run(command(kind, 1, "manufacture")) == (QSFP_MANUFACTURE, SUCCESS)


def test_the_independent_decoder_agrees_with_the_spelled_out_displays():
    pages = {0x50: SFP_PAGE, 0x51: A2_PAGE}
    for block, shown in ((None, SFP_WHOLE), ("vendor", SFP_VENDOR), ("manufacture", SFP_MANUFACTURE)):
        assert idprom(lambda address, register: pages[address][register], block) == shown
    whole = idprom(lambda address, register: QSFP_PAGE[register])
    assert whole.startswith(QSFP_GENERAL + QSFP_VENDOR + QSFP_MANUFACTURE)


@pytest.mark.parametrize("kind, cage, register, channel", KINDS)
@pytest.mark.parametrize("identifier", [0x01, 0x0E, 0x12, 0x18, 0xFF])
def test_a_module_of_another_family_shows_nothing_and_is_let_go(olt, kind, cage, register, channel, identifier):
    plug(olt, cage, 1, memory({0: identifier, 20: "ACME"}), A2_PAGE)
    for block, reason in BLOCKS.items():
        assert run(olt, command(kind, 1, block)) == (
            "", SUCCESS, reached(reason, register, channel, *reads(0x50, 0, 0)))


# --- what there is no module for

@pytest.mark.parametrize("kind, name", [("gigabitEthernet", "GE"), ("gpon", "GPON"), ("xgpon", "XGPON")])
@pytest.mark.parametrize("slot, port", [(0, 9), (0, 0), (1, 1), (0, 31), (0, 32), (7, 200), (0, 2147483647)])
@pytest.mark.parametrize("block", BLOCKS)
def test_an_interface_that_the_board_does_not_have_is_named_and_the_board_left_alone(olt, kind, name, slot, port, block):
    line = f"show idprom interface {kind} {slot}/{port}" + (f" {block}" if block else "")
    assert run(olt, line) == (f"{name} {slot}/{port} not exist\r\n", SUCCESS, [])


def test_of_gigabit_interfaces_there_are_as_many_as_the_board_says(olt):
    assert olt.run(command("gigabitEthernet", 4))[0] == "Interface gigabitEthernet 0/4 transceiver is absent.\r\n"
    assert olt.run(command("gigabitEthernet", 5))[0] == "GE 0/5 not exist\r\n"


@pytest.mark.parametrize("kind, _cage, register, _channel", KINDS)
@pytest.mark.parametrize("block", BLOCKS)
def test_an_empty_cage_is_said_to_be_absent_without_a_channel(olt, kind, _cage, register, _channel, block):
    assert run(olt, command(kind, 2, block)) == (
        f"Interface {kind} 0/2 transceiver is absent.\r\n", SUCCESS, absent(BLOCKS[block], register))


@pytest.mark.parametrize("position", ["1", "0/", "x/1", "0/1/2", ""])
def test_words_that_are_no_position_are_refused(olt, position):
    assert olt.run(f"show idprom interface gpon {position}")[1] != SUCCESS


def test_kinds_are_told_apart_and_one_block_at_a_time_is_shown(olt):
    assert olt.run("show idprom interface 0/1")[1] != SUCCESS
    assert olt.run("show idprom interface epon 0/1")[1] == NO_MATCH
    assert olt.run(command("gpon", 1, "vendor manufacture"))[1] == NO_MATCH
    assert olt.run(command("gpon", 1, "date"))[1] == NO_MATCH


def test_words_may_be_abbreviated(olt):
    plug(olt, "gpon", 1, SFP_PAGE, A2_PAGE)
    assert olt.run("sh idp int gp 0/1 v") == (SFP_VENDOR, SUCCESS)
    assert olt.run("show idprom interface gig 0/9") == ("GE 0/9 not exist\r\n", SUCCESS)
    for kind, word in (("gig", "gigabitEthernet"), ("gp", "gpon"), ("x", "xgpon")):
        assert olt.run(f"show idprom interface {kind} 0/2") == (f"Interface {word} 0/2 transceiver is absent.\r\n", SUCCESS)


def test_each_kind_has_a_port_table_of_its_own(make_olt):
    olt = make_olt(board={"records": [
        record(2, 0x08, pon1=[1, {"port": 3, "slot": 2}], pon2=[2]),
        record(5, 0x10, sfp=[1, {"port": 2, "in_use": False}]),
    ]}).start()
    for kind, name, position, exists in [
            ("gpon", "GPON", "0/1", True), ("xgpon", "XGPON", "0/1", False), ("gpon", "GPON", "0/2", False),
            ("xgpon", "XGPON", "0/2", True), ("gpon", "GPON", "2/3", True), ("gpon", "GPON", "0/3", False),
            ("gigabitEthernet", "GE", "0/1", True), ("gigabitEthernet", "GE", "0/2", False)]:
        expected = f"Interface {kind} {position} transceiver is absent." if exists else f"{name} {position} not exist"
        assert olt.run(f"show idprom interface {kind} {position}") == (expected + "\r\n", SUCCESS)


# --- what it does to the board

SFP_GENERAL_READS = [*reads(0x50, 2, 2), "I(0x50,60,2)", *reads(0x50, 3, 10), *reads(0x50, 36, 36), *reads(0x50, 14, 19),
                     *reads(0x50, 92, 92), *reads(0x50, 11, 12)]
SFP_VENDOR_READS = [*reads(0x50, 20, 35), *reads(0x50, 37, 39), *reads(0x50, 40, 59), *reads(0x50, 68, 83)]
PAGE_0 = "O(0x50,127,1)=00"
QSFP_VENDOR_READS = [*reads(0x50, 148, 163), *reads(0x50, 165, 167), *reads(0x50, 168, 185), *reads(0x50, 196, 211)]


def qsfp_general_reads(*extended):
    return [*reads(0x50, 128, 128), *reads(0x50, 130, 130), *reads(0x50, 186, 187), *reads(0x50, 131, 138), *extended,
            *reads(0x50, 142, 146), *reads(0x50, 92, 92), *reads(0x50, 139, 140)]


@pytest.mark.parametrize("kind, cage, register, channel", KINDS)
def test_one_bracket_holds_exactly_the_reads_that_an_sfp_display_needs(olt, kind, cage, register, channel):
    plug(olt, cage, 1, SFP_PAGE, A2_PAGE)
    head, date = reads(0x50, 0, 0), reads(0x50, 84, 91)
    for block, work in ((None, [*SFP_GENERAL_READS, *SFP_VENDOR_READS, *date, *reads(0x51, 128, 247)]),
                        ("vendor", SFP_VENDOR_READS),
                        ("manufacture", [*reads(0x50, 68, 83), *date, *reads(0x50, 20, 35)])):
        assert run(olt, command(kind, 1, block))[2] == reached(BLOCKS[block], register, channel, *head, *work)


@pytest.mark.parametrize("kind, cage, register, channel", KINDS)
def test_a_qsfp_has_its_page_selected_before_anything_above_127_is_read(olt, kind, cage, register, channel):
    plug(olt, cage, 1, QSFP_PAGE)
    head, date = [*reads(0x50, 0, 0), PAGE_0], reads(0x50, 212, 219)
    general = qsfp_general_reads(*reads(0x50, 192, 192))
    for block, work in ((None, [*general, *QSFP_VENDOR_READS, *date, *reads(0x50, 128, 247)]),
                        ("vendor", QSFP_VENDOR_READS),
                        ("manufacture", [*reads(0x50, 196, 211), *date, *reads(0x50, 148, 163)])):
        assert run(olt, command(kind, 1, block))[2] == reached(BLOCKS[block], register, channel, *head, *work)


@pytest.mark.parametrize("code", [0x00, 0x02, 0x81, 0xC0, 0xFF])
def test_the_extended_code_of_a_qsfp_is_not_read_unless_byte_131_is_exactly_0x80(olt, code):
    plug(olt, "gpon", 1, QSFP_PAGE)
    set_memory(olt, "gpon", 1, 0x50, 131, [code])
    expected = [*reads(0x50, 0, 0), PAGE_0, *qsfp_general_reads(), *QSFP_VENDOR_READS]
    assert run(olt, command("gpon", 1))[2][6 : 6 + len(expected)] == expected


def test_a_page_that_another_reader_left_does_not_matter(olt):
    lower, page0, page3 = QSFP_PAGE[:128], QSFP_PAGE[128:], bytes(128)
    folder = olt.state / "paged"
    folder.mkdir(exist_ok=True)
    files = []
    for part, data in (("lower", lower), ("page00", page0), ("page03", page3)):
        files.append(folder / f"module.{part}.bin")
        files[-1].write_bytes(data)
    olt.boardctl("plug", "gpon", 1, *files)
    set_memory(olt, "gpon", 1, 0x50, 127, [3])
    assert olt.run(command("gpon", 1, "vendor"))[0] == QSFP_VENDOR


def test_the_highest_ports_are_reached_on_their_channels(olt):
    plug(olt, "gpon", 8, SFP_PAGE, A2_PAGE)
    plug(olt, "ge", 4, SFP_PAGE, A2_PAGE)
    for line, register, channel in ((command("gpon", 8), 11, 7), (command("gigabitEthernet", 4), 12, 11)):
        text, rc, steps = run(olt, line)
        assert (text, rc) == (SFP_WHOLE, SUCCESS)
        assert steps[4:6] == [f"R({register})", f"CH({channel})"] and steps[-3:] == ["CHE", "close", "give"]


@pytest.mark.parametrize("block", BLOCKS)
def test_a_cpld_that_does_not_open_ends_the_display_in_silence(olt, block):
    plug(olt, "gpon", 1, SFP_PAGE, A2_PAGE)
    olt.faults("misc_cpld_i2c_open ret=-1 errno=5 thread=main")
    assert run(olt, command("gpon", 1, block)) == (
        "", SUCCESS, ["take", f"raise {BLOCKS[block]}", "open", "lower", "give"])


def test_a_channel_that_cannot_be_selected_is_an_absent_module(olt):
    plug(olt, "gpon", 1, SFP_PAGE, A2_PAGE)
    olt.faults("misc_cpld_channel_select ret=-1 errno=5 thread=main")
    assert run(olt, command("gpon", 1)) == (
        "Interface gpon 0/1 transceiver is absent.\r\n", SUCCESS,
        board_session("transceiver_idprom_show", "R(11)", "CH(0)"))


def test_a_presence_register_that_cannot_be_read_holds_no_module(olt):
    plug(olt, "gpon", 1, SFP_PAGE, A2_PAGE)
    olt.faults("misc_cpld_i2c_read_byte ret=-1 errno=5 thread=main")
    assert olt.run(command("gpon", 1)) == ("Interface gpon 0/1 transceiver is absent.\r\n", SUCCESS)


def test_a_module_that_is_switched_off_is_absent(olt):
    plug(olt, "gpon", 1, SFP_PAGE, A2_PAGE)
    olt.boardctl("reg", "set", 11, 0)
    assert olt.run(command("gpon", 1)) == ("Interface gpon 0/1 transceiver is absent.\r\n", SUCCESS)
