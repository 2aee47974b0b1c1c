#!/usr/bin/python3
# SPDX-License-Identifier: GPL-2.0-or-later
"""The daemon when nothing is asked of it: its processor time with every monitor and the threshold timer, and its
resident memory beside that of a bare libfrr daemon and of one that has a session of the database.

Exit status 1 when the processor time is more than 0.3 percent of a core, or the memory more than 1.6 times that of
the bare daemon with a session."""
import re
import subprocess
import sys
import time
from pathlib import Path

from bench_olt import running_olt  # first: it leads to the others

from olt import wait_until

WINDOW_S = 60
SETTLED_S = 5  # the fan monitor's first pass
MOST_PERCENT = 0.3
MOST_MEMORY = 1.6
DATABASE = ["SYSREPO_REPOSITORY_PATH=/var/lib/olt/sysrepo",
            *(f"LIBYANG_{kind.upper()}_PLUGINS_DIR=/run/olt/deps/sysrepo/lib/libyang1/{kind}"
              for kind in ("extensions", "user_types"))]


def cpu_ms(olt):
    """Processor time of all threads of the daemon so far."""
    return sum(int((task / "schedstat").read_text().split()[0]) for task in Path(f"/proc/{olt.pid}/task").iterdir()) / 1e6


def resident_kb(pid):
    return int(re.search(r"VmRSS:\s+(\d+) kB", Path(f"/proc/{pid}/status").read_text())[1])


def idle(olt):
    time.sleep(SETTLED_S)
    before, begin = cpu_ms(olt), time.monotonic()
    time.sleep(WINDOW_S)
    percent = (cpu_ms(olt) - before) / (time.monotonic() - begin) / 10
    print(f"idle for {WINDOW_S} s             CPU {percent:5.3f} percent of a core (at most {MOST_PERCENT})")
    return percent <= MOST_PERCENT


def bare_kb(olt, *arguments):
    """Resident memory of the bare daemon, which runs in the box until its vty is there."""
    socket = olt.state / "run" / "bare.vty"
    socket.unlink(missing_ok=True)
    nsenter = subprocess.Popen(olt.inside("env", *DATABASE, "/run/olt/build/bin/bare_daemon", *arguments),
                               stdin=subprocess.DEVNULL)
    try:
        wait_until(lambda: nsenter.poll() is not None or socket.exists(), "the bare daemon's vty")
        time.sleep(1)
        pid = int(Path(f"/proc/{nsenter.pid}/task/{nsenter.pid}/children").read_text())
        kb = resident_kb(pid)
        subprocess.run(["kill", str(pid)], check=True)
    finally:
        nsenter.wait(10)
    return kb


def memory(olt):
    ours, bare, session = resident_kb(olt.pid), bare_kb(olt), bare_kb(olt, "session")
    ratio = ours / session
    print(f"resident memory            bare {bare} kB, with a session {session} kB, here {ours} kB, ratio {ratio:.2f} "
          f"(at most {MOST_MEMORY})")
    return ratio <= MOST_MEMORY


def main():
    with running_olt("idle-bench") as olt:
        return 0 if idle(olt) & memory(olt) else 1


if __name__ == "__main__":
    sys.exit(main())
