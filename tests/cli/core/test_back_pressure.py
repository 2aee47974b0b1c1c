# SPDX-License-Identifier: GPL-2.0-or-later
"""Sessions that send commands and do not read: each has a bounded amount of output waiting, the rest of its commands
waits, and no other session does."""
import re
from pathlib import Path

import pytest
from olt import NO_QUARANTINE, wait_until
from project import MEMORY_FACTOR
from vty import DEADLINE_S, IAC, SB, SE, SUCCESS

WAITING_KB = 512
NAWS = 31
PROMPT = b"olt(config)# "
PADDING = b" " * 3000
LOOKS = 100  # commands of a bystander, after each of which the daemon had its chance to read on


@pytest.fixture(scope="module")
def olt(make_olt):
    return make_olt().start(env=NO_QUARANTINE)


def resident_kb(olt):
    return int(re.search(r"VmRSS:\s+(\d+)", Path(f"/proc/{olt.pid}/status").read_text())[1])


def send_until_it_waits(connection, piece, bystander, limit):
    """Sends `piece` again and again until the daemon takes no more; how many bytes it took.  At `limit` it is the test
    that ends: a daemon that takes so much takes everything."""
    connection.setblocking(False)
    sent, looks = 0, 0
    while looks < LOOKS:
        try:
            sent += connection.send(piece[sent % len(piece):])
            looks = 0
        except BlockingIOError:
            looks += 1
            bystander.run("! nothing")
        assert sent < limit, "the daemon reads on although nobody takes its output"
    return sent


# Long lines: what the kernel keeps on the way is to be few commands, for all of them are answered in the end.
@pytest.mark.parametrize("word", [b"list", b"x"], ids=["long answers", "short answers"])
def test_a_session_of_the_socket_that_does_not_read_waits_and_loses_nothing(olt, word):
    line = word + PADDING + b"\0"
    with olt.vty() as bystander, olt.vty() as session:
        answer = session.run(line[:-1].decode())
        begin = resident_kb(olt)
        sent = send_until_it_waits(session.socket, line * 100, bystander, 20_000_000)
        assert resident_kb(olt) - begin < MEMORY_FACTOR * (WAITING_KB + 2 * len(answer[0]) // 1024 + 512)
        session.socket.settimeout(DEADLINE_S)
        received = b""
        expected = answer[0].encode("latin-1") + bytes([0, 0, 0, answer[1]])
        count = sent // len(line)
        while len(received) < count * len(expected):
            chunk = session.socket.recv(1 << 20)
            assert chunk
            received += chunk
        assert received == expected * count
        # the piece of a command that went out last is completed
        session.socket.sendall(line[sent % len(line):] or line)
        assert session.receive() == answer


@pytest.mark.parametrize("keys", [b"list" + PADDING + b"\r", b"?" + bytes(3000)], ids=["lines", "question marks"])
def test_a_telnet_session_that_does_not_read_waits_and_loses_nothing(olt, keys):
    with olt.vty() as bystander, olt.telnet() as session:
        session.run("enable")
        session.run("configure terminal")
        begin = resident_kb(olt)
        sent = send_until_it_waits(session.socket, keys * 100, bystander, 50_000_000)
        assert resident_kb(olt) - begin < WAITING_KB + 1024
        session.socket.settimeout(DEADLINE_S)
        prompts, tail = 0, b""
        while prompts < sent // len(keys):
            chunk = session.socket.recv(1 << 20)
            assert chunk
            text = tail + chunk
            prompts += text.count(PROMPT)
            tail = text[1 - len(PROMPT):]
        session.send("\x15" + "hostname drained\r")  # Control-U: whatever was left of a line
        session.expect(rb"drained\(config\)# ")
    assert olt.run("hostname olt") == ("", SUCCESS)


def test_sessions_that_wait_are_closed_and_leave_no_memory(olt):
    with olt.vty() as bystander:
        begin, before = resident_kb(olt), len(olt.settled_fds())
        sessions = [olt.vty() for _ in range(8)]
        for session in sessions:
            send_until_it_waits(session.socket, b"list\0" * 1000, bystander, 20_000_000)
        for session in sessions:
            session.close()
        wait_until(lambda: len(olt.fds()) <= before, "their descriptors are closed")
        assert bystander.run("hostname olt") == ("", SUCCESS)
        assert resident_kb(olt) - begin < MEMORY_FACTOR * (8 * WAITING_KB + 1024)


def test_a_client_without_a_window_size_gets_the_whole_of_a_long_answer(olt):
    """Without one there is no pager, so nothing waits for a key."""
    whole, _ = olt.run("list permutations", "config")
    assert len(whole) > 1 << 16
    with olt.telnet() as session:
        session.run("enable")
        session.run("configure terminal")
        assert session.run("list permutations").replace("\r", "") == whole


def test_what_is_typed_ahead_of_the_pager_is_run(olt):
    with olt.telnet() as session:
        session.run("enable")
        session.run("configure terminal")
        session.socket.sendall(bytes([IAC, SB, NAWS, 0, 80, 0, 10, IAC, SE]) + b"list\rhostname ahead\r")
        session.expect(rb"ahead\(config\)# ")
    assert olt.run("hostname olt") == ("", SUCCESS)


def test_commands_of_one_packet_take_turns_with_those_of_others(traced_olt):
    """Thirty commands arrive at once; another session gets its answer while they run."""
    count, answer = 30, bytes(4)

    def answers_meanwhile():
        with traced_olt.vty("diagnose") as many, traced_olt.vty() as other:
            many.socket.sendall(b"system led on\0" * count)  # one read of the daemon
            assert other.run("! nothing") == ("", SUCCESS)
            received = many.socket.recv(1 << 16)
            before = len(received) // len(answer)
            while len(received) < count * len(answer):
                received += many.socket.recv(1 << 16)
            assert received == answer * count
            return before

    traced_olt.faults("semaphore_p thread=diagd delay_ms=30")
    # The other's command may come before all of them, or on a busy machine late.
    wait_until(lambda: 0 < answers_meanwhile() < count, "an answer between those of the thirty")
    traced_olt.faults()
