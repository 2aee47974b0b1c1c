# SPDX-License-Identifier: GPL-2.0-or-later
"""Places in which a fault has a daemon of its own: presses of the push-button, and starts."""
import contextlib
import signal
import time
from collections import Counter

from fault_places import STIR_S, places_of, try_fault
from fault_session import HURRIED, Broken, Fault, FaultSession
from fault_start import ENDS, calls_of_start, required_text, unharmed_start
from monitors import stopped
from olt import wait_until


def presses(how, chance, tally):
    """A press of the push-button, a short and a long one."""
    olt = how.boxes.make()
    session = FaultSession(olt)

    def press(long):
        with stopped(olt):
            olt.boardctl("button", "press")
        if not long:
            time.sleep(0.1)  # some samples of 20 ms
        with contextlib.nullcontext() if long else stopped(olt):
            if not long:
                olt.boardctl("button", "release")
        wait_until(lambda: "reset_monitor" not in olt.threads(), "the press is done", STIR_S)
        olt.boardctl("button", "release")

    for long in (False, True):
        mark = session.mark()
        press(long)
        # The main thread sends what the button's asks it to.
        made = Counter((call.thread, call.op) for call in session.calls(mark, "(reset_monitor|main)")
                       if call.thread == "reset_monitor" or call.op == "zclient_send_message")
        place = "a long press" if long else "a short press"
        tries = [Fault(op, nth, thread) for thread, op in sorted(made) if op in tally.wanted
                 for nth in places_of(made[thread, op], chance)]
        if how.short:
            tries = [fault for fault in tries if fault.op not in tally.failed and fault.nth == 1]
        for fault in tries:
            session.restart()

            def body(fault=fault, long=long):
                said = len(olt.stdout())
                mark = session.mark()
                olt.faults(*HURRIED, fault.line())
                try:
                    press(long)
                except AssertionError as error:
                    raise Broken(str(error)) from None
                if not session.made(mark, fault):
                    return None
                wanted = "reset_monitor_thread sclient_send_message() failed\r\n"
                if fault.op == "sclient_send_message" and olt.stdout()[said:].count(wanted) != 1:
                    raise Broken(f"it does not say {wanted!r} but {olt.stdout()[said:]!r}")
                session.threads = [name for name in session.threads if name != "reset_monitor"]
                session.check(fault)
                return "told in the required words" if fault.op == "sclient_send_message" else "the press is done nevertheless"

            try_fault(session, tally, fault, place, body)
        session.restart()


def starts(how, chance, tally):
    """Starts of the daemon."""
    olt = how.boxes.make()
    olt.faults(*HURRIED)
    made = unharmed_start(olt)
    counts = Counter((call.thread, call.op) for call in made)
    # A start takes semaphores again that it then could not give back.
    tries = [Fault(op, nth, thread) for thread, op in sorted(counts) if op in tally.wanted - {"semaphore_v"}
             for nth in places_of(counts[thread, op], chance)]
    if how.short:
        only_here = [fault for fault in tries if fault.op not in tally.failed and fault.nth == 1]
        others = [fault for fault in tries if fault not in only_here]
        tries = only_here + chance.sample(others, min(3, len(others)))
    for fault in tries:
        olt.faults(*HURRIED, fault.line())
        said = {"stdout": len(olt.stdout()), "stderr": len(olt.stderr())}
        try:
            outcome = harmed_start(olt, fault)
            stream, text = required_text(calls_of_start(olt), fault) or (None, None)
            if stream:
                def here(stream=stream):
                    return getattr(olt, stream)()[said[stream]:]

                wait_until(lambda: here().count(text) == 1, f"once on {stream}: {text!r}", STIR_S)
                outcome += ", told in the required words"
            tally.outcome(fault, "the start", outcome)
        except (Broken, AssertionError) as error:
            tally.broken(fault, "the start", error)
        if olt.daemon:
            olt.kill(signal.SIGKILL)
    olt.faults(*HURRIED)
    olt.start(trace=True)
    if olt.run("show version")[1] != 0:
        tally.report.finding("a start without a fault does not work")


def harmed_start(olt, fault):
    """A start in which a call fails; what became of it."""
    olt.start(trace=True, wait=False)
    if fault.op in ENDS:
        status = olt.wait_end()
        if status != 0:
            raise Broken(f"it ends with {status}")
        return "the daemon ends with 0, as it must"
    olt.wait_answers()
    if olt.run("show version")[1] != 0:
        raise Broken("show version fails")
    for name in ("board", "alarm"):
        olt.wait_free(name)
    return "the start goes on"
