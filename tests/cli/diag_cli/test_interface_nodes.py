# SPDX-License-Identifier: GPL-2.0-or-later
"""Command nodes: how a session gets into them, what its prompt says, how it gets out."""
import pytest
from vty import AMBIGUOUS, INCOMPLETE, NO_MATCH, SUCCESS


@pytest.fixture
def session(olt):
    """A telnet session in configuration."""
    with olt.telnet() as the_session:
        enter(the_session, "enable", "configure terminal")
        yield the_session


def enter(session, *commands):
    for command in commands:
        assert session.run(command) == "", command


@pytest.mark.parametrize("kind", ["gpon", "xgpon"])
@pytest.mark.parametrize("position", ["0/1", "0/3", "0/8", "1/3", "0/0", "0/9", "12/345", "00/03"])
def test_an_interface_command_names_the_interface_in_the_prompt(session, kind, position):
    slot, port = (int(word) for word in position.split("/"))
    enter(session, f"interface {kind} {position}")
    assert session.prompt == f"olt(config-{kind}-{slot}/{port})# "


@pytest.mark.parametrize("kind", ["gpon", "xgpon"])
def test_an_interface_command_prints_nothing_and_succeeds(olt, kind):
    assert olt.run(f"interface {kind} 0/3") == ("", SUCCESS)


@pytest.mark.parametrize("kind", ["gpon", "xgpon"])
@pytest.mark.parametrize("word", ["3", "a/3", "0/a", "/3", "0/3/4", "-1/3", "0/-3", "0 3", "0x1/3", "0/3x", "1/0/3"])
def test_words_that_are_no_slot_and_port_are_refused(olt, kind, word):
    _, rc = olt.run(f"interface {kind} {word}")
    assert rc in (NO_MATCH, INCOMPLETE)


def test_a_position_without_an_end_is_refused(olt):
    assert olt.run("interface gpon")[1] == INCOMPLETE
    assert olt.run("interface gpon 0/")[1] != SUCCESS
    assert olt.run("interface 0/3")[1] != SUCCESS


def test_interface_is_no_command_of_the_enable_node(olt):
    assert olt.run("interface gpon 0/3", "enable")[1] == NO_MATCH


def test_a_huge_position_is_survived(olt):
    assert olt.run("interface gpon 99999999999999999999/99999999999999999999")[1] in (SUCCESS, NO_MATCH)
    assert olt.run("show version")[1] == SUCCESS


def test_keywords_may_be_abbreviated(session):
    enter(session, "int gp 0/3")
    assert session.prompt == "olt(config-gpon-0/3)# "
    enter(session, "exit", "inter xg 0/4")
    assert session.prompt == "olt(config-xgpon-0/4)# "


def test_one_interface_leads_straight_to_another(session):
    enter(session, "interface gpon 0/3", "interface xgpon 0/5")
    assert session.prompt == "olt(config-xgpon-0/5)# "
    enter(session, "interface gpon 1/2")
    assert session.prompt == "olt(config-gpon-1/2)# "


def test_the_diagnostics_node_is_entered_from_enable_and_from_configuration(olt):
    with olt.telnet() as session:
        enter(session, "enable", "diagnose")
        assert session.prompt == "olt(diagnose)# "
        enter(session, "exit")
        assert session.prompt == "olt(config)# "
        enter(session, "diagnose", "end")
        assert session.prompt == "olt# "


def test_the_diagnostics_node_is_not_entered_from_the_view_node(olt):
    assert olt.run("diagnose", "view")[1] == NO_MATCH


def test_two_sessions_in_two_interfaces_keep_their_own(olt):
    with olt.telnet() as one, olt.telnet() as two:
        enter(one, "enable", "configure terminal", "interface gpon 0/3")
        # Configuration belongs to several sessions at once.
        enter(two, "enable", "configure terminal", "interface gpon 0/5")
        for _ in range(5):
            assert one.run("") == "" and two.run("") == ""
            assert (one.prompt, two.prompt) == ("olt(config-gpon-0/3)# ", "olt(config-gpon-0/5)# ")
        enter(two, "exit", "interface xgpon 0/7")
        one.run("list")
        assert (one.prompt, two.prompt) == ("olt(config-gpon-0/3)# ", "olt(config-xgpon-0/7)# ")


def test_help_shows_the_slot_and_port_token_with_its_text(session):
    shown = session.type("interface gpon ?")
    assert "S/P" in shown
    assert "PON interface number,slot:<0>,port:<1-x>,x is 2,4,or 8." in shown


def test_the_prompt_follows_the_host_name(olt):
    with olt.telnet() as session:
        enter(session, "enable", "configure terminal", "hostname box-7")
        try:
            enter(session, "interface gpon 0/3")
            assert session.prompt == "box-7(config-gpon-0/3)# "
        finally:
            enter(session, "hostname olt")
    with olt.telnet() as session:
        assert session.prompt == "olt> "


def test_lines_end_with_carriage_return_and_line_feed_on_the_socket(olt):
    text, _ = olt.run("show diag monitor", "diagnose")
    assert text.count("\r\n") == text.count("\n") == text.count("\r") == 4


def test_every_line_feed_is_doubled_into_crlf_over_telnet(olt):
    with olt.telnet() as session:
        enter(session, "enable", "diagnose")
        assert session.run("show diag monitor").count("\r\r\n") == 4


def test_ambiguous_and_incomplete_words_are_refused(olt):
    assert olt.run("interface")[1] == INCOMPLETE
    assert olt.run("w", "enable")[1] == AMBIGUOUS  # who, write


@pytest.mark.parametrize("noise", ["\x01\x02\x03", "%s%n%s", "a" * 3000, "show " + "x " * 500, "\xff\xfe", "|", "show version | inc"])
def test_noise_is_answered_and_survived(olt, noise):
    olt.run(noise)
    assert olt.run("show version")[1] == SUCCESS


def test_the_alarm_log_node_cannot_be_entered(olt):
    assert olt.run("alarm-log")[1] != SUCCESS
