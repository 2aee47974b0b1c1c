# SPDX-License-Identifier: GPL-2.0-or-later
"""What a daemon holds when nothing runs: to be taken before something trying, and checked after it."""

import re
from pathlib import Path

from olt import wait_until


def resident_kb(pid):
    """Resident memory of a process."""
    return int(re.search(r"VmRSS:\s+(\d+) kB", Path(f"/proc/{pid}/status").read_text())[1])


def growth_kb(olt, command, warm_up=300, times=1000):
    """By how much the resident memory grows while a command runs again and again, once it has run for a while.
    Under a sanitizer the daemon must have been started with NO_QUARANTINE."""

    def repeat(session, count):
        for _ in range(count):
            assert session.run(command)[1] == 0

    with olt.vty() as session:
        repeat(session, warm_up)
        before = resident_kb(olt.pid)
        repeat(session, times)
        return resident_kb(olt.pid) - before


class Footprint:
    """The same process, the board free, the same files open.  The daemon's own timers use the board, too, for
    a moment; hence the waiting."""

    def __init__(self, olt):
        self.olt = olt
        self.pid = olt.daemon_pid()
        self.board_free()
        self.files = olt.settled_fds()

    def files_are_as_before(self):
        """Nothing new is open and nothing closed, but the socket of a session that was ending at the beginning."""
        now, before = self.olt.fds().items(), self.files.items()
        return now <= before and all(target.startswith("socket:") for _, target in before - now)

    def board_free(self):
        self.olt.wait_free("board")

    def check(self):
        assert self.olt.daemon.poll() is None and self.olt.daemon_pid() == self.pid, "the daemon has ended"
        self.board_free()
        wait_until(self.files_are_as_before, f"descriptors {self.files} again, not {self.olt.fds()}")
