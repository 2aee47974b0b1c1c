# SPDX-License-Identifier: GPL-2.0-or-later
"""Packets on the sockets of a simulated board, with a daemon at work on it."""
import contextlib
import os
import random
import socket
import struct

from olt import wait_until
from vty import SUCCESS

REQUEST = struct.Struct("=IHBBiIII16s16s")  # sequence, operation, address, register, number, value, extra, length, name, thread
OPERATIONS = 9
SOCKETS = {"board.sock": socket.SOCK_SEQPACKET, "ctl.sock": socket.SOCK_STREAM, "bus.sock": socket.SOCK_STREAM}


class Packets:
    def __init__(self, how, report):
        self._report = report
        self._chance = random.Random(how.seed)
        self._olt = how.boxes.make()
        self._olt.start()
        self._olt.populate()

    def run(self, count):
        olt, report, chance = self._olt, self._report, self._chance
        for number in range(count):
            name = chance.choice(list(SOCKETS))
            with contextlib.suppress(OSError), self._connected(name) as peer:
                for _ in range(chance.randint(1, 8)):
                    peer.send({"board.sock": self._transaction, "ctl.sock": self._control, "bus.sock": self._message}[name]())
                    if chance.random() < 0.3:
                        peer.settimeout(0.01)
                        peer.recv(65536)
            if not report.check(olt.holder.poll() is None and olt.daemon.poll() is None, f"the box goes on after packet {number}"):
                return
        olt.boardctl("fault", "clear")
        olt.boardctl("bus", "up")
        text, status = olt.run("show fan", "diagnose")
        report.check(status == SUCCESS and text, f"the daemon works with its board, not {status} {text!r}")
        for name in ("board", "alarm"):
            wait_until(lambda name=name: olt.sem_value(name) == 1, f"the {name} semaphore is given back")
        report.figure("connections with nonsense to the board's sockets", count)

    def _connected(self, name):
        peer = socket.socket(socket.AF_UNIX, SOCKETS[name])
        folder = os.open(self._olt.state / "board", os.O_PATH)
        try:
            peer.connect(f"/proc/self/fd/{folder}/{name}")  # a unix address holds 108 characters only
        except OSError:
            peer.close()
            raise
        finally:
            os.close(folder)
        return peer

    def _bytes(self, most):
        return self._chance.randbytes(self._chance.choice([0, 1, 3, 4, 8, 56, self._chance.randint(0, most)]))

    def _transaction(self):
        chance = self._chance
        if chance.random() < 0.2:
            return self._bytes(5000)
        data = self._bytes(4200)
        # Reads, mostly: what is written into the board's registers is the operator's to choose.
        request = REQUEST.pack(chance.getrandbits(32), chance.choice([0, 0, 1, 3, 5, 6, 7, chance.randrange(OPERATIONS + 2)]),
                               chance.getrandbits(8), chance.getrandbits(8), chance.choice([0, 1, 3, 4, -1, 2**31 - 1]),
                               chance.choice([0, 1, 256, 4096, 4097, 2**32 - 1]), chance.getrandbits(32),
                               chance.choice([len(data), len(data), 2**32 - 1]), b"aux" + self._bytes(12), b"fuzz" * 4)
        return request + data

    def _control(self):
        words = [b"show", b"fault", b"add", b"any", b"log", b"wait", b"plug", b"gpon", b"1", b"temp", b"set", b"module", b"get"]
        return b"\0".join(self._chance.choice([*words, self._bytes(300)]) for _ in range(self._chance.randint(0, 9)))

    def _message(self):
        return struct.pack("!HH", self._chance.choice([0, 3, 4, 8, 65535]), self._chance.choice([1, 45, 46, 7])) + self._bytes(70)
