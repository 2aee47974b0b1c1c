# SPDX-License-Identifier: GPL-2.0-or-later
"""The daemon is killed at random moments, whatever is under way.

Other processes file alarms all the time; sessions change all alarms at once, file alarms, write the startup configuration,
save the alarm log to flash, or program the CPLD. Some kills meet a daemon that is just starting. The others go on and the
next start answers; no record that was acknowledged is missing that the store has room for; the startup configuration and
its backup are whole, of before or of after a `write`, with all or none of what was changed at once, and the start after
does what they say; of the flash log at most the last line is cut, and the next save makes it whole; semaphores are free,
and no file, descriptor or shared memory is left over."""
import contextlib
import itertools
import random
import re
import signal
import statistics
import time

import kill_work as work
from jtag import put_in_tmp
from kill_ledger import Ledger
from kill_remains import descriptors, more, remains
from olt import wait_until

TARGETS = ["diagd", "diagsh", "boardsim", "boardctl", "gpio_sim"]
WRITERS, CLIENTS = 4, 2
SHORT_KILLS, LONG_KILLS = 10, 500
UPGRADE_EVERY, START_EVERY = 10, 4  # of so many kills one meets it
LONGEST_WORK_S, LONGEST_START_S, LONGEST_UPGRADE_S = 0.3, 0.5, 2.3
IN_SAVE_SHARE = 0.5  # of the kills while the flash log is saved: they wait until it is being written
GO_ON_S = 2.0  # until the other processes have
START_S = 2.0  # until a daemon answers, or twice as long as an unharmed one takes; judged in the long form alone
UNHARMED_EVERY = 10  # after so many kills there is a start to compare with
TEMPERATURE = re.compile(r"^fan temperature (\d+)$", re.M)
STARTED_WITHOUT = re.compile(r"started without .*")
DATE = re.compile(r"\d{4}/\d\d/\d\d \d\d:\d\d:\d\d")
SETTINGS = "show alarm-log all configuration"


def options(parser):
    parser.add_argument("--kills", type=int, help=f"how many ({LONG_KILLS}, short form {SHORT_KILLS})")
    parser.add_argument("--attached", action="store_true",
                        help="the writers use the database, too, and two plain clients of it come on top; all stay attached")


class Battle:
    def __init__(self, how, report):
        self.chance = random.Random(how.seed)
        self.report = report
        self.attached = how.attached
        self.is_short = how.short
        self.olt = how.boxes.make()
        self.flash_log = self.olt.state / "flash" / "config" / "var" / "alarm_log.log"
        self.ledger = Ledger()
        self.names = (f"w{number}" for number in itertools.count())
        self.writers, self.clients = [], []
        self.unharmed_s = []
        self.start_s = []
        self.go_on_s = []
        self.kills = {"at work": 0, "starting": 0, "programming the CPLD": 0}
        self.answered = {"bulk changes": 0, "records of sessions": 0, "writes": 0, "flash saves": 0}
        self.flash_lines = 0  # of the last save that was whole
        self.cut_short = self.cut = 0
        self.temperature = work.TEMPERATURES[0]

    # --- before the first kill

    def prepare(self):
        """Everything that is to be found again, as an unharmed daemon leaves it."""
        olt = self.olt
        olt.start()
        assert olt.run("alarm-log flash level debug") == ("", 0)
        self.settings = {}  # what a start makes of the alarms, by the text of the startup configuration
        for line in work.BULK_CHANGES:
            for each, answer in ((line, ("", 0)), (f"fan temperature {self.temperature}", ("", 0)), ("write file", work.SAVED)):
                assert olt.run(each) == answer, each
            olt.restart()
            _, text = self.configuration("diagd.conf")
            self.settings[text] = olt.run(SETTINGS)[0]
        assert len(self.settings) == len(set(self.settings.values())) == 2, self.settings
        put_in_tmp(olt, "kill.jed", b"CPLD image " * 100)
        assert olt.run("save alarm-log flash") == ("", 0)

        self.start_unharmed()
        self.send_others()
        self.go_on(self.writers + self.clients)
        self.first_remains, self.first_descriptors = remains(olt), descriptors(self.olt)

    def configuration(self, name):
        """A configuration file: its temperature, None without one, and the rest of its text."""
        text = DATE.sub("DATE", (self.olt.state / "conf" / name).read_text("latin-1"))
        temperature = TEMPERATURE.search(text)
        return temperature and int(temperature[1]), TEMPERATURE.sub("fan temperature N", text)

    def send_others(self):
        self.clients = [work.engine_client(self.others, self.olt, f"client {number}") for number in range(CLIENTS * self.attached)]
        self.writers = [work.Writer(self.others, self.olt, next(self.names), self.attached, self.ledger) for _ in range(WRITERS)]

    def start_unharmed(self):
        assert self.olt.stop() == 0
        self.unharmed_s.append(self.timed_start())

    def timed_start(self):
        begin = time.monotonic()
        self.olt.start()
        return time.monotonic() - begin

    # --- a kill

    def let_work(self, seconds):
        """The others file alarms meanwhile, sometimes more than the store holds."""
        pause = self.chance.choice((0.002, 0.02))
        end = time.monotonic() + seconds
        while time.monotonic() < end:
            for other in self.writers + self.clients:
                other.read()
            time.sleep(pause)

    def kill(self):
        """The daemon's exit status."""
        for writer in self.writers:
            writer.read()  # so that it files the next
        with contextlib.suppress(AssertionError, ProcessLookupError):  # it has just ended by itself
            self.olt.send_signal(signal.SIGKILL)
        status = self.olt.wait_end()
        for writer in self.writers:
            writer.read()  # what comes from now on was filed without the daemon
        return status

    def kill_at_work(self, number):
        own = f"own{number}"
        operators = [work.Operator(self.olt, lines, ledger=self.ledger) for lines in (
            itertools.cycle(work.BULK_CHANGES), work.own_records(own), work.written_configurations(self.temperature), itertools.repeat("save alarm-log flash"))]
        bulk, records, writes, saves = operators
        at_work = self.chance.sample(operators, self.chance.randint(1, len(operators)))
        for operator in at_work:
            operator.start()
        self.let_work(self.chance.uniform(0.01, LONGEST_WORK_S))
        if saves in at_work and self.chance.random() < IN_SAVE_SHARE:
            self.await_save()
        self.kill()
        for operator in at_work:
            operator.join()
            for line, answer in operator.refused[:1]:
                self.report.finding(f"{line} gave {answer}")
        self.ledger.acknowledge(own, len(records.done) - 1, records.since)
        self.possible = work.possible_temperatures(writes, self.temperature)
        done = {"bulk changes": bulk, "records of sessions": records, "flash saves": saves}
        self.answered.update({what: self.answered[what] + len(operator.done) for what, operator in done.items()})
        self.answered["writes"] += writes.done.count("write file")
        self.kills["at work"] += 1

    def await_save(self):
        """Until the flash log is being written, which is soon over."""
        whole, end = self.flash_log.stat().st_size, time.monotonic() + LONGEST_WORK_S
        while not 0 < self.flash_log.stat().st_size < 0.9 * whole and time.monotonic() < end:
            pass

    def kill_at_upgrade(self):
        put_in_tmp(self.olt, "kill.jed", b"CPLD image " * 100)
        operator = work.Operator(self.olt, ["cpld upgrade usb kill.jed"], "diagnose")
        operator.start()
        self.let_work(self.chance.uniform(0.1, LONGEST_UPGRADE_S))
        self.kill()
        operator.join()
        self.kills["programming the CPLD"] += operator.under_way is not None
        self.kills["at work"] += operator.under_way is None

    def kill_at_start(self):
        # Two kills in a row now and then leave of the database what costs the next start 15 s or the defaults.
        if self.is_short:
            assert self.olt.stop() == 0
        else:
            self.kill()
        self.olt.start(wait=False)
        wait_until(lambda: work.has_begun(self.olt), "a daemon begins")
        self.let_work(self.chance.uniform(0, LONGEST_START_S))
        status = self.kill()
        self.report.check(status == -signal.SIGKILL, f"a start ended by itself with {status}: {self.olt.stderr()[-200:]}")
        self.kills["starting"] += 1

    # --- and after it

    def go_on(self, others):
        """Until each has gone on."""
        for other in others:
            other.read()
        begin, waiting = time.monotonic(), others
        while waiting and time.monotonic() < begin + GO_ON_S:
            waiting = [other for other in waiting if not other.read()]
            time.sleep(0.002)
        self.go_on_s.append(time.monotonic() - begin)
        for other in waiting:
            self.report.finding(f"{other.name} does not go on within {GO_ON_S} s, running: {other.running()}")

    def start(self):
        """The next start.  One that fails is tried again once nobody else is there, so that the rest is proved; so is one
        that could not do all."""
        said = len(self.olt.log())
        try:
            self.start_s.append(self.timed_start())
            without = STARTED_WITHOUT.findall(self.olt.log()[said:])
            if not self.report.check(not without, f"a start was not whole: {without}"):
                self.olt.restart()
        except AssertionError as error:
            self.report.finding(f"no start after a kill: {str(error)[:100]} ... {self.olt.stderr()[-300:]}")
            if self.olt.daemon and self.olt.daemon.poll() is None:
                self.olt.kill(signal.SIGKILL)
            self.olt.daemon = self.olt.pid = None
            self.others.close()
            self.olt.start()
            self.send_others()

    def check(self):
        report, olt = self.report, self.olt
        listing, status = olt.run("show alarm-log")
        report.check(status == 0, f"the listing gives {status}: {listing[-200:]}")
        for text in self.ledger.judge(listing):
            report.finding(text)
        temperature, text = self.configuration("diagd.conf")
        report.check(temperature in self.possible, f"the startup configuration has {temperature}, not one of {self.possible}")
        if report.check(text in self.settings, f"the startup configuration is not whole: {text!r}"):
            settings = olt.run(SETTINGS)[0]
            report.check(settings == self.settings[text], f"a start made this of {text!r}: {settings}")
        _, text = self.configuration("diagd.conf.sav")
        report.check(text in self.settings, f"the backup is not whole: {text!r}")
        self.temperature = temperature
        self.possible = {temperature}
        self.check_flash()
        for name in ("board", "alarm"):
            olt.wait_free(name)
        for name, before, after in more(self.first_remains, remains(olt)):
            report.finding(f"left behind: {name}, {after} instead of {before}")
        with contextlib.suppress(AssertionError):  # a session may be closed a little later
            wait_until(lambda: not more(self.first_descriptors, descriptors(olt)), "no more descriptors", GO_ON_S)
        for name, before, after in more(self.first_descriptors, descriptors(olt)):
            report.finding(f"descriptors of {name}: {after} instead of {before}")

    def check_flash(self):
        cut, count = work.cut_lines(self.flash_log.read_text("latin-1"))
        self.cut_short += bool(cut) or count < self.flash_lines
        self.cut += bool(cut)
        self.report.check(cut in ([], [count - 1]), f"of {count} lines of the flash log these are cut: {cut[:5]}")
        answer = self.olt.run("save alarm-log flash")
        cut, self.flash_lines = work.cut_lines(self.flash_log.read_text("latin-1"))
        self.report.check(answer == ("", 0) and not cut and self.flash_lines,
                          f"saving gives {answer}, {self.flash_lines} lines, cut: {cut[:5]}")

    def fight(self, kills):
        with contextlib.ExitStack() as self.others:
            self.prepare()
            self.possible = {self.temperature}
            said_s = 0
            for number in range(kills):
                if self.report.spent_s() > said_s:
                    self.report.say(f"{number} of {kills} kills, {len(self.report.findings)} findings")
                    said_s = self.report.spent_s() + 30
                if number % UPGRADE_EVERY == UPGRADE_EVERY - 1:
                    self.kill_at_upgrade()
                elif number % START_EVERY == START_EVERY - 1:
                    self.kill_at_start()
                else:
                    self.kill_at_work(number)
                self.go_on(self.writers)
                self.start()
                if self.clients:
                    self.go_on(self.clients)
                self.check()
                if number % UNHARMED_EVERY == UNHARMED_EVERY - 1:
                    self.start_unharmed()


def seconds(measured):
    return f"{statistics.median(measured):.2f} s, {max(measured):.2f} s"


def run(how, report):
    kills = how.kills or (SHORT_KILLS if how.short else LONG_KILLS)
    battle = Battle(how, report)
    battle.fight(kills)
    for what, count in battle.kills.items():
        report.figure(f"kills of daemons {what}", count)
    for what, count in battle.answered.items():
        report.figure(f"answered before a kill: {what}", count)
    programmed = battle.olt.state / "board" / "jtag.log"
    begun = programmed.read_text().count(" begins, ") if programmed.exists() else 0
    report.figure("runs of the programmer", begun)
    report.figure("records acknowledged", battle.ledger.count)
    report.figure("last record of a session or process that had to be listed, and was", battle.ledger.found)
    report.figure("start of an unharmed daemon: median, worst", seconds(battle.unharmed_s))
    if battle.start_s:
        # A busy machine is slow with every start; one that waits for a dead daemon's lock takes 15 s more.
        bound = max(START_S, 2 * max(battle.unharmed_s))
        report.figure("start after a kill: median, worst", seconds(battle.start_s), f"at most {bound:.1f} s",
                      how.short or max(battle.start_s) <= bound)
    report.figure("until the other processes go on: median, worst", seconds(battle.go_on_s), f"at most {GO_ON_S:.0f} s")
    report.figure("flash logs cut short, of these in a line", f"{battle.cut_short}, {battle.cut}", "whole with the next save")
    report.figure("kills that left something wrong", len(report.findings), "0", report.holds)
