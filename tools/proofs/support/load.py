# SPDX-License-Identifier: GPL-2.0-or-later
"""Operators at work: several processes whose sessions come, run commands of all nodes, and go."""
import multiprocessing
import random
import re
import time
import traceback

from command_table import COMMANDS, CONFIG, DIAGNOSE, GPON, XGPON
from every_command import REFUSED, lines_of
from silent_servers import reachable
from syntax import typed
from vty import SUCCESS

NODES = {CONFIG: ["config"], DIAGNOSE: ["diagnose"], GPON: ["gpon 0/1", "gpon 0/3"], XGPON: ["xgpon 0/1", "xgpon 0/4"]}
# What takes the box down, the clock or the CPLD's logic away, makes the log talk, or leads elsewhere.
LEFT_OUT = re.compile(r"reboot|reload|pon reset|system gpio reset|cpld (upgrade|restore|erase)|time set|(no )?debug|"
                      r"interface |show sys cpu-usage|show top")
WORKERS = 4
TELNET_SHARE = 0.1
DAILY_MS = 0.5  # what a command may take and still come as often as the others


def own_lines(olt):
    """Lines of the daemon's own commands as (node, line, weight): one that takes long comes less often."""
    found = []
    for command in COMMANDS:
        if command.node not in NODES or LEFT_OUT.match(command.syntax):
            continue
        lines = [reachable(typed(words)) for words in lines_of(command.syntax)]
        for node in NODES[command.node]:
            with olt.vty(node) as session:
                begin = time.monotonic()
                session.run(lines[0])
                ms = (time.monotonic() - begin) * 1000
            found += [(node, line, min(1.0, DAILY_MS / ms) / len(lines)) for line in lines]
    return found


class Load:
    def __init__(self, olt, lines, count, seed):
        """lines: as own_lines gives them.  count: of commands, over all workers."""
        self._olt = olt
        self._by_node = {}
        for node, line, weight in lines:
            texts, weights = self._by_node.setdefault(node, ([], []))
            texts.append(line)
            weights.append(weight)
        self._count = count
        self._seed = seed
        # Counters of one writer each; several would need a lock.
        self._done = [multiprocessing.Value("l", 0, lock=False) for _ in range(WORKERS)]
        self._sessions = [multiprocessing.Value("l", 0, lock=False) for _ in range(WORKERS)]
        self._complaints = multiprocessing.SimpleQueue()
        self._workers = [multiprocessing.Process(target=self._work, args=(number,), daemon=True) for number in range(WORKERS)]

    def start(self):
        for worker in self._workers:
            worker.start()

    def running(self):
        return any(worker.is_alive() for worker in self._workers)

    def done(self):
        return sum(counter.value for counter in self._done)

    def sessions(self):
        return sum(counter.value for counter in self._sessions)

    def finish(self):
        for worker in self._workers:
            worker.join()

    def complaints(self):
        found = []
        while not self._complaints.empty():
            found.append(self._complaints.get())
        return found

    def _work(self, number):
        try:
            chance = random.Random(self._seed * WORKERS + number)
            while self.done() < self._count:
                if chance.random() < TELNET_SHARE:
                    self._telnet_session(number)
                else:
                    self._session(number, chance)
                self._sessions[number].value += 1
        except Exception:  # told by whoever watches
            self._complaints.put(f"worker {number}: {traceback.format_exc()}")

    def _session(self, number, chance):
        node = chance.choice(list(self._by_node))
        lines, weights = self._by_node[node]
        with self._olt.vty(node) as session:
            for line in chance.choices(lines, weights, k=chance.randint(20, 200)):
                text, status = session.run(line)
                self._done[number].value += 1
                if status != SUCCESS and not any(re.search(pattern, line) for pattern, _ in REFUSED):
                    self._complaints.put(f"{node}: {line}: {status}, {text[:200]!r}")

    def _telnet_session(self, number):
        with self._olt.telnet() as session:
            for line in ("enable", "show version", "show alarm-log tail 5", "show fan", "exit"):
                session.run(line) if line != "exit" else session.send("exit\r")
                self._done[number].value += 1
