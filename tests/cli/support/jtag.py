# SPDX-License-Identifier: GPL-2.0-or-later
"""The CPLD's upgrade from outside: what the daemon runs for it, and the programmer's fate."""
import contextlib
import hashlib
from dataclasses import dataclass

from calls import of
from cpld import steps
from olt import wait_until

WORDS = {"popen": "run", "system": "system", "pal_system": "as root", "nanosleep": "wait", "cli_log": "record"}


@dataclass
class Command:
    text: str
    rc: int
    calls: list

    @property
    def lines(self):
        """The shell lines it ran."""
        return [call.values["line"] for call in of(self.calls, "popen|system|pal_system")]

    @property
    def records(self):
        """(code, state, text) of the records it filed; every other byte of them is zero."""
        return [record_of(call) for call in of(self.calls, "cli_log")]

    @property
    def work(self):
        """All that it did to the board and the box, in order."""
        return [said for said in map(_word, self.calls) if said]


def record_of(call):
    record = bytes.fromhex(call.values["rec"])
    assert len(record) == 32 and not any(record[2:28])
    return int.from_bytes(record[:2], "little"), int.from_bytes(record[28:], "little"), call.values["text"]


def _word(call):
    if call.op == "nanosleep":
        return f"wait {call.values['ms']} ms"
    if call.op in WORDS:
        return f"{WORDS[call.op]}: {call.values['text' if call.op == 'cli_log' else 'line']}"
    return next(iter(steps([call])), None)


def main_calls(olt, since):
    return [call for call in olt.trace()[since:] if call.thread == "main"]


def run(olt, command):
    with olt.vty("diagnose") as session:
        before = len(olt.trace())
        text, rc = session.run(command)
        return Command(text, rc, main_calls(olt, before))


def in_tmp(olt, name):
    """Content of a file in the box's /tmp, None when there is none."""
    done = olt.exec("cat", f"/tmp/{name}", text=False)
    return done.stdout if done.returncode == 0 else None


def put_in_tmp(olt, name, content):
    olt.exec("tee", f"/tmp/{name}", input=content, text=False, check=True)


def image_words(content):
    """How the programmer notes an image that it may do anything with."""
    return f"image: {len(content)} bytes mode 777 sha256 {hashlib.sha256(content).hexdigest()}"


class Programmer:
    def __init__(self, olt):
        self._olt = olt
        self._log = olt.state / "board" / "jtag.log"
        self._fate = olt.state / "board" / "jtag.fate"
        self._log.write_text("")

    def notes(self):
        """What it noted, without its process id."""
        return [line.split(" ", 1)[1] for line in self._log.read_text().splitlines()]

    def pid_in_box(self):
        return self._log.read_text().split()[0]

    def set_fate(self, words):
        new = self._fate.with_suffix(".new")
        new.write_text(words + "\n")
        new.rename(self._fate)

    def clear_fate(self):
        self._fate.unlink(missing_ok=True)

    @contextlib.contextmanager
    def hanging(self):
        """While it lasts, programming does not end."""
        self.set_fate("hang")
        try:
            yield
        finally:
            self.clear_fate()

    def wait_begin(self):
        return wait_until(self.notes, "the programmer runs")


def receive_until(session, end):
    """What a session on the unix socket gets until its text ends so; its answer is still to come."""
    text = b""
    while not text.endswith(end.encode()):
        chunk = session.socket.recv(4096)
        assert chunk and b"\0" not in chunk, text + chunk
        text += chunk
    return text.decode()
