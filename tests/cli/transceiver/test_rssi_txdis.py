# SPDX-License-Identifier: GPL-2.0-or-later
"""The shared RSSI/TXDIS pin of an interface's module: transceiver rssi-txdis, and its display."""
import pytest
from cpld import board_session
from module_memory import ask_board, memory, plug, set_memory
from module_steps import absent, reached, run
from sff_texts import idprom
from traced_fixtures import olt  # noqa: F401
from vty import INCOMPLETE, NO_MATCH, SUCCESS

SELECT, SHOW = "transceiver rssi-txdis", "show transceiver rssi-txdis"
SET_REASON, SHOW_REASON = "transceiver_rssi_txids_set", "transceiver_rssi_txids_show"
NODES = ["gpon", "xgpon"]


@pytest.fixture(autouse=True)
def as_found(olt):
    yield
    olt.faults()
    ask_board(olt, "fault", "clear")
    for port in (1, 8):
        olt.boardctl("unplug", "gpon", port)
    olt.wait_free("board")


def plug_with(olt, control, port=1):
    plug(olt, "gpon", port, memory({0: 3}), memory({117: 0x11, 118: control, 119: 0x22}))


def control_bytes(olt, port=1):
    """Bytes 117 to 119: the control byte between its neighbours."""
    return bytes.fromhex(olt.boardctl("module", "get", "gpon", port, "0x51", 117, 3))


def work(control, wanted):
    return ["I(0x51,118,1)", f"O(0x51,118,1)={wanted:02x}"]


@pytest.mark.parametrize("kind", NODES)
@pytest.mark.parametrize("word, before, after", [
    ("rssi", 0x00, 0x40), ("rssi", 0xC0, 0xC0), ("rssi", 0xBF, 0xFF), ("rssi", 0x30, 0x70),
    ("txdis", 0xC0, 0x80), ("txdis", 0x00, 0x00), ("txdis", 0xFF, 0xBF), ("txdis", 0x40, 0x00)])
def test_the_command_changes_bit_6_alone_and_says_nothing(olt, kind, word, before, after):
    plug_with(olt, before)
    assert run(olt, f"{SELECT} {word}", f"{kind} 0/1") == ("", SUCCESS, reached(SET_REASON, 11, 0, *work(before, after)))
    assert control_bytes(olt) == bytes([0x11, after, 0x22])


@pytest.mark.parametrize("kind", NODES)
@pytest.mark.parametrize("control, value, rssi, pin, xgpon, gpon", [
    (0x30, "0x30", "XGPON RSSI Monitor", "TXDIS input", "", ""),
    (0xC0, "0xC0", "GPON RSSI Monitor", "RSSI input", "XGPON TXDIS", "GPON TXDIS"),
    (0x0C, "0xC", "XGPON RSSI Monitor", "TXDIS input", "XGPON TXDIS", "GPON TXDIS"),
    (0x00, "0x0", "XGPON RSSI Monitor", "TXDIS input", "XGPON TXDIS", "GPON TXDIS"),
    (0xAF, "0xAF", "GPON RSSI Monitor", "TXDIS input", "", "GPON TXDIS"),
    (0x50, "0x50", "XGPON RSSI Monitor", "RSSI input", "XGPON TXDIS", ""),
    (0xFF, "0xFF", "GPON RSSI Monitor", "RSSI input", "", "")])
def test_the_display_names_what_each_bit_chooses(olt, kind, control, value, rssi, pin, xgpon, gpon):
    plug_with(olt, control)
    assert run(olt, SHOW, f"{kind} 0/1") == (
        f"Extended Control/Status Register value : {value}\r\n"
        f"  RSSI Select         : {rssi}\r\n"
        f"  RSSI/TXDIS Select   : {pin}\r\n"
        f"  XGSPON TXDIS Select : {xgpon}\r\n"
        f"  GPON TXDIS Select   : {gpon}\r\n", SUCCESS, reached(SHOW_REASON, 11, 0, "I(0x51,118,1)"))


@pytest.mark.parametrize("kind", NODES)
def test_the_port_is_that_of_the_node(olt, kind):
    plug_with(olt, 0x00, port=1)
    plug_with(olt, 0x00, port=8)
    with olt.vty(f"{kind} 0/8") as eighth, olt.vty(f"{kind} 0/1") as first:
        eighth.run(f"{SELECT} rssi")
        assert "value : 0x40" in eighth.run(SHOW)[0] and "value : 0x0\r" in first.run(SHOW)[0]
    assert run(olt, f"{SELECT} txdis", f"{kind} 0/8")[2] == reached(SET_REASON, 11, 7, *work(0x40, 0x00))


@pytest.mark.parametrize("kind", NODES)
@pytest.mark.parametrize("words, reason", [(f"{SELECT} rssi", SET_REASON), (f"{SELECT} txdis", SET_REASON), (SHOW, SHOW_REASON)])
@pytest.mark.parametrize("position", ["0/2", "0/8", "0/0", "0/9", "0/33", "1/40"])
def test_without_a_module_nothing_is_shown_or_written(olt, kind, words, reason, position):
    plug_with(olt, 0x00)
    assert run(olt, words, f"{kind} {position}") == ("", SUCCESS, absent(reason, 11))
    assert control_bytes(olt) == b"\x11\x00\x22"


@pytest.mark.parametrize("kind", NODES)
@pytest.mark.parametrize("words, reason", [(f"{SELECT} rssi", SET_REASON), (SHOW, SHOW_REASON)])
@pytest.mark.parametrize("call, steps", [
    ("misc_cpld_i2c_open", None), ("misc_cpld_i2c_read_byte", ["R(11)"]), ("misc_cpld_channel_select", ["R(11)", "CH(0)"])])
def test_a_module_that_cannot_be_reached_is_left_in_silence(olt, kind, words, reason, call, steps):
    plug_with(olt, 0x00)
    olt.faults(f"{call} ret=-1 errno=5 thread=main")
    expected = ["take", f"raise {reason}", "open", "lower", "give"] if steps is None else board_session(reason, *steps)
    assert run(olt, words, f"{kind} 0/1") == ("", SUCCESS, expected)
    assert control_bytes(olt) == b"\x11\x00\x22"


def test_a_byte_that_cannot_be_read_counts_as_zero(olt):
    plug_with(olt, 0xA5)
    ask_board(olt, "fault", "add", "i2c_read", "addr=0x51", "reg=118")
    assert olt.run(SHOW, "gpon 0/1")[0].startswith("Extended Control/Status Register value : 0x0\r\n")
    assert run(olt, f"{SELECT} rssi", "gpon 0/1") == ("", SUCCESS, reached(SET_REASON, 11, 0, *work(0, 0x40)))
    ask_board(olt, "fault", "clear")
    assert control_bytes(olt)[1] == 0x40


def test_a_byte_that_cannot_be_written_is_passed_over(olt):
    plug_with(olt, 0x00)
    ask_board(olt, "fault", "add", "i2c_write", "addr=0x51", "reg=118")
    assert run(olt, f"{SELECT} rssi", "gpon 0/1") == ("", SUCCESS, reached(SET_REASON, 11, 0, *work(0, 0x40)))
    assert control_bytes(olt)[1] == 0x00


def test_a_module_that_died_is_shown_as_zero_and_set_in_vain(olt):
    plug_with(olt, 0x55)
    olt.boardctl("module", "die", "gpon", 1)
    assert olt.run(SHOW, "gpon 0/1")[0].startswith("Extended Control/Status Register value : 0x0\r\n")
    assert olt.run(f"{SELECT} rssi", "gpon 0/1") == ("", SUCCESS)
    olt.boardctl("module", "revive", "gpon", 1)
    assert control_bytes(olt)[1] == 0x55


def test_the_choice_is_the_modules_and_shows_in_the_display_of_every_session(olt):
    plug_with(olt, 0x00)
    olt.run(f"{SELECT} rssi", "gpon 0/1")
    assert "RSSI input" in olt.run(SHOW, "xgpon 0/1")[0]
    set_memory(olt, "gpon", 1, 0x51, 118, [0x00])
    assert "TXDIS input" in olt.run(SHOW, "gpon 0/1")[0]
    pages = {0x50: memory({0: 3}), 0x51: memory({})}
    assert olt.run("show idprom interface gpon 0/1")[0] == idprom(lambda at, register: pages[at][register]), "not in the dump"


def test_words_are_checked_by_the_syntax(olt):
    plug_with(olt, 0x00)
    for words, rc in ((SELECT, INCOMPLETE), (f"{SELECT} both", NO_MATCH), (f"{SELECT} rssi txdis", NO_MATCH),
                      (f"no {SELECT}", NO_MATCH), (f"{SHOW} json", NO_MATCH)):
        assert olt.run(words, "gpon 0/1")[1] == rc, words
    assert olt.run("tr rs r", "gpon 0/1") == ("", SUCCESS)
    assert control_bytes(olt)[1] == 0x40
