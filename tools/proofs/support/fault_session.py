# SPDX-License-Identifier: GPL-2.0-or-later
"""A daemon of which one call at a time is made to fail, while its monitors all go on."""
import os
import re
import signal
from collections import Counter
from dataclasses import dataclass

from calls import read_trace
from fault_calls import GIVES_BACK, failure
from monitors import hurried
from olt import wait_until
from project import UNNAMED_THREADS
from vty import SessionClosed

MONITORS = ("fan_monitor", "power_monitor", "usb_monitor", "reset_monitor")
ANSWER_S = 20  # a step that takes longer hangs
SETTLE_S = 10
NO_TIMER = {"CALL_SHIM_TIMER": "alarm_log_threshold_monitor=100000000"}
# The monitors' pauses, and those of programming; all others are as long as they are.
HURRIED = hurried("fan_monitor", "power_monitor", "reset_monitor", "main")


@dataclass(frozen=True)
class Fault:
    op: str
    nth: int
    thread: str = "main"

    def line(self):
        result, error = failure(self.op)
        return f"{self.op} thread={self.thread} nth={self.nth} ret={result} errno={error}"

    def __str__(self):
        return f"{self.op} #{self.nth} of {self.thread}"


class Broken(Exception):
    """What does not hold after a fault; the daemon is of no use any more."""


def numbers_aside(text):
    return re.sub(r"-?\d+(\.\d+)?|-?inf|-?nan", "#", text)


class FaultSession:
    def __init__(self, olt, env=None, prepare=lambda olt: None):
        """prepare: what is to be done to each daemon that is started."""
        self.olt = olt
        self._env = {**NO_TIMER, **(env or {})}
        self._prepare = prepare
        olt.faults(*HURRIED)
        self.start()

    def start(self):
        self.olt.start(trace=True, env=self._env)
        self._prepare(self.olt)
        self.settle()

    def settle(self):
        """What the daemon holds when nothing is wrong."""
        self.olt.wait_free("board")
        wait_until(lambda: self.olt.threads().count("diagd") == UNNAMED_THREADS, "all threads have their names")
        self.threads = self.olt.threads()
        self.files = len(self.olt.settled_fds())

    def restart(self):
        self.olt.faults(*HURRIED)
        if self.olt.daemon:
            self.olt.kill(signal.SIGKILL)
        self.start()

    def mark(self):
        """From here on: what was recorded before is gone, or the trace would grow without end."""
        os.truncate(self.olt.trace_path, 0)
        return 0

    def calls(self, mark, thread="main"):
        return read_trace(self.olt.trace_path, mark, only=rf"^\d+ \d+ {thread} ")

    def made(self, mark, fault):
        """Whether the call that is to fail has been made."""
        return sum(call.op == fault.op for call in self.calls(mark, fault.thread)) >= fault.nth

    # --- a step, and what it calls

    def run(self, step, session):
        """Text and return code of a step."""
        try:
            return session.run(step.line)
        except SessionClosed:
            raise Broken("the session is closed") from None
        except TimeoutError:
            raise Broken(f"no answer within {ANSWER_S} s") from None

    def profile(self, step):
        """How often a step makes each call, by thread and name; those of the monitors are not the step's."""
        with self.olt.vty(step.node, timeout=ANSWER_S) as session:
            step.prepare(self.olt, session)
            mark = self.mark()
            self.run(step, session)
        return Counter((call.thread, call.op) for call in self.calls(mark, r"\S+") if call.thread not in MONITORS)

    def harmed(self, step, fault, most=8, first=True):
        """Runs a step unharmed, and then until the fault has happened; its first and its last answer, or None when that
        call was never made.  first: without it the step is not run unharmed."""
        unharmed = None
        with self.olt.vty(step.node, timeout=ANSWER_S) as session:
            if first:
                step.prepare(self.olt, session)
                unharmed = self.run(step, session)
            step.prepare(self.olt, session)
            mark = self.mark()
            self.olt.faults(*HURRIED, fault.line(), *step.with_faults)
            try:
                for turn in range(most):
                    if turn:
                        step.prepare(self.olt, session)
                    answer = self.run(step, session)
                    if self.made(mark, fault):
                        return unharmed, answer
            finally:
                self.olt.faults(*HURRIED)
        return None

    # --- afterwards

    def check(self, fault):
        """Nothing is left held: no semaphore, no descriptor, no thread, no privilege."""
        olt = self.olt
        olt.faults(*HURRIED)
        if olt.daemon.poll() is not None:
            raise Broken(f"the daemon ended with {olt.daemon.returncode}: {olt.stderr()[-500:]}")
        if fault.op in GIVES_BACK:
            self.restart()
            return
        try:
            for name in ("board", "alarm"):
                wait_until(lambda: olt.sem_value(name) == 1, f"the {name} semaphore is 1, not {olt.sem_value(name)},", SETTLE_S)
            wait_until(lambda: len(olt.fds()) <= self.files, "no descriptor is left", SETTLE_S)
            wait_until(lambda: not olt.root_threads(), f"no privilege is left of {olt.root_threads()}", SETTLE_S)
            wait_until(lambda: olt.threads() == self.threads, f"threads {self.threads}, not {olt.threads()}", SETTLE_S)
        except AssertionError as error:
            raise Broken(str(error)) from None

    def works(self, step, unharmed):
        """The step does again what it did unharmed.  unharmed: its answer then."""
        with self.olt.vty(step.node, timeout=ANSWER_S) as session:
            step.prepare(self.olt, session)
            text, status = self.run(step, session)
        if status != unharmed[1]:
            raise Broken(f"afterwards it gives {status}: {text!r}")
        if not step.varies and numbers_aside(text) != numbers_aside(unharmed[0]):
            raise Broken(f"afterwards it says {text!r}, not {unharmed[0]!r}")
