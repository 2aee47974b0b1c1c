#!/usr/bin/python3
# SPDX-License-Identifier: GPL-2.0-or-later
"""The running daemon against a floor: the listing of a full alarm store, and passes of the threshold monitor.

Exit status 1 when the listing reaches less than 80 percent of the lines that a handler prints in the same time of CPU
through the same format from constants, or a pass takes more than 2 ms of CPU."""
import statistics
import subprocess
import sys
import time
from pathlib import Path

from bench_olt import BUILD, PORTS, running_olt  # first: it leads to the others

from alarm_store import AlarmStore, CAPACITY, Record
from olt import wait_until
from vty import Vty

ROUNDS = 30
LEAST_SHARE = 0.8
LONGEST_PASS_MS = 2.0
PASSES = 7
PERIOD_S = 3
KINDS = ("gpon", "xgpon")
# The optical alarms of a port with thresholds that no module reaches.
ALARMS = {"pon-txpower-high": "90 80", "pon-txpower-low": "-90 -80", "pon-txbias-high": "900 800",
          "pon-txbias-low": "-90 -80", "pon-vcc-high": "90 80", "pon-vcc-low": "-90 -80",
          "pon-temp-high": "900 800", "pon-temp-low": "-900 -800"}


def cpu_ms(pid):
    """CPU of the program's main thread so far, in which its event loop runs."""
    return int(Path(f"/proc/{pid}/task/{pid}/schedstat").read_text().split()[0]) / 1e6


def listing_ms(pid, session, command):
    """CPU of one listing: what the reader and others take of the processors does not count."""
    before = cpu_ms(pid)
    text, rc = session.run(command)
    took = cpu_ms(pid) - before
    assert rc == 0 and text.count("\n") >= CAPACITY, (rc, text[:200])
    return took


def listing(olt):
    store = AlarmStore(olt.pid)
    store.chain([Record("port 0/3 is down, a message of a usual length")] * CAPACITY)
    store.close()
    path = str(olt.state / "run" / "floor.vty")
    floor = subprocess.Popen([BUILD / "bin" / "vty_floor", path])
    try:
        wait_until(lambda: Path(path).exists(), "the floor's vty")
        with Vty(path, "view") as bare, olt.vty() as session:
            # In turns, for a processor that changes its pace.
            turns = [(listing_ms(floor.pid, bare, "show floor"), listing_ms(olt.pid, session, "show alarm-log"))
                     for _ in range(ROUNDS)]
            floor_ms, ours_ms = map(min, zip(*turns))
    finally:
        floor.kill()
        floor.wait()
    share = floor_ms / ours_ms
    print(f"listing of {CAPACITY} records     floor {CAPACITY / floor_ms:6.0f} lines a ms of CPU, here "
          f"{CAPACITY / ours_ms:6.0f}, share {share:.2f} (at least {LEAST_SHARE})")
    return share >= LEAST_SHARE


def switch(olt, per_port):
    """Enables the first `per_port` alarms of every port."""
    for kind in KINDS:
        for port in PORTS:
            with olt.vty(f"{kind} 0/{port}") as session:
                for i, (name, thresholds) in enumerate(ALARMS.items()):
                    words = f"enable {thresholds}" if i < per_port else "disable"
                    result = session.run(f"alarm-log threshold {name} {words}")
                    assert result == ("", 0), (kind, port, name, result)


def bus_ms(olt):
    """CPU of the calls of the bus libraries so far, see bus_cost.cpp.  Besides the monitor they are made by
    a thread that looks at the fans now and then."""
    return int.from_bytes((olt.state / "log" / "bus").read_bytes(), sys.byteorder) / 1e6


def pass_ms(olt):
    """CPU of one pass in all, and without its calls of the bus: the median, for one that finds a cold processor takes
    twice as much, and now and then a period has no pass."""
    time.sleep(PERIOD_S)  # for what the commands left to do
    whole, own = [], []
    for _ in range(PASSES):
        before, bus_before = cpu_ms(olt.pid), bus_ms(olt)
        time.sleep(PERIOD_S)
        whole.append(cpu_ms(olt.pid) - before)
        own.append(whole[-1] - (bus_ms(olt) - bus_before))
    return statistics.median(whole), statistics.median(own)


def monitor(olt):
    is_good = True
    for per_port in (0, 1, 8):
        switch(olt, per_port)
        ms, own_ms = pass_ms(olt)
        print(f"threshold pass, {per_port * len(PORTS) * len(KINDS):3} alarms  CPU {ms:6.3f} ms, without the bus "
              f"{own_ms:6.3f} ms (at most {LONGEST_PASS_MS})")
        is_good &= own_ms <= LONGEST_PASS_MS
    return is_good


def main():
    with running_olt("daemon-bench", preload=["/run/olt/build/lib/libbus_cost.so"], env={"BUS_COST_FILE": "/var/log/bus"}) as olt:
        return 0 if listing(olt) & monitor(olt) else 1


if __name__ == "__main__":
    sys.exit(main())
