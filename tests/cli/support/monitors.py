# SPDX-License-Identifier: GPL-2.0-or-later
"""Watching the daemon's monitor threads: their calls, with their pauses cut short."""

import contextlib
import os
import signal
from pathlib import Path

from calls import of
from olt import wait_until
from vty import DEADLINE_S

HURRY_MS = 20


def hurried(*threads):
    """Fault lines that let a thread's pause of any length take some milliseconds."""
    return [f"nanosleep thread={thread} ret=0 delay_ms={HURRY_MS}" for thread in threads]


def calls_of(olt, thread, since=0):
    return [call for call in olt.trace()[since:] if call.thread == thread]


@contextlib.contextmanager
def stopped(olt):
    """The daemon stands still meanwhile, and with it nsenter, which waits for it."""
    pids = [olt.daemon.pid, olt.pid]

    def stand_still():
        tasks = [task for pid in pids for task in Path(f"/proc/{pid}/task").glob("*/stat")]
        return all(task.read_text().rsplit(")", 1)[1].split()[0] == "T" for task in tasks)

    olt.send_signal(signal.SIGSTOP)
    try:
        wait_until(stand_still, "the daemon stands still")
        yield
    finally:
        for pid in pids:
            os.kill(pid, signal.SIGCONT)


def wait_call(olt, thread, pattern, since=0, count=1, timeout=DEADLINE_S):
    """The calls of the thread that match, once there are `count` of them."""
    return wait_until(
        lambda: (found := of(calls_of(olt, thread, since), pattern)) and len(found) >= count and found,
        f"{count} {pattern} of {thread}", timeout)


def wait_thread(olt, name):
    """Until the daemon has a thread of that name, which a thread gives itself when it has begun."""
    wait_until(lambda: name in olt.threads(), f"the thread {name}")


def paused_ms(calls):
    """How long the pauses among the calls were to be; one that a signal interrupts goes on with what is left of it."""
    parts = of(calls, "nanosleep")
    return sum(int(part.values["ms"]) for before, part in zip([None, *parts], parts) if not before or before.result == "0")


def wait_passes(olt, thread, count=2):
    """Until the thread has gone round some times from now on, whatever it does then."""
    wait_call(olt, thread, "nanosleep", since=len(olt.trace()), count=6 * count)


def steps(calls):
    """The board's and the log's part of a thread's calls, in words."""
    said = []
    for call in calls:
        if call.op in ("semaphore_p", "semaphore_v"):
            said.append("take" if call.op.endswith("p") else "give")
        elif call.op == "misc_cpld_i2c_set_byte":
            said.append(f"write {int(call.values['reg'], 0)} {int(call.values['val'], 0)}")
        elif call.op == "misc_cpld_i2c_power_state_get":
            said.append("read status")
        elif call.op == "misc_i2c_read":
            said.append("read sensor")
        elif call.op == "cli_log":
            said.append(call.values["text"])
        elif call.op in ("misc_cpld_i2c_open", "misc_cpld_i2c_close", "raise", "lower", "pthread_create", "pthread_detach"):
            said.append(" ".join([call.op, *(call.values[key] for key in ("reason",) if key in call.values)]))
    return said


def records(olt, thread, since=0):
    """(code, state, text) of the records that the thread filed; every other byte of them is zero."""
    found = []
    for call in of(calls_of(olt, thread, since), "cli_log"):
        record = bytes.fromhex(call.values["rec"])
        assert len(record) == 32 and not any(record[2:28])
        found.append((int.from_bytes(record[:2], "little"), int.from_bytes(record[28:], "little"), call.values["text"]))
    return found


def start_calls(olt, reason):
    """The main thread's calls of one initialiser: from its raise of privileges to the next one's."""
    calls = calls_of(olt, "main")
    raises = [index for index, call in enumerate(calls) if call.op == "raise"]
    begin = next(index for index in raises if calls[index].values["reason"] == reason)
    end = next((index for index in raises if index > begin), len(calls))
    return calls[begin:end]
