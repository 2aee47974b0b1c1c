# SPDX-License-Identifier: GPL-2.0-or-later
"""diagsh for scripts."""

import re
import subprocess

from olt import BUILD

DIAGSH = str(BUILD / "bin" / "diagsh")
UNAVAILABLE, USAGE, NO_PERMISSION, BAD_DATA = 69, 64, 77, 65
MONITOR_LINE = re.compile(r"(FAN|USB|Power|Transceiver) Monitor +: (En|Dis)able")


def diagsh(olt, *words, **how):
    """diagsh from outside the box, as an operator runs it."""
    how = {"stdin": subprocess.DEVNULL, "capture_output": True, "timeout": 20, **how}
    if "input" in how:
        del how["stdin"]
    return subprocess.run([DIAGSH, "-s", str(olt.state), *words], **how)


def test_command_prints_its_output_byte_for_byte_and_nothing_else(olt):
    done = diagsh(olt, "-c", "show version")
    assert (done.returncode, done.stderr) == (0, b"")
    text, status = olt.run("show version")
    assert status == 0 and done.stdout == text.encode("latin-1") != b""


def test_commands_run_in_the_node_asked_for(olt):
    done = diagsh(olt, "-n", "diagnose", "-c", "show diag monitor")
    assert done.returncode == 0
    assert len(MONITOR_LINE.findall(done.stdout.decode())) == 4
    assert diagsh(olt, "-n", "interface gpon 0/3", "-c", "list").returncode == 0
    # The library's own command of that name, and not the daemon's.
    assert diagsh(olt, "-n", "enable", "-c", "show version").stdout.startswith(b"FRRouting")
    assert diagsh(olt, "-n", "view", "-c", "enable").returncode == 0


def test_several_commands_share_one_session(olt):
    done = diagsh(olt, "-c", "diagnose", "-c", "no fan monitor", "-c", "show diag monitor", "-c", "fan monitor")
    assert done.returncode == 0
    assert b"FAN Monitor         : Disable" in done.stdout


def test_unknown_command_goes_to_standard_error_with_its_status(olt):
    done = diagsh(olt, "-c", "no such command")
    assert done.returncode == 2
    assert done.stdout == b"" and b"Unknown command" in done.stderr


def test_ambiguous_and_incomplete_commands_have_their_statuses(olt):
    assert diagsh(olt, "-n", "enable", "-c", "e").returncode == 3
    assert diagsh(olt, "-c", "interface").returncode == 4


def test_first_failure_ends_the_run(olt):
    assert olt.run("fan monitor", "diagnose") == ("", 0)
    done = diagsh(olt, "-c", "show version", "-c", "nonsense", "-c", "diagnose", "-c", "no fan monitor")
    assert done.returncode == 2 and done.stdout != b""
    assert "FAN Monitor         : Enable" in olt.run("show diag monitor", "diagnose")[0]


def test_node_that_cannot_be_entered_is_an_error(olt):
    done = diagsh(olt, "-n", "interface nonsense 9", "-c", "show version")
    assert done.returncode != 0 and done.stdout == b"" and done.stderr != b""


def test_lines_of_standard_input_are_commands(olt):
    done = diagsh(olt, input=b"diagnose\n\n  \nshow diag monitor\r\n")
    assert done.returncode == 0
    assert len(MONITOR_LINE.findall(done.stdout.decode())) == 4


def test_command_the_vty_would_cut_in_two_is_not_sent(olt):
    for command in (b"show version " + b"x" * 4090, b"show version\0show version"):
        done = diagsh(olt, input=command + b"\n")
        assert done.returncode == BAD_DATA
        assert done.stdout == b"" and done.stderr.count(b"\n") == 1
    longest = b"show version" + b" " * (4094 - len("show version"))
    assert diagsh(olt, input=longest).returncode == 0


def test_output_that_cannot_be_written_is_an_error(olt):
    with open("/dev/full", "wb") as full:
        done = diagsh(olt, "-c", "show version", capture_output=False, stdout=full, stderr=subprocess.PIPE)
    assert done.returncode != 0 and b"cannot write" in done.stderr


def test_json_pipes_into_jq(olt):
    shown = diagsh(olt, "-c", "show transceiver json")
    assert shown.returncode == 0
    parsed = subprocess.run(["jq", "-e", "type"], input=shown.stdout, capture_output=True)
    assert parsed.returncode == 0, parsed.stderr


def test_works_while_another_session_is_in_configuration(olt):
    with olt.vty("config"), olt.telnet() as session:
        session.run("enable")
        session.run("configure terminal")
        assert diagsh(olt, "-c", "show version").returncode == 0


def test_vty_group_needs_no_password_and_others_are_told(olt):
    group = ["setpriv", "--reuid", "nobody", "--regid", "daemon", "--clear-groups"]
    other = ["setpriv", "--reuid", "nobody", "--regid", "nogroup", "--clear-groups"]
    program = "/run/olt/build/bin/diagsh"
    done = olt.exec(*group, program, "-c", "show version")
    assert done.returncode == 0, done.stderr
    done = olt.exec(*other, program, "-c", "show version")
    assert done.returncode == NO_PERMISSION
    assert done.stdout == "" and "only root and the vty group" in done.stderr


def test_socket_deeper_than_an_address_can_hold_is_reached(olt, tmp_path):
    deep = tmp_path / ("d" * 100) / ("e" * 100)
    deep.mkdir(parents=True)
    (deep / "olt").symlink_to(olt.state)
    done = subprocess.run(
        [DIAGSH, "-s", str(deep / "olt"), "-c", "show version"], stdin=subprocess.DEVNULL, capture_output=True
    )
    assert done.returncode == 0, done.stderr


def test_no_daemon_is_said_clearly(cold_olt):
    done = diagsh(cold_olt, "-c", "show version")
    assert done.returncode == UNAVAILABLE
    assert b"no daemon answers" in done.stderr and done.stderr.count(b"\n") == 1


def test_wrong_usage_is_refused(olt):
    assert diagsh(olt, "show version").returncode == USAGE
    assert diagsh(olt, "--nonsense").returncode == USAGE
    done = diagsh(olt, "--help")
    assert done.returncode == 0 and done.stdout.startswith(b"usage: diagsh")


def test_question_shows_what_can_follow(olt):
    done = diagsh(olt, "-c", "show alarm-log tail ?")
    assert (done.returncode, done.stdout, done.stderr) == (0, b"  (1-1000)  Specify latest log count.\n", b"")
    done = diagsh(olt, "-n", "diagnose", "-c", "show diag mo?")
    assert (done.returncode, done.stdout) == (0, b"  monitor  monitor information\n")
    done = diagsh(olt, "-c", "nonsense ?")
    assert (done.returncode, done.stdout) == (2, b"") and done.stderr == b"% There is no matched command.\n"


def test_question_mark_that_a_command_takes_is_its_own(olt):
    assert diagsh(olt, "-c", "alarm-log debug send id 0 message what?").returncode == 0
    assert olt.run("show alarm-log tail 1")[0].splitlines()[0].endswith("what?")


def test_unknown_command_is_told_with_the_node_that_knows_it(olt):
    known = "diagsh: it is known with -n {}\n"
    unknown = "% [DIAGD] Unknown command: {}\n"
    for node, command, option in (
        ("view", "show transceiver", "config"),
        ("config", "show diag monitor", "diagnose"),
        ("config", "alarm-log threshold pon-temp-high enable 70 65",
         '"interface gpon 0/1" or -n "interface xgpon 0/1"'),
        ("view", "show transceiver | include GPON", "config"),
    ):
        done = diagsh(olt, "-n", node, "-c", command)
        assert (done.returncode, done.stdout) == (2, b"")
        assert done.stderr.decode() == unknown.format(command) + known.format(option)
    assert diagsh(olt, "-c", "nobody knows").stderr.decode() == unknown.format("nobody knows")


def test_find_tells_node_syntax_and_help_on_a_line(olt):
    done = diagsh(olt, "--find", "Diag Monitor")
    assert (done.returncode, done.stdout) == (0, b"diagnose  show diag monitor  -- monitor information\n")
    lines = diagsh(olt, "--find", "pon-los").stdout.decode().splitlines()
    assert "config  alarm-log alarm <ALARM> level <LEVEL>  -- Specify log level." in lines
    assert max(map(len, lines)) < 160
    done = diagsh(olt, "--find", "no such thing")
    assert (done.returncode, done.stdout) == (1, b"")


def test_find_knows_every_command_that_list_shows(olt):
    found = diagsh(olt, "--find", ".").stdout.decode().splitlines()
    syntaxes = {line.split("  ", 1)[1].strip().split("  -- ")[0] for line in found}
    assert len(found) > 150
    for node in ("view", "enable", "config", "diagnose", "gpon 0/1"):
        for command in olt.run("list", node)[0].split("\n"):
            if command.strip() and "<" not in command and "{" not in command:
                assert command.strip() in syntaxes, (node, command)


def test_help_for_tells_every_word(olt):
    done = diagsh(olt, "--help-for", "show alarm-log tail")
    assert (done.returncode, done.stderr) == (0, b"")
    assert done.stdout.decode() == (
        "config: show alarm-log tail (1-1000)\n"
        "  show                  Show information.\n"
        "  alarm-log             Alarm log.\n"
        "  tail                  Latest log.\n"
        "  (1-1000)              Specify latest log count.\n"
    )
    assert diagsh(olt, "--help-for", "no such").returncode == 1


def test_output_that_no_terminal_shows_is_never_laid_out(olt):
    plain = diagsh(olt, "-c", "show transceiver")
    assert diagsh(olt, "--wide", "-c", "show transceiver").stdout == plain.stdout != b""
    assert diagsh(olt, "--wide=scroll", "-c", "show transceiver").stdout == plain.stdout
    assert diagsh(olt, "--wide=sideways", "-c", "show transceiver").returncode == USAGE
