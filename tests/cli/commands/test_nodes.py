# SPDX-License-Identifier: GPL-2.0-or-later
"""Every node an operator can stand in, seen through telnet."""

import pytest

# node: how to get there from enable, prompt, a command only listed there, where `exit` leads
NODES = {
    "enable": ([], "olt# ", "configure [terminal]", None),
    "config": (["configure terminal"], "olt(config)# ", "interface gpon <S/P>", "olt# "),
    "diagnose": (["diagnose"], "olt(diagnose)# ", "show diag monitor", "olt(config)# "),
    "gpon": (["configure terminal", "interface gpon 0/3"], "olt(config-gpon-0/3)# ", "exit", "olt(config)# "),
    "xgpon": (["configure terminal", "interface xgpon 0/5"], "olt(config-xgpon-0/5)# ", "exit", "olt(config)# "),
    "line": (["configure terminal", "line vty"], "olt(config-line)# ", "exec-timeout", "olt(config)# "),
}


@pytest.fixture
def session(olt):
    with olt.telnet() as telnet:
        telnet.run("enable")
        yield telnet


def stand_in(session, node):
    for step in NODES[node][0]:
        session.run(step)
    assert session.prompt == NODES[node][1]


@pytest.mark.parametrize("node", NODES)
def test_list_shows_the_commands_of_the_node(session, node):
    stand_in(session, node)
    text = session.run("list")
    assert NODES[node][2] in text
    assert session.prompt == NODES[node][1]
    commands = [line.strip() for line in text.splitlines()]
    assert "exit" in commands and "list [permutations]" in commands


@pytest.mark.parametrize("node", [node for node in NODES if NODES[node][3]])
def test_exit_leads_one_level_up(session, node):
    stand_in(session, node)
    session.run("exit")
    assert session.prompt == NODES[node][3]


@pytest.mark.parametrize("node", [node for node in NODES if node != "enable"])
def test_end_leads_to_the_enable_node(session, node):
    stand_in(session, node)
    session.run("end")
    assert session.prompt == "olt# "


def test_diagnose_is_entered_from_enable_and_from_configuration(session):
    session.run("diagnose")
    assert session.prompt == "olt(diagnose)# "
    session.run("exit")
    session.run("diagnose")
    assert session.prompt == "olt(diagnose)# "


def test_configuration_command_moves_an_interface_session_to_configuration(session):
    stand_in(session, "gpon")
    session.run("show version")
    assert session.prompt == "olt(config)# "


def test_two_interface_sessions_keep_their_own_prompts(olt):
    with olt.telnet() as three, olt.telnet() as five:
        both = {three: "olt(config-gpon-0/3)# ", five: "olt(config-gpon-0/5)# "}
        for session, port in ((three, 3), (five, 5)):
            for step in ("enable", "configure terminal", f"interface gpon 0/{port}"):
                session.run(step)
        for _ in range(3):
            for session, prompt in both.items():
                session.run("")
                assert session.prompt == prompt
            for session, prompt in both.items():
                session.send("ex\t")
                session.expect(rb"exit $")
                session.send("\x15")  # rub the line out
            for session, prompt in both.items():
                session.send("e?")
                shown = session.expect(prompt.encode().replace(b"(", rb"\(").replace(b")", rb"\)") + b"e$")
                assert "exit" in shown
                session.send("\x15")


def test_the_log_of_commands_names_the_interface(olt):
    with olt.telnet() as three, olt.telnet() as five:
        for session, port in ((three, 3), (five, 5)):
            for step in ("enable", "configure terminal", "log commands", f"interface gpon 0/{port}", "list", "list"):
                session.run(step)
    try:
        for port in (3, 5):
            olt.wait_log(f"(config-gpon-0/{port})# list\n")
        assert "%d" not in olt.log()
    finally:
        assert olt.run("no log commands")[1] == 0


def test_completion_draws_the_same_prompt_anew(olt):
    with olt.telnet() as three, olt.telnet() as five:
        for session, port in ((three, 3), (five, 5)):
            for step in ("enable", "configure terminal", f"interface gpon 0/{port}"):
                session.run(step)
        for session, port in ((five, 5), (three, 3), (five, 5)):
            session.send("e\t")  # end and exit: ambiguous, so the choices and the line are shown
            shown = session.expect(rf"config-gpon-0/{port}\)# e$".encode())
            assert "gpon-0/%d" % (8 - port) not in shown
            session.send("\x15")
            session.expect(rb"\x08$")
