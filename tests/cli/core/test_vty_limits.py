# SPDX-License-Identifier: GPL-2.0-or-later
"""Connections that others open: how many there may be, for how long without a password, and what they leave to root."""
import contextlib
import re
import resource
import time

import pytest
from olt import wait_until
from vty import SUCCESS, SessionClosed, Vty

REFUSAL = b"Too many vty sessions, try again later."
DEFAULT = 64
FEW = 96  # descriptors


@contextlib.contextmanager
def descriptors_for_children(count):
    soft, hard = resource.getrlimit(resource.RLIMIT_NOFILE)
    resource.setrlimit(resource.RLIMIT_NOFILE, (count, hard))
    try:
        yield
    finally:
        resource.setrlimit(resource.RLIMIT_NOFILE, (soft, hard))


@pytest.fixture
def few_descriptors(cold_olt):
    """An OLT whose daemon may have 96 descriptors, and sessions to no end."""
    cold_olt.configure("hostname olt", "password secret", "log file /var/log/diagd.log", "line vty", " session-limit 4096")
    with descriptors_for_children(FEW):
        cold_olt.start(wait=False)
    cold_olt.wait_answers()
    return cold_olt


def configure(olt, *lines):
    with olt.vty() as session:
        for line in ("line vty", *lines):
            assert session.run(line) == ("", SUCCESS)


def line_vty(olt):
    """The lines of the configuration about sessions."""
    text, status = olt.run("show running-config", "enable")
    assert status == SUCCESS
    block = re.search(r"^line vty\n((?: .*\n)*)exit\n", text, re.MULTILINE)
    return block[1].splitlines() if block else []


def is_let_in(session):
    """Whether a new session is asked for the password, or refused."""
    with contextlib.suppress(SessionClosed, ConnectionResetError):
        session.expect(rb"Password: $|" + REFUSAL)
        return REFUSAL not in session.match[0]
    return False


def sessions_until_refused(olt, stack, most):
    count = 0
    while is_let_in(stack.enter_context(olt.telnet(None))):
        count += 1
        assert count <= most
    return count


def log_lines(olt, text):
    return [line for line in olt.log().splitlines() if text in line]


def test_sixty_four_sessions_are_let_in_and_no_more(fresh_olt):
    with contextlib.ExitStack() as stack:
        assert sessions_until_refused(fresh_olt, stack, DEFAULT) == DEFAULT
        # the socket is not counted, and the operator who comes this way may let more in
        configure(fresh_olt, f"session-limit {DEFAULT + 1}")
        assert sessions_until_refused(fresh_olt, stack, DEFAULT + 1) == 1


def test_who_ends_a_session_makes_room_for_another(olt):
    configure(olt, "session-limit 2")
    with olt.telnet(), contextlib.closing(olt.telnet()) as second:
        assert not is_let_in(olt.telnet(None))
        second.close()
        wait_until(lambda: is_let_in(olt.telnet(None)), "the place of the second is free")
    configure(olt, "no session-limit")


def test_refusals_make_a_line_a_second_and_say_how_many_they_stand_for(olt):
    configure(olt, "session-limit 1")
    with olt.telnet():
        already, begin = len(log_lines(olt, "Vty connection refused")), time.monotonic()
        for _ in range(300):
            assert not is_let_in(olt.telnet(None))
        olt.run("! nothing")
        seconds = time.monotonic() - begin
        assert len(log_lines(olt, "Vty connection refused")) - already <= seconds + 2

        def told():
            is_let_in(olt.telnet(None))
            return re.search(r"Vty connection refused from 127\.0\.0\.1, too many sessions \(\d+ like it were not logged\)", olt.log())

        wait_until(told, "the count of refusals that were not logged")
    configure(olt, "no session-limit")


def test_the_limit_is_saved_only_where_it_is_another(olt):
    assert line_vty(olt) == []
    configure(olt, "session-limit 65")
    assert line_vty(olt) == [" session-limit 65"]
    configure(olt, "session-limit 64")
    assert line_vty(olt) == []
    configure(olt, "session-limit 4096")
    assert line_vty(olt) == [" session-limit 4096"]
    configure(olt, "no session-limit 4096")
    assert line_vty(olt) == []


def test_a_saved_limit_is_in_force_after_a_restart(fresh_olt):
    configure(fresh_olt, "session-limit 1")
    assert fresh_olt.run("write", "enable")[1] == SUCCESS
    fresh_olt.restart()
    with fresh_olt.telnet():
        assert not is_let_in(fresh_olt.telnet(None))


def test_who_does_not_log_in_is_cut_off_although_typing(olt):
    """Within a minute, or what a session may be idle: here a second."""
    configure(olt, "exec-timeout 0 1")
    with olt.telnet(None) as session:
        session.expect(rb"Password: $")

        def cut_off():
            try:
                session.send("x")
                session.expect(rb"timed out")
            except (SessionClosed, ConnectionError):
                return True
            except AssertionError:  # nothing came
                return False
            return True

        session.timeout = 0.1
        wait_until(cut_off, "the session is closed")
    configure(olt, "exec-timeout 10")


def test_sessions_over_tcp_leave_descriptors_to_the_box(few_descriptors):
    olt = few_descriptors
    with contextlib.ExitStack() as stack:
        assert 1 <= sessions_until_refused(olt, stack, FEW) < FEW
        # each of these takes some of its own, for its text and for the tools that it starts
        for line, node in [("show version", "config"), ("show sys mem", "config"), ("system led on", "diagnose"), ("write", "enable")]:
            assert olt.run(line, node)[1] == SUCCESS, line
        assert "Too many open files" not in olt.log()
    wait_until(lambda: is_let_in(olt.telnet(None)), "there is room again")


def as_daemon(olt):
    """What the shell says to a user of the vty group who is not root."""
    return olt.exec("setpriv", "--reuid", "daemon", "--regid", "daemon", "--clear-groups", "diagsh", "-c", "! nothing")


def test_the_last_descriptors_are_roots(few_descriptors):
    olt = few_descriptors
    assert as_daemon(olt).returncode == 0
    with contextlib.ExitStack() as stack:
        for _ in range(FEW):
            if as_daemon(olt).returncode != 0:
                break
            stack.enter_context(olt.vty("view"))
        assert as_daemon(olt).returncode != 0
        assert olt.run("! nothing", "view") == ("", SUCCESS)
        olt.wait_log("Connection to the vty socket refused, too many descriptors in use")


def test_without_a_descriptor_the_daemon_waits_for_one_and_goes_on(few_descriptors):
    olt = few_descriptors
    failures = "can't accept vty socket : Too many open files"
    with olt.vty() as operator, contextlib.ExitStack() as stack:
        begin = time.monotonic()
        waiting = []
        while failures not in olt.log():
            waiting.append(stack.enter_context(Vty(olt.vty_path, "view")))
            assert operator.run("! nothing") == ("", SUCCESS) and len(waiting) <= FEW
        # a daemon that spins has written thousands of lines by then
        wait_until(lambda: len(log_lines(olt, failures)) >= 2, "it has tried again")
        for _ in range(100):
            assert operator.run("! nothing") == ("", SUCCESS)
        assert len(log_lines(olt, failures)) <= time.monotonic() - begin + 2
        for session in waiting[:10]:
            session.close()
        assert waiting[-1].run("! nothing") == ("", SUCCESS)
