# SPDX-License-Identifier: GPL-2.0-or-later
"""What a peer on the network tries who has no password.

Each attack is a function on an OLT whose daemon runs; it fails with what the attacker achieved."""
import random
import socket

from olt import wait_until
from vty import IAC, SB, SE, SUCCESS, TELNET_PORT, in_namespace

IDLE = 200  # connections at once, several times what the daemon may take
HOSTNAME = "owned"


def connected(olt):
    return in_namespace(f"/proc/{olt.holder.pid}/ns/net", lambda: socket.create_connection(("127.0.0.1", TELNET_PORT), 30))


def _goes_on(olt):
    text, status = olt.run("show running-config")
    assert status == SUCCESS and HOSTNAME not in text, (text, status)
    with olt.telnet() as session:
        assert "FRRouting" not in session.run("show fan") and session.prompt.startswith("olt")


def nothing_listens_but_the_terminal_port(olt):
    """There is one port of TCP, and none of UDP or raw IP that somebody waits at."""
    ports = set()
    for table in ("tcp", "tcp6"):
        for line in olt.exec("cat", f"/proc/net/{table}").stdout.splitlines()[1:]:
            local, state = line.split()[1], line.split()[3]
            if state == "0A":  # listening
                ports.add(int(local.rpartition(":")[2], 16))
    assert ports == {TELNET_PORT}, ports
    for table in ("udp", "udp6", "raw", "raw6", "packet"):
        lines = olt.exec("cat", f"/proc/net/{table}").stdout.splitlines()[1:]
        assert not lines, (table, lines)


def no_command_runs_without_the_password(olt):
    """Lines in place of the password are wrong passwords, the third of which ends the connection."""
    for lines in ("enable\r\nconfigure terminal\r\nhostname owned\r\n", "\r\rhostname owned\r", "secre\rsecrets\rSECRET\r",
                  "\0secret\x15\r" * 3, "?\t?\t\x04\x1a", "secret" + "x" * 600 + "\r"):
        with connected(olt) as peer:
            peer.sendall(lines.encode("latin-1"))
            peer.shutdown(socket.SHUT_WR)
            said = b""
            while chunk := _received(peer):
                said += chunk
            assert b"olt" not in said and b"#" not in said, said
    _goes_on(olt)


def _received(peer):
    try:
        return peer.recv(65536)
    except ConnectionError:
        return b""


def the_password_is_not_echoed(olt):
    """What is typed at the prompt for the password does not come back."""
    with connected(olt) as peer:
        peer.sendall(b"hunter2")
        peer.shutdown(socket.SHUT_WR)
        said = b""
        while chunk := _received(peer):
            said += chunk
    assert b"hunter" not in said, said


def bytes_before_the_password_do_no_harm(olt):
    """A megabyte of anything, of telnet's own commands, of one line without an end."""
    chance = random.Random(1)
    subnegotiation = bytes([IAC, SB, 31]) + b"\xff\xff" * 4096 + bytes([IAC, SE])
    for block in (chance.randbytes(65536), subnegotiation, bytes([IAC, SB]) + b"x" * 65536, b"a" * 65536, b"\0" * 65536,
                  b"\x1b[A\x10\x0e\t?\x08\x7f" * 8192):
        with connected(olt) as peer:
            peer.settimeout(0.2)
            for _ in range(16):
                try:
                    peer.sendall(block)
                except OSError:  # it is ended, or not read any more
                    break
        assert olt.daemon.poll() is None
    _goes_on(olt)


def connections_that_come_and_go_leave_nothing(olt):
    """Connections that are dropped at once, in the middle of telnet's greeting, or reset."""
    before = olt.settled_fds()
    for number in range(IDLE):
        peer = connected(olt)
        if number % 2:
            # Closing with something unread, or at once, resets the connection.
            peer.setsockopt(socket.SOL_SOCKET, socket.SO_LINGER, b"\1\0\0\0\0\0\0\0")
        peer.close()
    wait_until(lambda: len(olt.fds()) <= len(before), "all connections are closed")
    _goes_on(olt)


def idle_connections_leave_room_for_operators(olt):
    """However many connections stand idle before the password, the daemon takes a bounded number, and the box's own
    users come in."""
    before, log = olt.settled_fds(), len(olt.log())
    peers = []
    try:
        for _ in range(IDLE):
            try:
                peers.append(connected(olt))
            except OSError:
                break
        text, status = olt.run("show version")
        assert status == SUCCESS and text
        more = len(olt.fds()) - len(before)
        assert more <= 64 + 2, f"{more} descriptors for {len(peers)} connections"
        assert len(olt.log()) - log < 100 * IDLE, olt.log()[log:][:2000]
    finally:
        for peer in peers:
            peer.close()
    wait_until(lambda: len(olt.fds()) <= len(before) + 1, "all connections are closed")
    _goes_on(olt)


RUNNING = [nothing_listens_but_the_terminal_port, no_command_runs_without_the_password, the_password_is_not_echoed,
           bytes_before_the_password_do_no_harm, connections_that_come_and_go_leave_nothing,
           idle_connections_leave_room_for_operators]
