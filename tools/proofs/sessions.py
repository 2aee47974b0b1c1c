# SPDX-License-Identifier: GPL-2.0-or-later
"""Sessions of every kind at once: none makes the daemon grow or another wait.

A hundred sessions send commands and do not read; four hundred are open and asked at once; two thousand connections come
that never log in; expressions are filtered by that are as bad as those that are taken get."""
import contextlib
import re
import resource
import statistics
import time
from pathlib import Path

from olt import NO_QUARANTINE, wait_until
from vty import SUCCESS

TARGETS = ["diagd", "diagsh", "boardsim", "boardctl", "gpio_sim"]
SILENT = 100
SILENT_MB = 64
OPEN = 400
QUICK = "show diag monitor"
LOOKS = 100  # commands of others without the daemon having taken a byte more: that session waits
# Each refused if it were an element longer.
WORST = [r"(a|b)*a(a|b){11}c", r"[^b]*a[a-z ]{11}X", "(((((((a+)+)+)+)+)+)+)+X", "(a?){255}X", "a{512}"]


def memory_mb(pid):
    return int(re.search(r"VmRSS:\s+(\d+)", Path(f"/proc/{pid}/status").read_text())[1]) / 1024


def cpu_s(pid):
    return int(Path(f"/proc/{pid}/task/{pid}/schedstat").read_text().split()[0]) / 1e9


def answer_ms(session, count):
    """The times of `count` answers to a quick command."""
    found = []
    for _ in range(count):
        begin = time.monotonic()
        _, status = session.run(QUICK)
        found.append((time.monotonic() - begin) * 1000)
        assert status == SUCCESS
    return found


def p99(times):
    return statistics.quantiles(times, n=100)[98]


def fill(session, bystander, piece):
    """Sends commands until the daemon takes no more."""
    session.socket.setblocking(False)
    looks = sent = 0
    while looks < LOOKS:
        try:
            sent += session.socket.send(piece[sent % len(piece):])
            looks = 0
        except BlockingIOError:
            looks += 1
            bystander.run("! nothing")
        if sent > 1 << 24:
            return sent
    return sent


def open_silent(stack, olt):
    """Sessions that nothing is read from, half of them on the socket, half over TCP."""
    sessions = [stack.enter_context(olt.vty("diagnose")) for _ in range(SILENT // 2)]
    for _ in range(SILENT - SILENT // 2):
        session = stack.enter_context(olt.telnet())
        for line in ("enable", "diagnose"):
            session.run(line)
        sessions.append(session)
    return sessions


def stands_still(olt):
    """Whether the daemon has nothing to do for any session."""
    before = cpu_s(olt.pid)
    time.sleep(0.3)
    return cpu_s(olt.pid) - before < 0.001


def silent_sessions(olt, idle_olt, how, report):
    rounds = 5 if how.short else 50
    with contextlib.ExitStack() as stack, olt.vty("diagnose") as other, idle_olt.vty("diagnose") as undisturbed:
        answer_bytes = len(other.run("list")[0])
        sessions = open_silent(stack, olt)
        open_silent(stack, idle_olt)
        before = memory_mb(olt.pid)
        taken = [fill(session, other, b"list\0" * 1000 if number < SILENT // 2 else b"list\r" * 1000)
                 for number, session in enumerate(sessions)]
        wait_until(lambda: stands_still(olt), "every silent session waits")
        growth = memory_mb(olt.pid) - before
        idle, blocked = [], []
        for _ in range(rounds):  # in turn: whatever else the machine does, it does to both
            idle += answer_ms(undisturbed, 100)
            blocked += answer_ms(other, 100)
        bound = SILENT_MB + SILENT * answer_bytes / 1e6
        report.figure("sessions that send and do not read", f"{SILENT}, each until it had to wait", "all wait", max(taken) <= 1 << 24)
        report.figure("memory that these take beyond that of idle ones", f"{growth:.1f} MB",
                      f"at most {bound:.1f} MB, one command's output each included", growth <= bound)
        # A short run on a machine that does other things as well shows the time, and judges it not.
        within = how.short or p99(blocked) <= 2 * p99(idle)
        report.figure("others' answers meanwhile, 99 of 100", f"{p99(blocked):.2f} ms; beside idle sessions {p99(idle):.2f} ms",
                      "at most twice those beside idle sessions", within)


def open_sessions(olt, how, report):
    rounds = 2 if how.short else 20
    with olt.vty() as session:
        for line in ("line vty", f"session-limit {OPEN}"):
            assert session.run(line) == ("", SUCCESS)
    with contextlib.ExitStack() as stack:
        sessions = [stack.enter_context(olt.telnet()) for _ in range(OPEN)]
        with olt.telnet(None) as one_more:
            one_more.expect(rb"Too many vty sessions")
        found = []
        for _ in range(rounds):
            for session in sessions:
                begin = time.monotonic()
                session.run("show history")
                found.append((time.monotonic() - begin) * 1000)
        with olt.vty("diagnose") as other:
            socket = answer_ms(other, 500)
    report.figure(f"{OPEN} sessions over TCP at once, an answer", f"median {statistics.median(found):.2f} ms, "
                  f"99 of 100 {p99(found):.2f} ms")
    report.figure("an answer on the socket meanwhile, 99 of 100", f"{p99(socket):.2f} ms")


def idle_connections(olt, how, report):
    connections = 300 if how.short else 2000
    log = olt.state / "log" / "diagd.log"
    with contextlib.ExitStack() as stack:
        before, lines, begin = log.stat().st_size, olt.log().count("Vty connection refused"), time.monotonic()
        for _ in range(connections):
            with contextlib.suppress(OSError):
                stack.enter_context(olt.telnet(None))
        opened_s = time.monotonic() - begin
        cpu, begin = cpu_s(olt.pid), time.monotonic()
        with olt.vty("diagnose") as root:
            times = answer_ms(root, 500)
        time.sleep(3)  # a daemon that spins spends it
        share = (cpu_s(olt.pid) - cpu) / (time.monotonic() - begin)
        refused = olt.log().count("Vty connection refused") - lines
        written = log.stat().st_size - before
    report.figure(f"{connections} connections: log lines of refusals", f"{refused} in {opened_s:.1f} s",
                  "one a second", refused <= opened_s + 2)
    report.figure("what they write into the log", f"{written / 1000:.1f} kB", "at most 100 kB", written <= 100_000)
    report.figure("the daemon's processor while they stay", f"{100 * share:.1f} percent", "at most 20 percent", share <= 0.2)
    report.figure("answers for root meanwhile, 99 of 100", f"{p99(times):.2f} ms")


def expressions(olt, report):
    """On the syntax of all commands, the longest text that there is."""
    before = memory_mb(olt.pid)
    longest, highest = 0.0, before
    for worst in WORST:
        for line in (f"find {worst}", f"list | include {worst}"):
            with olt.vty() as session:
                begin = cpu_s(olt.pid)
                _, status = session.run(line)
                longest = max(longest, cpu_s(olt.pid) - begin)
                highest = max(highest, memory_mb(olt.pid))
                report.check(status == SUCCESS, f"{line} is refused")
    peak = int(re.search(r"VmHWM:\s+(\d+)", Path(f"/proc/{olt.pid}/status").read_text())[1]) / 1024
    report.figure("the worst regular expressions: memory at most", f"{peak - before:.1f} MB", "at most 64 MB", peak - before <= 64)
    report.figure("the worst regular expressions: processor time of one", f"{longest:.2f} s", "at most 1 s", longest <= 1)


def start(how):
    return how.boxes.make().start(env=NO_QUARANTINE).quiet()


def run(how, report):
    soft, hard = resource.getrlimit(resource.RLIMIT_NOFILE)
    resource.setrlimit(resource.RLIMIT_NOFILE, (min(hard, 16384), hard))
    silent_sessions(start(how), start(how), how, report)
    open_sessions(start(how), how, report)
    idle_connections(start(how), how, report)
    expressions(start(how), report)
    resource.setrlimit(resource.RLIMIT_NOFILE, (soft, hard))
