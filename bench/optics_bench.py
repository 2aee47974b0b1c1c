#!/usr/bin/python3
# SPDX-License-Identifier: GPL-2.0-or-later
"""The displays of all modules on a board without an empty socket: the daemon's processor time beside that of a plain
loop that makes the same transactions, and of one that takes the board as often, too (semaphore, privileges).  Raising
and lowering privileges is for all threads of a process: it costs by their number, which the second loop has, too.

Exit status 1 when a display takes more than 60 microseconds a module beyond the second loop."""
import shutil
import subprocess
import sys
from pathlib import Path

PROJECT = Path(__file__).resolve().parents[1]
sys.path.insert(0, str(PROJECT / "tests" / "cli"))
sys.dont_write_bytecode = True

from olt import BOX, BUILD, OLT, Olt  # noqa: E402

MOST_US = 60
ROUNDS = 50  # of each display and of its loops in turn; the quickest counts
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
BRACKET = {"semaphore_p": ("take",), "semaphore_v": ("give",), "raise": ("raise",), "lower": ("lower",)}


def step(call):
    """A call as a line for the loop; None when it is none of the board."""
    word, *arguments = (TRANSACTIONS | BRACKET).get(call.op, (None,))
    if call.thread != "main" or (call.op.startswith("semaphore") and call.values["id"] != "board"):
        return None
    numbers = (int(call.values[name], 16 if name == "data" else 0) for name in arguments)
    return word and " ".join([word, *map(str, numbers)])


def steps(olt):
    """What each display does to the board, line by line."""
    olt.start(trace=True)
    found = []
    for command, node in DISPLAYS:
        with olt.vty(node) as session:
            before = len(olt.trace())
            assert session.run(command)[1] == 0
            found.append([line for line in map(step, olt.trace()[before:]) if line])
    olt.stop()
    return found


class Floor:
    """A loop in the box of the board, with as many threads as the daemon."""

    def __init__(self, olt, name, steps):
        (olt.state / "log" / name).write_text("\n".join(steps) + "\n")
        program = ["/run/olt/build/bin/bus_floor", f"/var/log/{name}", len(olt.threads()) - 1]
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
    transactions = [line for line in steps if (line,) not in BRACKET.values()]
    with Floor(olt, "bus", transactions) as bus, Floor(olt, "board", steps) as board, olt.vty(node) as session:
        def round_us():
            return bus.us(REPEATS), board.us(REPEATS), display_us(olt, session, command)

        round_us()  # everything is warm from here on
        bus_us, board_us, ours_us = (min(times) for times in zip(*(round_us() for _ in range(ROUNDS))))
    beyond_bus_us, beyond_us = ((ours_us - floor_us) / len(MODULES) for floor_us in (bus_us, board_us))
    print(f"{command:<24}  {len(transactions)} transactions: loop {bus_us:.0f} us, with brackets {board_us:.0f} us, here "
          f"{ours_us:.0f} us")
    print(f"{'':<24}  ratio {ours_us / bus_us:.2f}, {beyond_bus_us:.1f} us a module beyond the loop; with brackets "
          f"{ours_us / board_us:.2f}, {beyond_us:.1f} us (at most {MOST_US})")
    return beyond_us <= MOST_US


def main():
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
