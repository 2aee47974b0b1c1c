# SPDX-License-Identifier: GPL-2.0-or-later
"""The places in which calls are made to fail.  Each takes what is wanted, a source of chance and the tally."""
import itertools
import time
from collections import Counter

from fault_calls import OF_THE_SHIM
from fault_script import SCRIPT, Step, required_answer
from fault_session import HURRIED, Broken, Fault, FaultSession, numbers_aside
from olt import wait_until
from silent_servers import silent_servers
from uevents import send

STIR_S = 20
SHORT_LATER = 0.25  # of the calls a short form has a later place, too


def places_of(count, chance):
    """The first, the second and a later one of so many calls."""
    return [1, *([2] if count >= 2 else []), *([chance.randint(3, count)] if count >= 3 else [])]


def try_fault(session, tally, fault, place, body):
    """Runs body, which gives the fault's outcome or None when it has not happened; on what breaks the daemon is new."""
    try:
        outcome = body()
        if outcome:
            tally.outcome(fault, place, outcome)
        return bool(outcome)
    except Broken as error:
        tally.broken(fault, place, error)
        session.restart()
        return True


def open_ways_out(olt):
    """Has an alarm sent everywhere: the sockets for that are opened once, and kept."""
    with olt.vty() as session:
        for line in ("alarm-log remote server ipv4 127.0.0.1 port 514", "alarm-log remote server ipv6 ::1 port 514",
                     "alarm-log remote server ipv4 enable", "alarm-log remote server ipv6 enable",
                     "alarm-log alarm power1-updown enable all", "alarm-log debug send id 77 message first",
                     "alarm-log remote server ipv4 disable", "alarm-log remote server ipv6 disable"):
            answer = session.run(line)
            assert answer == ("", 0), (line, answer)


def is_the_daemons(call):
    """Not what the database's engine does with files in its threads."""
    thread, op = call
    return thread == "main" or op not in OF_THE_SHIM


def waits_for_itself(call, made):
    """Whether a line takes the semaphore again that it then could not give back."""
    return call[1] == "semaphore_v" and made.get((call[0], "semaphore_p"), 0) > 1


def commands(how, chance, tally):
    """A session with every command, all monitors at work."""
    olt = how.boxes.make()
    olt.populate()
    how.kept = silent_servers(olt)  # as long as the proof
    session = FaultSession(olt, prepare=open_ways_out)
    counts = {}
    for step in SCRIPT:
        if step.with_faults:
            olt.faults(*HURRIED, *step.with_faults)
        made = session.profile(step)
        olt.faults(*HURRIED)
        counts[step] = {call: count for call, count in sorted(made.items()) if is_the_daemons(call) and call[1] in tally.wanted}
    session.settle()

    def fail(step, call, nth):
        thread, op = call
        fault = Fault(op, nth, thread)

        def body():
            answers = session.harmed(step, fault)
            if answers is None:
                return None
            unharmed, (text, _) = answers
            wanted = required_answer(step, op) if thread == "main" and not step.with_faults else None
            if wanted is not None and text != wanted:
                raise Broken(f"it says {text!r}, not {wanted!r}")
            session.check(fault)
            session.works(step, unharmed)
            if wanted:
                return "told in the required words"
            return "nothing is to be seen of it" if numbers_aside(text) == numbers_aside(unharmed[0]) else "another answer"

        return try_fault(session, tally, fault, step, body)

    for call in sorted({call for made in counts.values() for call in made}):
        steps = [step for step in SCRIPT if call in counts[step] and not waits_for_itself(call, counts[step])]
        if how.short:
            chance.shuffle(steps)
            any(fail(step, call, 1) for step in steps)  # a line may make a call only in certain states
            if chance.random() < SHORT_LATER:
                fail(steps[-1], call, chance.choice((2, chance.randint(3, 6))))
            continue
        done = set()
        for step in steps:
            for nth in places_of(counts[step][call], chance):
                fail(step, call, nth)
                done.add(min(nth, 3))
        for nth in {2, 3} - done:  # by the same line several times
            fail(chance.choice(steps), call, nth if nth == 2 else chance.randint(3, 6))


def sessions(how, chance, tally):
    """Sessions that come and go, and a daemon's first look at the records."""
    olt = how.boxes.make()
    session = FaultSession(olt)
    first, shown = "DIAG Msg: vty connect to database failed!\n", "get share memory failed : Input/output error\n"

    def connect(fault):
        said = len(olt.stdout())
        mark = session.mark()
        olt.faults(*HURRIED, fault.line())
        for _ in range(fault.nth):
            if olt.run("show version")[1] != 0:
                raise Broken("show version fails")
        wait_until(lambda: session.made(mark, fault), "the session is gone")
        if fault.op == "db_connect_init_with_vty" and olt.stdout()[said:] != first:
            raise Broken(f"it says {olt.stdout()[said:]!r}, not {first!r}")
        session.check(fault)
        return "told in the required words" if fault.op == "db_connect_init_with_vty" else "nothing is to be seen of it"

    for op in ("db_connect_init_with_vty", "db_disconnect_free_with_vty"):
        for nth in (1, 2, chance.randint(3, 6)):
            if op in tally.wanted:
                fault = Fault(op, nth)
                try_fault(session, tally, fault, "a session", lambda fault=fault: connect(fault))

    def attach(step, fault):
        session.restart()
        answers = session.harmed(step, fault, first=False)
        if answers is None:
            return None
        if answers[1] != (shown, 0):
            raise Broken(f"it says {answers[1]}, not {shown!r}")
        session.check(fault)
        session.works(step, ("", 0))
        return "told in the required words"

    attaching = [Step("config", line) for line in ("clear alarm-log", "save alarm-log flash", "show alarm-log level emerg",
                                                   "show alarm-log head 1", "show alarm-log tail 1")]
    if "tq_alarm_log_get_shm_pointer" in tally.wanted:
        for step in attaching[:1] if how.short else attaching:
            fault = Fault("tq_alarm_log_get_shm_pointer", 1)
            try_fault(session, tally, fault, step, lambda step=step, fault=fault: attach(step, fault))


def watch(olt):
    """Has the threshold monitor look at everything, and find that it goes up and down."""
    with olt.vty() as session:
        for line in ("temp-high enable 40 35", "temp-low enable 10 20", "cpu-usage-high enable 0 0", "mem-usage-high enable 0 0"):
            session.run(f"alarm-log threshold {line}")
    for node in ("gpon 0/1", "xgpon 0/4"):
        answer = olt.run("alarm-log threshold pon-temp-high enable 20 10", node)
        assert answer == ("", 0), answer


def monitors(how, chance, tally):
    """The monitors, and the passes of the thresholds."""
    olt = how.boxes.make()
    olt.populate()
    session = FaultSession(olt, env={"CALL_SHIM_TIMER": "alarm_log_threshold_monitor=20"}, prepare=watch)
    stirs = itertools.cycle([(200, 3, "add@/devices/usb1"), (700, 1, "remove@/devices/usb1"), (50, 7, "add@/devices/usb1")])

    def stir():
        tenths, power, event = next(stirs)
        olt.boardctl("temp", "set", tenths)
        olt.boardctl("power", power)
        olt.boardctl("bus", "send", 0)  # all monitors are to work
        send(olt, event)
        time.sleep(0.05)

    def made(mark, thread):
        return Counter(call.op for call in session.calls(mark, thread))

    def stir_until(condition, what):
        end = time.monotonic() + STIR_S
        while not condition():
            if time.monotonic() > end:
                raise Broken(f"{what} within {STIR_S} s")
            stir()

    threads = ("main", "fan_monitor", "power_monitor", "usb_monitor")
    mark = session.mark()
    for _ in range(20):
        stir()
    calls = {thread: sorted(set(made(mark, thread)) & tally.wanted) for thread in threads}

    def fail(thread, op, nth):
        fault = Fault(op, nth, thread)

        def body():
            mark = session.mark()
            olt.faults(*HURRIED, fault.line())
            stir_until(lambda: made(mark, thread)[op] >= nth, "the call is made")
            session.check(fault)
            mark = session.mark()
            stir_until(lambda: made(mark, thread)[op] > 0, "the call is made again")
            return "the monitor goes on"

        try_fault(session, tally, fault, thread, body)

    for thread in threads:
        for op in calls[thread]:
            if how.short and thread == "main" and op in tally.failed:
                continue
            for nth in [chance.randint(1, 3)] if how.short else [1, 2, chance.randint(3, 6)]:
                fail(thread, op, nth)
