# SPDX-License-Identifier: GPL-2.0-or-later
"""Typing at a daemon: lines made from its own grammar, spoilt in many ways, and keys on its terminal port."""
import random
import re
import socket
from pathlib import Path

from every_command import NODES, NOT_SANITIZED, commands, words_for
from footprint import resident_kb
from olt import BUILD, SANITIZER_REPORTS, wait_until
from syntax import examples, typed
from vty import SUCCESS, SessionClosed

CANARY = "/tmp/typed-and-executed"
SESSION_LINES = 25
CHECK_LINES = 250
GROWTH_KB = 64 * 1024  # what the daemon may grow by, whatever is typed
ALL_CONTROLS = "".join(map(chr, [*range(1, 32), 127, *range(128, 256)]))

# What takes seconds by itself, or takes the box down, its log away or its clock back: one in so many comes through.
RARE = re.compile(r"reboot|reload|pon reset|system gpio reset|cpld (upgrade|restore|erase)|time set|show sys cpu-usage|"
                  r"show top|show task|terminal monitor|tftp|ftp|ping|clear thread")
RARELY = 200

SHELL = ["$(touch {})", "`touch {}`", ";touch {}", "|touch {}", "&touch {}&", "'\"$(touch {})\"'", ">{}", "a;touch {};#"]
ODD = ["", "?", "!", "#", "%s%n%n", "%99999d", "-1", "--", "-h", "--help", "..", "../../../etc/passwd", "/dev/zero", "/dev/full",
       "0", "00", "0x", "0xffffffffffffffffff", "4294967296", "-2147483649", "9223372036854775808", "1e999", "nan", "-inf",
       "+-.", "1.2.3.4/33", "255.255.255.255", "::", "fe80::1%lo", "0/0", "0/4294967297", "-1/-1", "1/", "(", ")", "[", "]", "{",
       "}", "<", ">", "\\", "\\\\", "*", ".*", "[[:alpha:]", "\xff\xfe", "\xc3", "\xe2\x82", "\x1b[2J", "\x7f", "a" * 79,
       "a" * 80, "a" * 320, "a" * 2048, "/" * 255, "x y", "|", "| include", "| include [", "| include .", "$HOME", "~"]


class Typist:
    """Makes lines of a grammar, by node."""

    def __init__(self, grammar, seed):
        self._chance = random.Random(seed)
        self._grammar = grammar
        self._words = sorted({word for lines in grammar.values() for line in lines for word in line.split() if word.isascii()})

    def node(self):
        return self._chance.choice(sorted(self._grammar))

    def line(self, node):
        chance = self._chance
        while True:
            syntax = chance.choice(self._grammar[node])
            if not RARE.search(syntax) or chance.randrange(RARELY) == 0:
                break
        line = typed(chance.choice(examples(syntax, lambda placeholder: [self._word(syntax, placeholder)])))
        if chance.random() < 0.3:
            line = self._spoilt(line)
        if chance.random() < 0.02:
            line += " " + chance.choice(["| include a", "| include [", "|", "| more", "?"])
        # The socket ends a line at a zero byte, the terminal at these; neither is part of one.
        return line.replace("\0", "").replace("\n", "").replace("\r", "")

    def _word(self, syntax, placeholder):
        kind = self._chance.random()
        if kind < 0.6:
            return self._chance.choice(words_for(syntax, placeholder))
        if kind < 0.7:
            return self._chance.choice(SHELL).format(CANARY).replace(" ", self._chance.choice(["\t", "${IFS}", " "]))
        if kind < 0.9:
            return self._chance.choice(ODD)
        return "".join(self._chance.choice(ALL_CONTROLS + "aZ09 _-./:") for _ in range(self._chance.randint(1, 40)))

    def _spoilt(self, line):
        chance, words = self._chance, line.split(" ")
        place = chance.randrange(len(words))
        how = chance.randrange(7)
        if how == 0:
            del words[place]
        elif how == 1:
            words.insert(place, chance.choice(self._words))
        elif how == 2:
            words[place] = words[place][: chance.randint(0, 3)]
        elif how == 3:
            words[place] *= chance.choice([2, 10, 400])
        elif how == 4:
            words += [chance.choice(ODD)] * chance.choice([1, 5, 100])
        elif how == 5:
            words[place] = chance.choice(SHELL).format(CANARY)
        else:
            at = chance.randint(0, len(line))
            return line[:at] + chance.choice(ALL_CONTROLS) + line[at:]
        return " ".join(words)

    def keys(self):
        """What somebody presses on a terminal: lines, keys of the line editor, telnet's own commands, anything."""
        chance, pressed = self._chance, ""
        for _ in range(chance.randint(1, 30)):
            pressed += chance.choice([self.line(self.node())[:200], "\t", "?", "\r", "\n", "\x03", "\x04", "\x01", "\x05", "\x0b", "\x15",
                                      "\x17", "\x10", "\x0e", "\x08", "\x7f", "\x1b[A", "\x1b[B", "\x1bb", "\x1bd", "\xff\xfa\x1f\x00\x50\x00\x18\xff\xf0",
                                      "\xff\xfb\x01", "\xff\xff", "\xff\xf4", "\0", "\xff\xfa" + "\x1f" * chance.randint(0, 600), " "])
        return pressed


class Typing:
    def __init__(self, how, report):
        self._how = how
        self._report = report
        self._olt = how.boxes.make()
        self._olt.start()
        self._olt.populate()
        self._grammar = commands(self._olt)
        self._last = []  # the lines of the session at work

    def run(self, count):
        olt, report = self._olt, self._report
        typist = Typist(self._grammar, self._how.seed)
        memory_kb, files = resident_kb(olt.pid), len(olt.settled_fds())
        done, sessions, most_kb = 0, 0, memory_kb
        while done < count and report.holds:
            done += self._session(typist, min(SESSION_LINES, count - done))
            sessions += 1
            if sessions % 5 == 0:
                self._telnet(typist, None if sessions % 2 else "secret")
            if done // CHECK_LINES != (done - SESSION_LINES) // CHECK_LINES:
                most_kb = max(most_kb, resident_kb(olt.pid))
                self._look_on()
            if done % 10_000 < SESSION_LINES:
                report.say(f"{done} lines, {most_kb} kB")
        self._look_on()
        report.figure("lines typed", done)
        if olt.daemon and olt.daemon.poll() is None:
            grown = most_kb - memory_kb
            bound = GROWTH_KB * (1 if BUILD.name == "release" else 8)
            report.figure("memory that the daemon took more", f"{grown} kB", f"at most {bound} kB", grown <= bound)
            left = len(olt.settled_fds()) - files
            # Log files that were named, and the reset line, stay open on purpose.
            report.figure("descriptors more than before", left, "at most 10", left <= 10)

    def _session(self, typist, count):
        """One session in one node; how many lines were typed."""
        node = typist.node()
        start, way, _ = NODES[node]
        self._last = [f"in {node}:"]
        try:
            with self._olt.vty(start) as session:
                if way:
                    session.run(way)
                for number in range(count):
                    line = typist.line(node)
                    if BUILD.name == "asan" and any(re.search(pattern, line) for pattern, _ in NOT_SANITIZED):
                        continue
                    self._last.append(line)
                    session.run(line)
        except (SessionClosed, ConnectionError):  # some lines end a session
            self._report.check(self._olt.daemon.poll() is None, f"the daemon ended with {self._olt.daemon.returncode}: {self._told()}")
        except (AssertionError, TimeoutError) as error:
            self._report.finding(f"{type(error).__name__} {error}: {self._told()}")
        return count

    def _telnet(self, typist, password):
        self._last = ["on a terminal:"]
        try:
            with self._olt.telnet(None) as session:
                for keys in ([password + "\r"] if password else []) + [typist.keys() for _ in range(3)]:
                    self._last.append(keys)
                    session.send(keys)
                session.socket.shutdown(socket.SHUT_WR)
                session.socket.settimeout(10)
                while session.socket.recv(65536):
                    pass
        except (OSError, SessionClosed):
            pass  # it may close as it likes

    def _told(self):
        """The last lines, and what the daemon said of it."""
        lines = "\n".join(f"    {line!r}" for line in self._last[-30:])
        return f"\n{lines}\n{self._olt.stderr()[-4000:]}"

    def _look_on(self):
        olt, report = self._olt, self._report
        if not report.check(olt.daemon.poll() is None, f"the daemon ended with {olt.daemon.returncode}: {self._told()}"):
            return
        text, status = olt.run("show version")
        report.check(status == SUCCESS and text, f"show version is answered, not {status} {text!r}: {self._told()}")
        for name in ("board", "alarm"):
            wait_until(lambda name=name: olt.sem_value(name) == 1, f"the {name} semaphore is given back")
        box = olt.holder.pid
        canary = Path(f"/proc/{box}/root{CANARY}")
        report.check(not canary.exists(), f"something that was typed was executed: {self._told()}")
        said = [line for line in olt.stderr().splitlines() if any(word in line for word in SANITIZER_REPORTS)]
        report.check(not said, f"{said}: {self._told()}")
