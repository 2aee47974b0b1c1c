# SPDX-License-Identifier: GPL-2.0-or-later
"""The reader of the table of commands."""
import command_table
import pytest
from command_table import ALARM_LOG, COMMANDS, CONFIG, DIAGNOSE, GPON, SETS, XGPON


def command(name, node=CONFIG):
    (found,) = [found for found in COMMANDS if (found.name, found.node) == (f"{name}_cmd", node)]
    return found


def test_a_command_has_node_words_help_visibility_and_family():
    found = command("clear_syslog")
    assert found.syntax == "clear syslog [level <debug|info|notice|warning|major|critical|alert|emerg>]"
    assert found.help == ("Show information.", "Alarm log.", "Specify log level.", "Specify log debug level.",
                          "Specify log info level.", "Specify log notice level.", "Specify log warning level.",
                          "Specify log major level.", "Specify log critical level.", "Specify log alert level.",
                          "Specify log emerg level.")
    assert found.hidden and not command("show_alarm_log").hidden
    assert found.family == "alarm records" and command("reboot_device").family == "the board"


def test_help_lines_of_a_set_that_are_its_own_come_once():
    assert command("alarm_event_default_action").help[2:] == (
        "Print in the daemon's log.", "Record in the alarm log.", "Send a trap.", "Send to the remote log servers.",
        "All four actions.")


def test_a_command_in_two_nodes_comes_twice_in_their_order():
    nodes = [found.node for found in COMMANDS if found.name == "show_transceiver_rssi_txdis_cmd"]
    assert nodes == [GPON, XGPON]
    assert command("show_system_power").syntax == command("show_system_power", DIAGNOSE).syntax


def test_a_command_without_help_lines_may_explain_itself_as_it_likes():
    assert command("alarm_log_global_threshold_set").help is None


def test_no_set_is_left_in_a_syntax_or_in_help():
    for found in COMMANDS:
        assert "{" not in found.syntax and not any("{" in line for line in found.help or ())
    assert len(SETS["ONU_ALARM"]) == 39 and SETS["SWITCH"] == ["enable", "disable"]


def test_numbers_of_nodes():
    assert (CONFIG, GPON, XGPON, DIAGNOSE, ALARM_LOG) == (4, 124, 125, 133, 155)


@pytest.mark.parametrize("text", ["config a_b hidden_\n  a b\n  - A\n  - B\n", "config a_b\n  a b\n  c d\n  - A\n"])
def test_a_table_that_is_none_is_an_error(monkeypatch, tmp_path, text):
    (tmp_path / "tests").mkdir()
    (tmp_path / "tests" / "commands.txt").write_text(text)
    monkeypatch.setattr(command_table, "PROJECT", tmp_path)
    with pytest.raises((AssertionError, ValueError)):
        command_table._read()
