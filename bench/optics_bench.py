#!/usr/bin/python3
# SPDX-License-Identifier: GPL-2.0-or-later
"""The displays of all modules on a board without an empty socket: the daemon's processor time beside that of a plain
loop that makes the same transactions.

Exit status 1 when a display takes more than 60 microseconds a module beyond the loop."""
import os
import shutil
import subprocess
import sys
from pathlib import Path

PROJECT = Path(__file__).resolve().parents[1]
sys.path.insert(0, str(PROJECT / "tests" / "cli" / "support"))
sys.dont_write_bytecode = True

from olt import BOX, BUILD, OLT, Olt  # noqa: E402

MOST_US = 60
ROUNDS = 50  # of each display and of its loop in turn; the quickest counts
REPEATS = 4  # of the display in a round
DISPLAYS = [("show transceiver", "config"), ("show transceiver json", "config"), ("show optical transceiver", "diagnose")]
MODULES = {("gpon", port): "combo-1490-1577" for port in range(1, 9)}
MODULES |= {("ge", 1): "sfp-850", ("ge", 2): "sfp-1310", ("ge", 3): "qsfp28-lr4", ("ge", 4): "qsfp28-lr4"}
TRANSACTIONS = {
    "misc_cpld_i2c_open": ("open", "bus"),
    "misc_cpld_i2c_read_byte": ("cpld", "reg"),
    "misc_cpld_channel_select": ("select", "channel"),
    "misc_i2c_read": ("read", "addr", "reg", "len"),
    "misc_i2c_write": ("write", "addr", "reg", "data"),
    "misc_cpld_channel_select_end": ("end",),
    "misc_cpld_i2c_close": ("close",),
}


def step(call):
    """A transaction as a line for the loop."""
    word, *arguments = TRANSACTIONS[call.op]
    numbers = (int(call.values[name], 16 if name == "data" else 0) for name in arguments)
    return " ".join([word, *map(str, numbers)])


def steps(olt):
    """What each display does to the board, line by line."""
    olt.start(trace=True)
    found = []
    for command, node in DISPLAYS:
        with olt.vty(node) as session:
            before = len(olt.trace())
            assert session.run(command)[1] == 0
            calls = olt.trace()[before:]
            found.append([step(call) for call in calls if call.thread == "main" and call.op in TRANSACTIONS])
    olt.stop()
    return found


class Floor:
    """A loop in the box of the board."""

    def __init__(self, olt, steps):
        others = len(olt.threads()) - 1
        (olt.state / "log" / "steps").write_text("\n".join(steps) + "\n")
        program = ["/run/olt/build/bin/bus_floor", "/var/log/steps", others]
        self.process = subprocess.Popen(olt.inside(*program), text=True, stdin=subprocess.PIPE, stdout=subprocess.PIPE)

    def us(self, repeats):
        """Processor time of one pass."""
        self.process.stdin.write(f"{repeats}\n")
        self.process.stdin.flush()
        return int(self.process.stdout.readline()) / repeats / 1000

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.process.stdin.close()
        self.process.wait(10)


def cpu_us(olt):
    """Processor time of all threads of the daemon so far."""
    return sum(int((task / "schedstat").read_text().split()[0]) for task in Path(f"/proc/{olt.pid}/task").iterdir()) / 1000


def display_us(olt, session, command):
    before = cpu_us(olt)
    for _ in range(REPEATS):
        assert session.run(command)[1] == 0
    return (cpu_us(olt) - before) / REPEATS


def compare(olt, command, node, steps):
    with Floor(olt, steps) as floor, olt.vty(node) as session:
        def round_us():
            return floor.us(REPEATS), display_us(olt, session, command)

        round_us()  # everything is warm from here on
        floor_us, ours_us = (min(times) for times in zip(*(round_us() for _ in range(ROUNDS))))
    beyond_us = (ours_us - floor_us) / len(MODULES)
    print(f"{command:<24}  {len(steps)} transactions: loop {floor_us:.0f} us, here {ours_us:.0f} us, ratio "
          f"{ours_us / floor_us:.2f}; {beyond_us:.1f} us a module beyond the loop (at most {MOST_US})")
    return beyond_us <= MOST_US


def main():
    # All on one processor: waking somebody on another costs more, and the daemon and the loop may be placed differently.
    os.sched_setaffinity(0, {min(os.sched_getaffinity(0))})
    states = PROJECT / "build" / "optics-bench-state"
    shutil.rmtree(states, ignore_errors=True)
    try:
        subprocess.run([BOX, "--state", states / "template", "--build", BUILD, "--net", "--", OLT, "files"], check=True)
        olt = Olt(states / "olt", template=states / "template" / "database")
        try:
            for (kind, port), module in MODULES.items():
                olt.boardctl("plug", kind, port, PROJECT / "sim" / "modules" / f"{module}.json")
            found = steps(olt)
            olt.start()
            results = [compare(olt, *display, of_it) for display, of_it in zip(DISPLAYS, found)]
            return 0 if all(results) else 1
        finally:
            olt.close()
    finally:
        shutil.rmtree(states, ignore_errors=True)


if __name__ == "__main__":
    sys.exit(main())
