# SPDX-License-Identifier: GPL-2.0-or-later
"""Fixtures around the shared alarm store, imported by the tests that need them."""
import contextlib
import fcntl
import json
import os
import select
import subprocess
import time
from pathlib import Path

import pytest
from alarm_store import AlarmStore
from alarm_words import ALARM_COUNT
from calls import of, read_trace
from olt import DEADLINE_S, OLT, sanitizer_runtime

LIBRARIES = "/run/olt/build/lib"
DATABASE = [
    "SYSREPO_REPOSITORY_PATH=/var/lib/olt/sysrepo",
    "LIBYANG_EXTENSIONS_PLUGINS_DIR=/run/olt/deps/sysrepo/lib/libyang1/extensions",
    "LIBYANG_USER_TYPES_PLUGINS_DIR=/run/olt/deps/sysrepo/lib/libyang1/user_types",
]
# For a program that loads the platform's libraries and is not sanitized itself.
SANITIZED = ["LD_PRELOAD=" + ":".join(sanitizer_runtime()), "ASAN_OPTIONS=detect_leaks=0"]
PEER = Path(__file__).with_name("store_peer.py")


@pytest.fixture(scope="module")
def olt(traced_olt):
    return traced_olt.quiet()


@pytest.fixture
def store(olt):
    """The store of the module's OLT, empty at first."""
    the_store = AlarmStore(olt.pid)
    the_store.empty()
    yield the_store
    the_store.close()


def peer_command(*words):
    """The command line of store_peer.py, inside the box."""
    return ["env", *DATABASE, *SANITIZED, "/usr/bin/python3", PEER, LIBRARIES, *words]


class Peer:
    """A process of the box beside the daemon, see store_peer.py; killed when the test leaves it."""

    def __init__(self, olt, *words, command=None):
        """command: of another program than store_peer.py."""
        self._buffer = b""
        with open(olt.state / "log" / "peer", "ab") as errors:  # alarms are printed there, too
            self._process = subprocess.Popen(olt.inside(*(command or peer_command(*words))),
                                             stdin=subprocess.PIPE, stdout=subprocess.PIPE, stderr=errors)
        os.set_blocking(self._process.stdout.fileno(), False)

    def running(self):
        return self._process.poll() is None

    def lines(self):
        """Complete lines it has said since."""
        while chunk := self._process.stdout.read():
            self._buffer += chunk
        *lines, self._buffer = self._buffer.split(b"\n")
        return [line.decode() for line in lines]

    def wait_for(self, text, timeout=DEADLINE_S):
        """Until it says this; anything else fails the test."""
        deadline = time.monotonic() + timeout
        while not (lines := self.lines()):
            assert time.monotonic() < deadline, f"the peer did not say {text!r}"
            assert self.running(), f"the peer ended with {self._process.returncode}"
            select.select([self._process.stdout], [], [], deadline - time.monotonic())
        assert lines[0] == text, lines
        self._buffer = b"".join(line.encode() + b"\n" for line in lines[1:]) + self._buffer

    def finished(self, timeout=DEADLINE_S):
        """Waits for its end, which must be a good one; returns what it said meanwhile."""
        lines = []
        deadline = time.monotonic() + timeout
        while self.running():
            assert time.monotonic() < deadline, f"the peer did not end within {timeout} s"
            select.select([self._process.stdout], [], [], 0.05)
            lines += self.lines()
        assert self._process.returncode == 0
        return lines + self.lines()

    def pace(self):
        """From now on it waits when nobody has read the last page of what it says."""
        fcntl.fcntl(self._process.stdout.fileno(), fcntl.F_SETPIPE_SZ, os.sysconf("SC_PAGESIZE"))

    def close_input(self):
        self._process.stdin.close()

    def kill(self):
        """Kills it where it stands and waits until it is gone."""
        # nsenter is the parent of the process in the box; only that one's death matters.
        task = Path(f"/proc/{self._process.pid}/task/{self._process.pid}/children")
        for child in task.read_text().split():
            with contextlib.suppress(ProcessLookupError):
                os.kill(int(child), 9)
        self._process.wait(DEADLINE_S)

    def leave(self):
        if self.running():
            self.kill()
        self._process.stdout.close()
        with contextlib.suppress(BrokenPipeError):
            self._process.stdin.close()


@contextlib.contextmanager
def peer_of(olt, verb, *words, command=None):
    peer = Peer(olt, verb, *words, command=command)
    try:
        peer.wait_for("held" if verb == "hold" else "ready")
        yield peer
    finally:
        peer.leave()


@pytest.fixture
def peer(olt):
    """A function that starts another process of the module's OLT."""
    return lambda verb, *words: peer_of(olt, verb, *words)


@pytest.fixture(scope="module")
def describe(olt):
    """The catalogue's description of an alarm, read from the platform library."""
    done = olt.exec(*peer_command("describe", *map(str, range(ALARM_COUNT))), check=True)
    descriptions = done.stdout.split("\n")[:ALARM_COUNT]
    return lambda alarm_id: descriptions[alarm_id]


@pytest.fixture(scope="module")
def catalogue(olt):
    """The alarm catalogue, an entry (see store_peer.py) for each id, read from the platform library."""
    done = olt.exec(*peer_command("catalogue"), check=True)
    return [json.loads(line) for line in done.stdout.splitlines()]


@pytest.fixture(scope="module")
def id_of(catalogue):
    """What the platform's lookup gives for a name: the lowest id of that name."""
    ids = {entry["name"]: entry["id"] for entry in reversed(catalogue)}
    return ids.__getitem__


def try_edit_database(olt, xml):
    """Has sysrepo's own tool merge this into the running configuration, as an operator would."""
    (olt.state / "log" / "edit.xml").write_text(xml)
    return olt.exec(OLT, "sysrepocfg", "--edit=/var/log/edit.xml", "--datastore=running", "--format=xml")


def edit_database(olt, xml):
    """The same, which must succeed."""
    done = try_edit_database(olt, xml)
    assert done.returncode == 0, done.stdout + done.stderr


def let_changes_be_heard(olt):
    """Until the daemon has heard what other programs have changed; not for the level of alarm 78.

    It hears in a thread of its own, but before its answer to a change that it makes itself, here to what is there."""
    level = olt.run("show alarm-log configuration id 78")[0].split()[-7]
    assert olt.run(f"alarm-log alarm power2-updown level {level}") == ("", 0)


def calls_of(olt, command, pattern):
    """What the command shows, its return code, and the platform calls it makes whose name matches."""
    start = os.path.getsize(olt.trace_path)
    text, rc = olt.run(command)
    return text, rc, of(read_trace(olt.trace_path, start), pattern)
