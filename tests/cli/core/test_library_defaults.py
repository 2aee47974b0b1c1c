# SPDX-License-Identifier: GPL-2.0-or-later
"""Commands of libfrr in a daemon that has no YANG modules, and without a host name."""
import pytest
from vty import SUCCESS


@pytest.mark.parametrize("form, shown", [("json", "{}"), ("xml", "")])
@pytest.mark.parametrize("defaults", ["", " with-defaults"])
def test_a_daemon_without_yang_modules_shows_an_empty_configuration(olt, form, shown, defaults):
    text, status = olt.run(f"show configuration running {form}{defaults}", "enable")
    assert ("".join(text.split()), status) == (shown, SUCCESS)
    assert olt.daemon_pid() == olt.pid


def test_without_a_host_name_the_prompt_shows_that_of_the_system(olt):
    system = olt.exec("uname", "-n").stdout.strip()
    with olt.telnet() as session:
        for line in ("enable", "configure terminal", "hostname lab"):
            session.run(line)
        assert session.prompt == "lab(config)# "
        session.run("no hostname")
        assert session.prompt == f"{system}(config)# "
    assert olt.run("hostname olt") == ("", SUCCESS)


def test_alarms_of_high_levels_leave_the_crash_log_alone(fresh_olt):
    """Nobody empties it, and it is in the way of every later alarm that is logged."""
    assert fresh_olt.run("alarm-log alarm power1-updown level emerg") == ("", SUCCESS)
    before = fresh_olt.settled_fds()
    assert fresh_olt.run("alarm-log debug send id 77 message heard") == ("", SUCCESS)
    fresh_olt.wait_log("(emerg): heard")
    fresh_olt.wait_no_more_fds(before)
    assert fresh_olt.exec("find", "/var/tmp/frr", "-name", "crashlog").stdout == ""
