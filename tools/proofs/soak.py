# SPDX-License-Identifier: GPL-2.0-or-later
"""A busy day in minutes: nothing grows.

Sessions come and go with half a million commands, modules are plugged and unplugged, thousands of alarms are filed, and
the monitors go round some hundred times faster than they do, so that the minutes have a day's passes. Memory and
descriptors are flat in the last half, and no line of the log tells of an error that nothing explains."""
import random
import re
import time
from collections import Counter

from alarm_fixtures import peer_of
from every_command import descriptors
from footprint import resident_kb
from load import Load, own_lines
from olt import NO_QUARANTINE
from project import PROJECT
from silent_servers import silent_servers
from trend import Trend
from uevents import send

TARGETS = ["diagd", "diagsh", "boardsim", "boardctl", "gpio_sim", "call_shim"]
MODULES = ["gpon-1490.json", "combo-1490-1577.json", "xgpon-1577.json", "sfp-850.json", "qsfp28-lr4.json"]
# A tenth of a second for each of a day's rounds would take hours; these make a day of them in five minutes.
HURRIED = ["nanosleep thread=fan_monitor ret=0 delay_ms=10", "nanosleep thread=power_monitor ret=0 delay_ms=7",
           "nanosleep thread=reset_monitor ret=0 delay_ms=5"]
TIMER = {"CALL_SHIM_TIMER": "alarm_log_threshold_monitor=10"}
SAMPLE_S = 0.5

# Lines of the log that the day explains: pattern, why.
EXPLAINED = [
    (r"^(warnings|notifications|informational|debugging):", "no error"),
    (r"^\w+: DIAGD: alarm [\w-]+ \(\w+\): ", "an alarm that is printed"),
]


def options(parser):
    parser.add_argument("--commands", type=int, help="how many commands all sessions run (500000, short form 12000)")


class Hands:
    """What happens to the board meanwhile: modules come and go, it warms up and cools down, USB sticks are put in."""

    def __init__(self, olt, seed):
        self._olt = olt
        self._chance = random.Random(seed)
        self._plugged = set()
        self.plugs = 0

    def do_something(self):
        chance, olt = self._chance, self._olt
        cage = chance.choice(["gpon", "ge"]), chance.randint(1, 4)
        if cage in self._plugged:
            olt.boardctl("unplug", *cage)
            self._plugged.remove(cage)
        else:
            olt.boardctl("plug", *cage, PROJECT / "sim" / "modules" / chance.choice(MODULES))
            self._plugged.add(cage)
        self.plugs += 1
        if self.plugs % 5 == 0:
            olt.boardctl("temp", "set", chance.randint(200, 700))
        if self.plugs % 7 == 0:
            olt.boardctl("power", chance.randrange(8))
        if self.plugs % 3 == 0:
            send(olt, chance.choice(["add@/devices/usb1", "remove@/devices/usb1"]))


def prepare(olt):
    """Everything switched on: thresholds that the board's values cross, alarms that are stored and sent."""
    with olt.vty() as session:
        lines = ["alarm-log alarm all enable record", "alarm-log event all enable record",
                 "alarm-log remote server ipv4 127.0.0.1 port 514", "alarm-log remote server ipv4 enable",
                 "alarm-log remote server ipv6 ::1 port 514", "alarm-log remote server ipv6 enable",
                 "alarm-log alarm fan enable all", "alarm-log debug send id 28 message first",
                 "alarm-log threshold temp-high enable 40 35", "alarm-log threshold mem-usage-high enable 1 0.5"]
        for line in lines:
            answer = session.run(line)
            assert answer == ("", 0), (line, answer)
    for kind in ("gpon", "xgpon"):
        for port in range(1, 5):
            with olt.vty(f"{kind} 0/{port}") as session:
                assert session.run("alarm-log threshold pon-temp-high enable 20 10") == ("", 0)


def unexplained(olt):
    """Lines of the log and of the daemon's own output that tell of errors."""
    lines = [re.sub(r"^\S+ \S+ (\w+: DIAGD: )(\[\S+\] )?", r"\1", line) for line in olt.log().splitlines()]
    return [line for line in lines if not any(re.search(pattern, line) for pattern, _ in EXPLAINED)]


def watch(olt, load, hands, writer, report):
    """The trends of memory, descriptors and threads until the load is done, and how many alarms came meanwhile."""
    memory, files, threads = Trend(), Trend(), Trend()
    filed, said_s = 0, 0
    while load.running():
        hands.do_something()
        filed += len(writer.lines())
        memory.add(resident_kb(olt.pid))
        files.add(len(olt.fds()))
        threads.add(len(olt.threads()))
        if report.spent_s() > said_s:
            report.say(f"{load.done()} commands, {memory.last} kB, {files.last} descriptors, {filed} alarms of another process")
            said_s = report.spent_s() + 30
        time.sleep(SAMPLE_S)
    return memory, files, threads, filed


def judge(trend, what, unit, floor, report):
    """A figure for a trend, which may grow by its noise, or by `floor` where there is none."""
    growth, noise = trend.growth()
    bound = max(2 * noise, floor)
    report.figure(f"{what}: at first, at last, at most", f"{trend.first}, {trend.last}, {trend.highest}{unit}")
    report.figure(f"{what}: growth over the last half", f"{growth:.1f}{unit}", f"at most {bound:.1f}{unit}, the noise", growth <= bound)


def run(how, report):
    count = how.commands or (12_000 if how.short else 500_000)
    olt = how.boxes.make()
    olt.faults(*HURRIED)
    olt.configure("log record-priority")
    olt.start(preload=["/run/olt/build/lib/libcall_shim.so"], env={**TIMER, **NO_QUARANTINE})
    servers = silent_servers(olt)
    prepare(olt)
    load = Load(olt, own_lines(olt), count, how.seed)
    hands = Hands(olt, how.seed)
    before = descriptors(olt)
    with peer_of(olt, "add", "77", "0", "day") as writer:
        writer.pace()  # or it would do nothing but keep all others from the store
        load.start()
        memory, files, threads, filed = watch(olt, load, hands, writer, report)
        load.finish()
    for complaint, times in Counter(load.complaints()).most_common(20):
        report.finding(f"{times} times: {complaint}")
    report.check(olt.daemon.poll() is None, "the daemon has ended")
    report.figure("commands", load.done(), f"at least {count}", load.done() >= count)
    report.figure("sessions", load.sessions())
    report.figure("modules plugged and unplugged", hands.plugs)
    report.figure("alarms of another process", filed, "thousands", filed > 1000)
    judge(memory, "resident memory", " kB", memory.last / (50 if how.short else 100), report)
    judge(files, "descriptors", "", 1, report)
    judge(threads, "threads", "", 1, report)
    olt.settled_fds()
    more = descriptors(olt) - before
    for server in servers:
        server.close()
    report.figure("descriptors that stay when all sessions are gone", " ".join(more.elements()) or "none", "none", not more)
    errors = unexplained(olt)
    report.figure("log lines of errors that nothing explains", len(errors), "0", not errors)
    for line, times in Counter(errors).most_common(20):
        report.say(f"{times} times: {line}")
