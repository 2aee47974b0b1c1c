# SPDX-License-Identifier: GPL-2.0-or-later
"""The daemon comes up on its board and answers on both of its vtys."""

from vty import NO_MATCH, SUCCESS


def test_prompt_carries_kind_slot_and_port(olt):
    with olt.telnet() as session:
        assert session.prompt == "olt> "
        session.run("enable")
        assert session.prompt == "olt# "
        session.run("configure terminal")
        assert session.prompt == "olt(config)# "
        session.run("interface gpon 0/3")
        assert session.prompt == "olt(config-gpon-0/3)# "
        session.run("interface xgpon 0/5")
        assert session.prompt == "olt(config-xgpon-0/5)# "


def test_show_diag_monitor_lists_the_four_switches(olt):
    # The threshold monitor turns the transceiver's on after the others.
    text, status = olt.run("show diag monitor", "diagnose")
    assert status == SUCCESS
    lines = text.split("\r\n")
    assert [line[:20] for line in lines] == [
        "FAN Monitor         ",
        "USB Monitor         ",
        "Power Monitor       ",
        "Transceiver Monitor ",
        "",
    ]
    assert {line[20:] for line in lines[:4]} <= {": Enable", ": Disable"}


def test_switched_off_monitor_is_shown_as_disabled(olt):
    with olt.vty("diagnose") as session:
        for word, line in (("fan", 0), ("usb", 1), ("power", 2), ("transceiver", 3)):
            assert session.run(f"no {word} monitor") == ("", SUCCESS)
            assert session.run("show diag monitor")[0].split("\r\n")[line].endswith(": Disable")
            assert session.run(f"{word} monitor") == ("", SUCCESS)
    expected = "".join(
        f"{name:<20}: Enable\r\n" for name in ("FAN Monitor", "USB Monitor", "Power Monitor", "Transceiver Monitor")
    )
    assert olt.run("show diag monitor", "diagnose") == (expected, SUCCESS)


def test_unknown_command_is_refused_and_the_session_goes_on(olt):
    with olt.vty() as session:
        text, status = session.run("no such command")
        assert status == NO_MATCH and "Unknown command" in text
        assert session.run("interface gpon 0/1") == ("", SUCCESS)


def test_daemon_runs_as_root_only_where_it_must(olt):
    status = dict(line.split(":\t", 1) for line in open(f"/proc/{olt.pid}/status") if ":\t" in line)
    real, effective, _, _ = status["Uid"].split()
    assert (real, effective) == ("0", "1")
    assert status["Gid"].split()[1] == "1"


def test_both_semaphores_are_free_when_nothing_runs(olt):
    olt.wait_free("board")
    olt.wait_free("alarm")


def test_start_and_stop_leave_no_sanitizer_report_and_status_0(cold_olt):
    cold_olt.start()
    assert cold_olt.stop() == 0
    assert "Terminating on signal" in cold_olt.log()


def test_the_board_that_a_shell_talks_to_is_none_of_a_new_box(make_olt, monkeypatch):
    for name in ("BOARDSIM_DIR", "OLT_BOARD"):
        monkeypatch.setenv(name, "/elsewhere")
    olt = make_olt().start()
    olt.boardctl("reg", "set", 13, 0)
    assert olt.run("system led on", "diagnose") == ("", 0)
    assert olt.boardctl("reg", "get", 13) == "0x01\n"
