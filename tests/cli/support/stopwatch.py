# SPDX-License-Identifier: GPL-2.0-or-later
"""Time that a program takes of its own, told from the time that a busy machine keeps it waiting."""

import re
import time
from pathlib import Path

PRESSURE = Path("/proc/pressure/cpu")


def _starved_s():
    """Seconds since the start of the machine in which some process waited for a processor; 0 on a kernel that does
    not count them."""
    try:
        return int(re.search(r"^some .*total=(\d+)", PRESSURE.read_text(), re.M)[1]) / 1e6
    except OSError:
        return 0


class Stopwatch:
    def __init__(self):
        self._begin, self._starved = time.monotonic(), _starved_s()

    def spent_s(self):
        """Seconds since it was made in which every process had its processor: alone on a machine, all of them."""
        return time.monotonic() - self._begin - (_starved_s() - self._starved)
