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
