# SPDX-License-Identifier: GPL-2.0-or-later
"""Work that is under way when a daemon is killed."""
import itertools
import re
import threading
from collections import deque
from pathlib import Path

from alarm_fixtures import DATABASE, SANITIZED, peer_of
from vty import SessionClosed, Vty

TEMPERATURES = range(40, 80)  # none is the usual one, which is not written
BULK_CHANGES = ("alarm-log alarm all enable trap", "alarm-log alarm all disable trap")  # a line of each in the configuration
SAVED = ("Configuration saved to /etc/frr/diagd.conf\n", 0)
CLIENT = Path(__file__).with_name("engine_client.py")
WIDTH = "64"  # of a writer's words: its pipe of a page then holds some 60 of them
FLASH_LINE = re.compile(r"\[\d{4}/\d\d/\d\d \d\d:\d\d:\d\d\] \[\w+\] \[[\w-]+\] \[[^\]]+\] : .+\n")


class Operator(threading.Thread):
    """A session that runs lines one after another until the daemon is gone."""

    def __init__(self, olt, lines, node="config", ledger=None):
        """ledger: for one that files records."""
        super().__init__(daemon=True)
        self._ledger = ledger
        self._path = olt.vty_path
        self._lines = lines
        self._node = node
        self.done = []  # lines that were answered
        self.under_way = None  # the line that was not answered any more
        self.refused = []  # (line, answer)
        self.since = 0  # what the ledger had when the last line that was answered was sent

    def run(self):
        try:
            with Vty(self._path, self._node) as session:
                for line in self._lines:
                    self.under_way = line
                    since = self._ledger.count if self._ledger else 0
                    answer = session.run(line)
                    if answer not in (("", 0), SAVED):
                        self.refused.append((line, answer))
                    self.done.append(line)
                    self.since = since
                    self.under_way = None
        except (SessionClosed, OSError):
            pass  # the daemon is gone


def own_records(name):
    return (f"alarm-log debug send id 77 message {name}-{number}" for number in itertools.count())


def written_configurations(temperature):
    """Lines that write the startup configuration with one temperature after another, beginning after this one."""
    place = TEMPERATURES.index(temperature) + 1
    for value in itertools.chain(TEMPERATURES[place:], itertools.cycle(TEMPERATURES)):
        yield f"fan temperature {value}"
        yield "write file"


def possible_temperatures(operator, before):
    """Those that the startup configuration may have when the session that wrote it was cut off.  before: what it had."""
    possible, latest = {before}, before
    for line in operator.done:
        if line.startswith("fan"):
            latest = int(line.split()[-1])
        else:
            possible = {latest}
    return possible | {latest} if operator.under_way == "write file" else possible


class Other:
    """Another process, which waits while nobody reads what it says."""

    def __init__(self, name, peer):
        self.name = name
        self._peer = peer
        peer.pace()

    def read(self):
        """Lets it go on for as much as its pipe holds; whether it has said anything since."""
        return bool(self._peer.lines())

    def running(self):
        return self._peer.running()


class Writer(Other):
    """One that files alarms."""

    def __init__(self, stack, olt, name, attached, ledger):
        """attached: it uses the database, too.  Its end is the stack's."""
        super().__init__(name, stack.enter_context(peer_of(olt, "add" if attached else "add-apart", "77", "0", name, WIDTH)))
        self._ledger = ledger
        # What the ledger had at its last reads.  A writer that waits has filed the record that it cannot tell of; it was
        # not filed before the last but one, as the pipe was emptied then.
        self._counts = deque([0, 0], maxlen=2)

    def read(self):
        lines = self._peer.lines()
        if lines:
            self._ledger.acknowledge(self.name, int(lines[-1]), self._counts[0])
        self._counts.append(self._ledger.count)
        return bool(lines)


def engine_client(stack, olt, name):
    """A program that reads the database through sysrepo alone, as the user who owns it."""
    command = ["setpriv", "--reuid", "daemon", "--regid", "daemon", "--clear-groups", "env", *DATABASE, *SANITIZED,
               "/usr/bin/python3", CLIENT, "/run/olt/deps/sysrepo/lib/libsysrepo.so.5"]
    return Other(name, stack.enter_context(peer_of(olt, "read", command=command)))


def has_begun(olt):
    """Whether there is a process in the box, of the daemon or of what starts it."""
    task = Path(f"/proc/{olt.daemon.pid}/task/{olt.daemon.pid}")
    return (task / "comm").read_text() == "nsenter\n" and (task / "children").read_text()


def cut_lines(text):
    """Lines of the flash log that are not whole, as numbers from the first; and how many lines there are."""
    lines = text.splitlines(keepends=True)
    return [number for number, line in enumerate(lines) if not FLASH_LINE.fullmatch(line)], len(lines)
