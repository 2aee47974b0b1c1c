# SPDX-License-Identifier: GPL-2.0-or-later
"""Commands that show what a tool of the system prints: the real tools, and stand-ins for broken ones."""
import contextlib
import re

import pytest
from calls import of
from olt import wait_until
from proc_files import bound
from traced_fixtures import olt  # noqa: F401

NETSTAT = "/usr/bin/netstat"


@contextlib.contextmanager
def tool(olt, path, *lines):
    """While it lasts, a script of these lines stands in for the tool.  The name it has meanwhile is not ours."""
    with bound(olt, path, "".join(f"{line}\n" for line in ("#!/bin/sh", *lines)), mode=0o755):
        yield


LINES = {
    "show top": "top -n1",
    "show sys ps": "ps",
    "show sys arp": "cat /proc/net/arp",
    "show ipv6 neighbors": "ip -6 neigh show",
    "show sys cpu": "cat /proc/cpuinfo",
    "show ipcs": "ipcs",
    "show netstat": "netstat -nal",
    "show iptables": "iptables -L -n",
    "show ip6tables": "ip6tables -L -n",
}


@pytest.mark.parametrize("command", LINES)
def test_a_show_runs_one_line_and_raises_no_privileges(olt, command):
    mark = len(olt.trace())
    text, rc = olt.run(command)
    assert rc == 0
    calls = [call for call in olt.trace()[mark:] if call.thread == "main"]
    assert [call.values["line"] for call in of(calls, "system_cmd|pal_system|system")] == [LINES[command]]
    assert not of(calls, "raise|lower|seteuid")


@pytest.mark.parametrize("command", ["show sys arp", "show ipv6 neighbors", "show ipcs", "show iptables", "show ip6tables"])
def test_what_the_tool_prints_is_shown_and_nothing_else(olt, command):
    def is_the_same():
        said = olt.exec("sh", "-c", "XTABLES_LIBDIR=/usr/lib/xtables " + LINES[command])
        assert said.returncode == 0, said.stderr
        return olt.run(command) == (said.stdout, 0)

    wait_until(is_the_same, "the tool's own text")  # what it lists may change between the two runs


def test_processors_are_shown_as_the_kernel_tells_them(olt):
    text = "processor\t: 0\nmodel name\t: %s%n 100%\n\nprocessor\t: 1\n"
    with bound(olt, "/proc/cpuinfo", text):
        assert olt.run("show sys cpu") == (text, 0)


def test_top_shows_one_screen_without_terminal_sequences(olt):
    text, rc = olt.run("show top")
    assert rc == 0 and "\x1b" not in text and "\r" not in text
    assert text.startswith("top - ") and text.count("top - ") == 1
    assert re.search(r"^ *PID USER .*COMMAND", text, re.MULTILINE)
    assert re.search(r"^ *\d+ root .* box", text, re.MULTILINE)


def test_processes_are_listed(olt):
    lines = olt.run("show sys ps")[0].splitlines()
    assert lines[0].split() == ["PID", "TTY", "TIME", "CMD"]
    assert "boardsim" in {line.split()[3] for line in lines[1:]}


def test_sockets_are_listed(olt):
    with olt.telnet():
        text, _ = olt.run("show netstat")
    assert re.search(r"^tcp .* 0\.0\.0\.0:2709 .* LISTEN", text, re.MULTILINE)
    assert re.search(r"^tcp .* 127\.0\.0\.1:2709 +127\.0\.0\.1:\d+ +ESTABLISHED", text, re.MULTILINE)
    assert "/run/frr/diagd.vty" in text


def test_semaphores_are_listed(olt):
    assert re.search(r"^0x00102410 +\d+ +daemon +660 +1", olt.run("show ipcs")[0], re.MULTILINE)


@pytest.fixture(scope="module")
def link(olt):
    """A link of the box, its other end in the box as well."""
    olt.exec("ip", "link", "add", "uplink0", "type", "veth", "peer", "name", "uplink1", check=True)
    olt.exec("ip", "link", "set", "uplink0", "up", check=True)
    yield "uplink0"
    olt.exec("ip", "link", "del", "uplink0", check=True)


def test_neighbours_are_listed(olt, link):
    for address in ("192.0.2.7", "2001:db8::7"):
        olt.exec("ip", "neigh", "add", address, "lladdr", "02:00:00:00:00:07", "dev", link, "nud", "permanent", check=True)
    assert re.search(rf"^192\.0\.2\.7 .* 02:00:00:00:00:07 .* {link}$", olt.run("show sys arp")[0], re.MULTILINE)
    assert f"2001:db8::7 dev {link} lladdr 02:00:00:00:00:07 PERMANENT" in olt.run("show ipv6 neighbors")[0]


@pytest.mark.parametrize("program, command", [("iptables", "show iptables"), ("ip6tables", "show ip6tables")])
def test_rules_that_need_an_extension_are_listed(olt, program, command):
    rule = ["INPUT", "-p", "tcp", "--dport", "2709", "-j", "DROP"]
    olt.exec(program, "-A", *rule, check=True)
    try:
        text, _ = olt.run(command)
    finally:
        olt.exec(program, "-D", *rule, check=True)
    assert re.search(r"^DROP .* tcp dpt:2709$", text, re.MULTILINE), text


# --- tools that misbehave


def answers(olt):
    return olt.run("show sys mem json")[1] == 0


def test_a_tool_that_is_missing_is_said_by_the_shell(olt):
    olt.exec("mv", NETSTAT, NETSTAT + ".away", check=True)
    try:
        assert olt.run("show netstat") == ("sh: 1: netstat: not found\n", 0)
    finally:
        olt.exec("mv", NETSTAT + ".away", NETSTAT, check=True)


def test_a_tool_that_fails_speaks_for_itself(olt):
    with tool(olt, NETSTAT, "echo 'netstat: no such thing' >&2", "exit 7"):
        assert olt.run("show netstat") == ("netstat: no such thing\n", 0)


def test_a_tool_that_dies_leaves_what_it_printed(olt):
    with tool(olt, NETSTAT, "echo begun", "kill -SEGV $$"):
        text, rc = olt.run("show netstat")
    assert rc == 0 and text.startswith("begun\n")
    assert answers(olt)


def test_a_megabyte_arrives_whole(olt):
    lines = 20000
    with tool(olt, NETSTAT, f"seq -f 'line %046.0f' {lines}"):
        text, rc = olt.run("show netstat")
    assert rc == 0 and len(text) > 1_000_000
    assert text == "".join(f"line {number:046d}\n" for number in range(1, lines + 1))


def test_what_a_tool_prints_is_no_format_and_ends_no_answer(olt):
    with tool(olt, NETSTAT, r"printf '100%%s%%n\0\0\0\0 \377 end'"):
        assert olt.run("show netstat") == ("100%s%n \xff end", 0)


def test_a_tool_that_reads_finds_the_end(olt):
    with tool(olt, NETSTAT, "cat", "echo after"):
        assert olt.run("show netstat") == ("after\n", 0)


@pytest.mark.parametrize("command, path", [("show netstat", NETSTAT), ("show sys cpu-usage", "/usr/bin/mpstat")])
def test_what_a_slow_tool_has_printed_is_shown_while_it_works(olt, command, path):
    go = olt.state / "log" / "go"
    with tool(olt, path, "echo banner", "until [ -e /var/log/go ]; do sleep 0.01; done", "echo rest"):
        with olt.vty() as session:
            session.send(command)
            shown = b""
            while shown != b"banner\n":
                shown += session.socket.recv(100)
            go.touch()
            try:
                text, rc = session.receive()
            finally:
                go.unlink()
    assert rc == 0 and text.startswith("rest\n")


def test_a_session_that_leaves_while_its_tool_works_leaves_nothing_behind(olt):
    before = olt.settled_fds()
    go = olt.state / "log" / "go"
    with tool(olt, NETSTAT, "touch /var/log/begun", "until [ -e /var/log/go ]; do sleep 0.01; done", "echo rest"):
        with olt.vty() as session:
            session.send("show netstat")
            wait_until((olt.state / "log" / "begun").exists, "the tool runs")
        go.touch()
        wait_until(lambda: answers(olt), "the daemon answers")
        go.unlink()
    olt.wait_no_more_fds(before)


def test_a_filter_works_on_the_lines_of_a_tool(olt):
    with tool(olt, NETSTAT, "printf 'tcp one\\nudp two\\ntcp three\\n'"):
        assert olt.run("show netstat | include tcp") == ("tcp one\ntcp three\n", 0)
