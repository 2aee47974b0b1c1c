# SPDX-License-Identifier: GPL-2.0-or-later
"""The two ways into the daemon's vty: the unix socket (byte exact) and telnet (prompts, completion)."""

import ctypes
import os
import re
import socket
import threading
import time

DEADLINE_S = 60  # only a failed test waits for so long; sanitized code on a busy machine is slow
TELNET_PORT = 2709

# Return codes of a vty command.
SUCCESS, WARNING, NO_MATCH, AMBIGUOUS, INCOMPLETE = range(5)

_libc = ctypes.CDLL(None, use_errno=True)


def in_namespace(path, function):
    """Runs function in a thread that has entered the namespace behind path, and returns its result."""
    result, error = [], []

    def body():
        try:
            with open(path) as namespace:
                if _libc.setns(namespace.fileno(), 0) != 0:
                    raise OSError(ctypes.get_errno(), "setns")
            result.append(function())
        except BaseException as caught:  # handed to the caller's thread
            error.append(caught)

    thread = threading.Thread(target=body)
    thread.start()
    thread.join()
    if error:
        raise error[0]
    return result[0]


class SessionClosed(Exception):
    """The daemon closed the session."""


def way_to_node(node):
    """Commands that lead from the view node, where a socket session starts, to node."""
    return {
        "view": [],
        "enable": ["enable"],
        "config": ["enable", "configure terminal"],
    }.get(node) or ["enable", "configure terminal", node if node == "diagnose" else "interface " + node]


class Session:
    """What has a socket, and closes it."""

    socket = None

    def close(self):
        self.socket.close()

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.close()


class Vty(Session):
    """A session on the unix vty socket: command and NUL; text, three NULs and a status byte."""

    def __init__(self, path, node="config", timeout=DEADLINE_S):
        self.socket = socket.socket(socket.AF_UNIX)
        self.socket.settimeout(timeout)
        folder = os.open(os.path.dirname(path), os.O_PATH)
        try:
            # A unix address holds 108 characters only.
            self.socket.connect(f"/proc/self/fd/{folder}/{os.path.basename(path)}")
        except BaseException:
            self.socket.close()
            raise
        finally:
            os.close(folder)
        self.enter(node)

    def enter(self, node):
        if node != "view":
            for step in way_to_node(node):
                text, status = self.run(step)
                assert status == SUCCESS, f"{step}: {text}"

    def send(self, command):
        self.socket.sendall(command.encode("latin-1") + b"\0")

    def receive(self):
        answer = b""
        while True:
            mark = answer.find(b"\0")
            if mark >= 0 and len(answer) >= mark + 4:
                break
            chunk = self.socket.recv(65536)
            if not chunk:
                raise SessionClosed(answer)
            answer += chunk
        assert answer[mark : mark + 3] == b"\0\0\0" and len(answer) == mark + 4, answer[mark:]
        return answer[:mark].decode("latin-1"), answer[mark + 3]

    def run(self, command):
        """Text and return code of one command."""
        self.send(command)
        return self.receive()


def takes_commands(path):
    """Whether a program answers at this vty socket, which is there before somebody listens."""
    try:
        with Vty(path, "enable"):
            return True
    except (FileNotFoundError, ConnectionRefusedError):
        return False
    except ConnectionResetError:  # a killed daemon's socket, which its child had until it became a program
        return False


IAC, DONT, DO, WONT, WILL, SB, SE = 255, 254, 253, 252, 251, 250, 240


class Telnet(Session):
    """A telnet session; text is kept as it arrives, telnet commands taken out."""

    PROMPT = re.compile(rb"(?:^|\n)([\w-]+(?:\([^)\n]*\))?[>#] ?)$")

    def __init__(self, network, password=None, timeout=DEADLINE_S):
        def connect():
            return socket.create_connection(("127.0.0.1", TELNET_PORT), timeout)

        self.socket = in_namespace(network, connect)
        self.timeout = timeout
        self.buffer = b""
        self._raw = b""
        if password is not None:
            self.expect(rb"Password: $")
            self.send(password + "\r")
            self.prompt = self.wait_prompt()

    def send(self, text):
        self.socket.sendall(text.encode("latin-1"))

    def _receive(self, deadline):
        self.socket.settimeout(max(deadline - time.monotonic(), 0.001))
        chunk = self.socket.recv(65536)
        if not chunk:
            raise SessionClosed(self.buffer)
        self._raw += chunk
        while self._raw:
            mark = self._raw.find(IAC)
            if mark < 0:
                mark = len(self._raw)
            self.buffer += self._raw[:mark].replace(b"\0", b"")
            self._raw = self._raw[mark:]
            if len(self._raw) < 3:
                break
            self._raw = self._raw[3:] if self._raw[1] >= WILL else self._raw[2:]

    def expect(self, pattern):
        """Waits until the text not yet taken matches pattern; returns that text up to the match's end."""
        deadline = time.monotonic() + self.timeout
        while True:
            match = re.search(pattern, self.buffer)
            if match:
                text, self.buffer = self.buffer[: match.end()], self.buffer[match.end() :]
                self.match = match
                return text.decode("latin-1")
            try:
                self._receive(deadline)
            except TimeoutError:
                raise AssertionError(f"{pattern!r} did not come; got {self.buffer!r}") from None

    def wait_prompt(self):
        self.expect(self.PROMPT)
        return self.match.group(1).decode("latin-1")

    def run(self, command):
        """What a command shows, without its echo and the prompt; the prompt is kept in self.prompt."""
        self.send(command + "\r")
        self.expect(rb"\n")
        text = self.expect(self.PROMPT)
        self.prompt = self.match.group(1).decode("latin-1")
        return text[: len(text) - len(self.prompt)]

    def type(self, keys):
        """Types keys that draw the prompt again (TAB, ?); returns what is shown after them."""
        self.send(keys)
        return self.expect(rb"[>#] ?[^>#]*$")
