# SPDX-License-Identifier: GPL-2.0-or-later
"""A socket in zebra's place that takes every client and keeps what it sends."""
import os
import socket


class ZebraRecorder:
    def __init__(self, olt):
        self.path = olt.state / "run" / "zserv.api"
        self.client = None
        self.received = b""
        self.listen()

    def listen(self):
        self.listener = socket.socket(socket.AF_UNIX)
        folder = os.open(self.path.parent, os.O_PATH)
        try:
            self.listener.bind(f"/proc/self/fd/{folder}/{self.path.name}")
        finally:
            os.close(folder)
        self.path.chmod(0o666)
        self.listener.listen()
        self.listener.setblocking(False)

    def connected(self):
        if not self.client:
            try:
                self.client, _ = self.listener.accept()
                self.client.setblocking(False)
            except BlockingIOError:
                pass
        return self.client is not None

    def messages(self):
        """The messages received, whole ones only."""
        if self.connected():
            try:
                while chunk := self.client.recv(65536):
                    self.received += chunk
            except BlockingIOError:
                pass
        found, rest = [], self.received
        while len(rest) >= 2 and len(rest) >= (length := int.from_bytes(rest[:2], "big")) >= 2:
            found.append(rest[:length])
            rest = rest[length:]
        return found

    def hang_up(self):
        self.client.close()
        self.client, self.received = None, b""

    def go_away(self):
        """Nobody listens any more until listen()."""
        self.path.unlink()
        self.listener.close()
        self.hang_up()

    def close(self):
        if self.client:
            self.client.close()
        self.listener.close()
        self.path.unlink()
