# SPDX-License-Identifier: GPL-2.0-or-later
"""The board shared by threads, sessions and processes, and what is left of it when any of them, or the board,
fails."""
import contextlib
import itertools
import os
import random
import signal
import subprocess
import threading
import time
from pathlib import Path

import pytest
from alarm_fixtures import SANITIZED
from calls import of, read_trace
from module_memory import path, plug
from monitors import calls_of
from olt import SEMAPHORE_KEYS, SUPPORT, wait_until
from stopwatch import Stopwatch
from uevents import send
from vty import DEADLINE_S

PAUSES = ("sleep", "usleep", "nanosleep")
WORKERS = ["fan_monitor", "power_monitor", "reset_monitor", "usb_monitor"]
THRESHOLD_TIMER = "alarm_log_threshold_monitor"


# --- who holds the board

# An hour's passes of the fan monitor, polls of the power monitor, samples of the button and passes of the threshold
# monitor.  All are done, as fast as the machine can.
HOUR = {"fan_monitor": 720, "power_monitor": 1800, "reset_monitor": 18000, "threshold": 1200}
LONGEST_HOUR_S = 600
# Pauses of a thread in one pass: the fan monitor looks at its switch every second of its five.
PAUSES_OF_A_PASS = {"fan_monitor": 5, "power_monitor": 1, "reset_monitor": 1}
LOAD = [
    ("config", "show transceiver", "show fan json", "show temperature"),
    ("config", "show transceiver diagnosis", "show sys power", "show alarm-log tail 3"),
    ("diagnose", "system led on", "pon led on", "show pon tx", "show logic version", "pon power off 8", "pon power on 8"),
    ("config", "fan speed high", "show transceiver json", "fan speed auto", "show version"),
]


@contextlib.contextmanager
def load(olt):
    """While it lasts, sessions of several operators use the board in loops.  Gives the numbers of their rounds."""
    done, rounds, errors = threading.Event(), [0] * len(LOAD), []

    def operate(number, node, commands):
        try:
            with olt.vty(node) as session:
                while not done.is_set():
                    for command in commands:
                        session.run(command)
                    rounds[number] += 1
        except Exception as error:  # told by the test's own thread
            errors.append(error)

    operators = [threading.Thread(target=operate, args=(n, node, commands)) for n, (node, *commands) in enumerate(LOAD)]
    for operator in operators:
        operator.start()
    try:
        yield rounds
    finally:
        done.set()
        for operator in operators:
            operator.join()
    assert not errors, errors


class Passes:
    """Counts the passes of each thread in a trace that grows."""

    def __init__(self, path):
        self.trace = open(path, "rb")
        self.rest = b""
        self.pauses = dict.fromkeys(HOUR, 0)

    def done(self):
        """How many each thread has made by now."""
        *lines, self.rest = (self.rest + self.trace.read()).split(b"\n")
        for line in lines:
            _, _, thread, op, *arguments = line.split(b" ")
            if op == b"nanosleep" and thread.decode() in self.pauses:
                self.pauses[thread.decode()] += 1
            elif op == b"thread_add_timer" and THRESHOLD_TIMER.encode() in b" ".join(arguments):
                self.pauses["threshold"] += 1
        return {thread: count // PAUSES_OF_A_PASS.get(thread, 1) for thread, count in self.pauses.items()}


def check_discipline(calls):
    """Takes and gives of the board pair up in each thread, are never nested, and have no pause between them; the last
    give may be missing, where the end of the daemon met a thread at work.  Returns how often each thread took it."""
    held, takes = {}, {}
    for call in calls:
        if call.op in ("semaphore_p", "semaphore_v") and call.values["id"] == "board":
            assert call.result == "0", call
            if call.op == "semaphore_p":
                assert not held.get(call.thread), f"{call.thread} takes what it holds, at {call.time_ms}"
                takes[call.thread] = takes.get(call.thread, 0) + 1
            else:
                assert held.get(call.thread), f"{call.thread} gives what it does not hold, at {call.time_ms}"
            held[call.thread] = call.op == "semaphore_p"
        elif call.op in PAUSES:
            assert not held.get(call.thread), f"{call.thread} pauses with the board, at {call.time_ms}"
    return takes


@pytest.mark.slow
def test_over_an_hour_of_mixed_load_the_board_is_taken_and_given_in_pairs_and_never_across_a_pause(cold_olt):
    olt = cold_olt
    # Button samples are ten times as frequent as anything else: one of a millisecond is short enough.
    olt.faults("nanosleep thread=fan_monitor ret=0 delay_ms=3", "nanosleep thread=power_monitor ret=0 delay_ms=8",
               "nanosleep thread=reset_monitor ret=0 delay_ms=1")
    plug(olt, "gpon", 3, *path())
    olt.start(trace=True, env={"CALL_SHIM_TIMER": f"{THRESHOLD_TIMER}=5"})
    olt.run("alarm-log alarm temp-high enable print")
    begin, passes = time.monotonic(), Passes(olt.trace_path)
    with load(olt) as rounds:
        for temperature, status, action in itertools.cycle([(250, "0x03", "add"), (650, "0x01", "change"),
                                                            (400, "0x07", "add"), (750, "0x02", "remove")]):
            olt.boardctl("temp", "set", temperature)
            olt.boardctl("power", status)
            send(olt, f"{action}@/devices/usb1/1-2")
            done = passes.done()
            if all(done[thread] >= hour for thread, hour in HOUR.items()):
                break
            assert time.monotonic() < begin + LONGEST_HOUR_S, f"{done} of an hour's {HOUR}"
            time.sleep(0.25)  # the rhythm in which the board changes
    took = time.monotonic() - begin
    assert olt.stop() == 0
    olt.wait_free("board")
    print(f"{done} in {took:.0f} s, of an hour's {HOUR}; rounds of the operators {rounds}")
    assert min(rounds) >= 3, rounds
    takes = check_discipline(read_trace(olt.trace_path, only=f" (semaphore_.|{'|'.join(PAUSES)}) "))
    print(f"the board was taken {takes}")
    assert set(takes) == {"main", "fan_monitor", "power_monitor", "usb_monitor"}


# --- processes that die with the board

KILLS = 8


@pytest.fixture
def chance():
    seed = int.from_bytes(os.urandom(4), "little")
    print(f"seed {seed}")  # shown when the test fails
    return random.Random(seed)


def start_peer(olt):
    """Another process of the box that takes and gives the board without end."""
    peer = subprocess.Popen(
        olt.inside("env", *SANITIZED, "/usr/bin/python3", SUPPORT / "board_peer.py", "/run/olt/build/lib"),
        stdin=subprocess.PIPE, stdout=subprocess.PIPE)
    assert peer.stdout.readline() == b"ready\n"
    return peer


def is_alive(olt):
    """Commands and monitors get the board."""
    assert olt.run("show logic version", "diagnose")[1] == 0
    before = olt.trace_path.stat().st_size
    wait_until(lambda: {call.thread for call in of(read_trace(olt.trace_path, before), "semaphore_v")} >= {"power_monitor"},
               "the power monitor takes and gives the board")


def ended(peer):
    peer.send_signal(signal.SIGCONT)  # nsenter stops with the process it waits for
    return peer.poll() is not None


def pid_inside(process):
    # nsenter waits for its only child.
    return int(Path(f"/proc/{process.pid}/task/{process.pid}/children").read_text().split()[0])


@pytest.mark.slow
def test_a_process_killed_with_the_board_leaves_the_daemon_running(cold_olt, chance):
    olt = cold_olt
    olt.faults("nanosleep thread=power_monitor ret=0 delay_ms=20")
    olt.start(trace=True)
    kills = kills_with_the_board = 0
    while kills < KILLS or not kills_with_the_board:
        kills += 1
        assert kills < 10 * KILLS, "no kill came while the board was taken"
        peer = start_peer(olt)
        time.sleep(chance.uniform(0, 0.05))  # the random point
        victim = pid_inside(peer)
        os.kill(victim, signal.SIGSTOP)
        kills_with_the_board += olt.sem_value("board") == 0
        os.kill(victim, signal.SIGKILL)
        wait_until(lambda: ended(peer), "the killed process is gone")
        is_alive(olt)
    wait_until(lambda: olt.sem_value("board") == 1, "the board is free")
    assert olt.stop() == 0
    olt.wait_free("board")


@pytest.mark.slow
def test_the_daemon_killed_at_any_point_leaves_the_board_to_the_others(cold_olt, chance):
    olt = cold_olt
    olt.faults("nanosleep thread=power_monitor ret=0 delay_ms=1")
    olt.start()
    peer = start_peer(olt)
    for round_ in range(KILLS // 2):
        if round_:
            olt.start()
        session = olt.vty()
        for command in ("show transceiver", "show transceiver diagnosis", "show version") * 3:
            session.send(command)
        time.sleep(chance.uniform(0, 0.05))  # the random point
        assert olt.kill() == -signal.SIGKILL
        session.close()
        count = rounds_of(peer)
        assert rounds_of(peer) > count, "the other process goes on"
    peer.stdin.close()
    assert peer.wait(DEADLINE_S) == 0
    peer.stdout.close()
    olt.wait_free("board")


def rounds_of(peer):
    """How often the peer has taken the board, asked after it took it once more at least."""
    peer.stdin.write(b"\n")
    peer.stdin.flush()
    return int(peer.stdout.readline())


def test_a_board_semaphore_that_is_removed_is_said_once_and_made_again_with_the_next_start(cold_olt):
    olt = cold_olt
    olt.faults("nanosleep thread=power_monitor ret=0 delay_ms=20")
    olt.start(trace=True)
    olt.exec("ipcrm", "-S", hex(SEMAPHORE_KEYS["board"]), check=True)
    olt.wait_log(" is gone: ")
    before = len(olt.trace())
    wait_until(lambda: len(of(calls_of(olt, "power_monitor", before), "misc_cpld_i2c_power_state_get")) >= 3, "polls go on")
    assert olt.run("show logic version", "diagnose")[1] == 0
    lines = [line for line in olt.log().splitlines() if " is gone: " in line]
    assert len(lines) == 1 and "used without it until the daemon is restarted" in lines[0]
    olt.restart()
    assert olt.run("show logic version", "diagnose")[1] == 0
    wait_until(lambda: olt.sem_value("board") == 1, "the board is free")


# --- a board that is late, silent or talks garbage

BUSY_PERCENT = 2
WINDOW_S = 8


def cpu_s(olt):
    """Processor time of all threads of the daemon so far."""
    return sum(int((task / "schedstat").read_text().split()[0]) for task in Path(f"/proc/{olt.pid}/task").iterdir()) / 1e9


@contextlib.contextmanager
def late(olt):
    olt.boardctl("fault", "add", "any", "delay=50")
    yield
    olt.boardctl("fault", "clear")


@contextlib.contextmanager
def silent(olt):
    board = board_pid(olt)
    os.kill(board, signal.SIGSTOP)
    yield
    os.kill(board, signal.SIGCONT)


@contextlib.contextmanager
def garbled(olt):
    """Registers and modules full of random bytes, a sensor that jumps over its whole range."""
    done, noise = threading.Event(), random.Random(1)
    plug(olt, "gpon", 1, *(bytes(noise.randbytes(256)) for _ in range(2)))

    def garble():
        while not done.wait(0.05):
            olt.boardctl("reg", "set", noise.randrange(16), noise.randrange(256))
            olt.boardctl("temp", "raw", noise.randrange(65536))
            olt.boardctl("power", noise.randrange(256))

    garbler = threading.Thread(target=garble)
    garbler.start()
    try:
        yield
    finally:
        done.set()
        garbler.join()


def board_pid(olt):
    """The board's process, which the box has started."""
    known, found = [olt.holder.pid], []
    while known:
        pid = known.pop()
        with contextlib.suppress(FileNotFoundError, ProcessLookupError):
            if Path(f"/proc/{pid}/comm").read_text() == "boardsim\n":
                found.append(pid)
            for task in Path(f"/proc/{pid}/task").iterdir():
                known += map(int, (task / "children").read_text().split())
    assert len(found) == 1, found
    return found[0]


@pytest.mark.slow
@pytest.mark.parametrize("state", [late, silent, garbled], ids=lambda state: state.__name__)
def test_a_bad_board_costs_no_processor_and_leaves_commands_and_threads(fresh_olt, state):
    olt = fresh_olt
    threads = olt.threads()
    assert set(WORKERS) <= set(threads)
    with olt.vty() as session, olt.vty("diagnose") as diagnose:
        with state(olt):
            begin, spent = time.monotonic(), cpu_s(olt)
            for operator, command in ((session, "show version"), (session, "show fan json"), (diagnose, "show logic version"),
                                      (diagnose, "show pon tx"), (session, "show transceiver")):
                text, rc = operator.run(command)
                assert rc in (0, 1), (command, text)
            time.sleep(max(0, WINDOW_S - (time.monotonic() - begin)))  # what the monitors do by themselves
            share = 100 * (cpu_s(olt) - spent) / (time.monotonic() - begin)
            assert olt.threads() == threads
        print(f"{state.__name__}: {share:.2f} percent of a core")
        assert share < BUSY_PERCENT
        assert session.run("show version")[1] == 0
    wait_until(lambda: olt.sem_value("board") == 1, "the board is free")


# --- the end

@pytest.mark.slow
def test_the_end_comes_within_a_second_of_the_command_that_runs_and_leaves_the_fans(cold_olt):
    olt = cold_olt
    olt.faults()
    olt.start(trace=True)
    olt.run("fan mode open")
    olt.run("fan speed high")
    wait_until(lambda: olt.boardctl("reg", "get", 4) == "0x01\n" and olt.boardctl("reg", "get", 5) == "0x02\n",
               "the fans turn as ordered")
    olt.faults("misc_cpld_i2c_open thread=main delay_ms=2000")
    with olt.vty("diagnose") as session:
        before = len(olt.trace())
        session.send("show logic version")
        wait_until(lambda: of(calls_of(olt, "main", before), "semaphore_p"), "the command has the board")
        olt.send_signal(signal.SIGTERM)
        _, rc = session.receive()
        watch = Stopwatch()
        assert rc == 0, "the command is finished"
    assert olt.wait_end() == 0
    took = watch.spent_s()
    print(f"the end came {took * 1000:.0f} ms after the command")
    assert took < 1
    olt.wait_free("board")
    assert (olt.boardctl("reg", "get", 4), olt.boardctl("reg", "get", 5)) == ("0x01\n", "0x02\n")


@pytest.mark.slow
def test_the_daemon_ends_well_while_its_monitors_are_at_work(cold_olt):
    olt = cold_olt
    olt.faults(*(f"nanosleep thread={thread} ret=0 delay_ms=1" for thread in PAUSES_OF_A_PASS))
    for _ in range(12):  # each may meet a monitor at another moment
        olt.start(trace=True)
        with load(olt):
            wait_until(lambda: of(calls_of(olt, "fan_monitor"), "misc_i2c_read"), "the fan monitor passes")
        assert olt.stop() == 0
        olt.wait_free("board")


# --- privileges

def test_the_daemon_is_root_around_the_open_of_the_cpld_only(cold_olt):
    olt = cold_olt
    olt.faults()
    olt.start(trace=True)
    assert olt.root_threads() == []
    olt.faults("misc_cpld_i2c_open thread=main delay_ms=1000")
    with olt.vty("diagnose") as session:
        session.send("show logic version")
        wait_until(lambda: olt.root_threads() == ["diagd"], "the main thread is root while it opens the CPLD")
        assert session.receive()[1] == 0
        assert olt.root_threads() == []
    olt.faults("misc_cpld_i2c_read_byte thread=main delay_ms=1000", "misc_cpld_i2c_logic_version_get thread=main delay_ms=1000")
    with olt.vty("diagnose") as session:
        before = len(olt.trace())
        session.send("show pon tx")
        wait_until(lambda: of(calls_of(olt, "main", before), "lower"), "the CPLD is open")
        assert olt.root_threads() == [], "reading it needs no more than the handle"
        assert session.receive()[1] == 0
    assert olt.root_threads() == []


# A program that says as whom it runs, and waits until it may go on.
SAY_AND_WAIT = """#!/bin/sh
echo $(id -ru) $(id -u) >/media/ids.new && mv /media/ids.new /media/ids
until [ -e /media/go ]; do sleep 0.05; done
"""


@pytest.mark.parametrize("program, raised", [("vtysh", False), ("cp", True)])
def test_a_shell_line_runs_as_root_whether_or_not_the_daemon_raises_itself_for_it(cold_olt, program, raised):
    """Of the long press: the line that saves the configuration, and the backup."""
    olt = cold_olt
    olt.faults("nanosleep thread=reset_monitor ret=0 delay_ms=10")
    path = f"/usr/local/bin/{program}"
    olt.exec("sh", "-c", f"rm -f {path} && cat >{path} && chmod +x {path}", input=SAY_AND_WAIT, check=True)
    olt.start(trace=True)
    assert olt.root_threads() == []
    olt.boardctl("button", "press")
    ids = olt.state / "flash" / "ids"
    wait_until(ids.exists, f"{program} runs")
    assert ids.read_text() == "0 0\n"
    assert olt.root_threads() == (["reset_monitor"] if raised else [])
    olt.exec("touch", "/media/go", check=True)
    wait_until(lambda: "reset_monitor" not in olt.threads(), "the long press is done")
    assert olt.root_threads() == []
