# SPDX-License-Identifier: GPL-2.0-or-later
"""A program on a terminal of its own, and what a person sees there."""

import copy
import fcntl
import os
import pty
import select
import struct
import subprocess
import termios
import time

import pyte
from vty import DEADLINE_S

HOME, END, DELETE, LEFT, RIGHT, UP = (b"\x1b" + key for key in (b"[H", b"[F", b"[3~", b"[D", b"[C", b"[A"))
WORD_LEFT, WORD_RIGHT = b"\x1b[1;5D", b"\x1b[1;5C"


class Screen(pyte.Screen):
    """With the other screen of an xterm, which programs show a view on."""

    OTHER = 1049
    own = None

    def set_mode(self, *modes, **how):
        if how.get("private") and self.OTHER in modes:
            self.own = copy.deepcopy(self.buffer), copy.copy(self.cursor)
        super().set_mode(*modes, **how)

    def reset_mode(self, *modes, **how):
        super().reset_mode(*modes, **how)
        if how.get("private") and self.OTHER in modes and self.own:
            self.buffer, self.cursor = self.own
            self.own = None


class Terminal:
    """The screen is that of an xterm; the terminal's own settings are watched."""

    def __init__(self, command, columns=80, rows=24):
        self.master, self.slave = pty.openpty()
        self.screen = Screen(columns, rows)
        self.stream = pyte.ByteStream(self.screen)
        self.resize(rows, columns)
        self.before = termios.tcgetattr(self.slave)
        self.process = subprocess.Popen(
            command, stdin=self.slave, stdout=self.slave, stderr=self.slave, start_new_session=True,
            preexec_fn=lambda: fcntl.ioctl(0, termios.TIOCSCTTY, 0), env={**os.environ, "TERM": "xterm"},
        )

    def resize(self, rows, columns):
        fcntl.ioctl(self.slave, termios.TIOCSWINSZ, struct.pack("HHHH", rows, columns, 0, 0))
        self.screen.resize(rows, columns)

    def type(self, keys):
        os.write(self.master, keys)

    @property
    def rows(self):
        """The rows of the screen without blanks at their ends, and without empty rows at its end."""
        rows = [row.rstrip() for row in self.screen.display]
        while rows and not rows[-1]:
            rows.pop()
        return rows

    @property
    def cursor(self):
        """Row and column, from 0."""
        return self.screen.cursor.y, self.screen.cursor.x

    def wait(self, seen, what):
        """Until seen(rows) is true; returns the rows."""
        deadline = time.monotonic() + DEADLINE_S
        while not seen(self.rows):
            ready, _, _ = select.select([self.master], [], [], max(deadline - time.monotonic(), 0))
            shown = "\n".join(self.rows)
            assert ready, f"{what} did not come; the screen is\n{shown}\nwith the cursor at {self.cursor}"
            self.stream.feed(os.read(self.master, 65536))
        return self.rows

    def wait_line(self, line):
        """Until the cursor is behind this text, which begins its row; the last row on the screen."""

        def is_there(rows):
            row, column = self.cursor
            last = self.screen.display[row] if row < self.screen.lines else ""  # not after the window shrank
            return len(rows) <= row + 1 and last[:column] == line and column == len(line)

        return self.wait(is_there, repr(line))

    def run(self, command, prompt):
        """Types a command at a prompt, and waits for the prompt after it."""
        self.type(command.encode())
        self.wait(lambda rows: rows[-1].endswith(command[-10:].rstrip()), repr(command))
        self.type(b"\r")
        return self.wait_line(prompt)

    def end(self):
        """Exit status, and whether the terminal is as it was."""
        deadline = time.monotonic() + DEADLINE_S
        while self.process.poll() is None:  # it may still write
            ready, _, _ = select.select([self.master], [], [], 0.05)
            if ready:
                self.stream.feed(os.read(self.master, 65536))
            assert time.monotonic() < deadline, "\n".join(self.rows)
        while select.select([self.master], [], [], 0)[0]:
            self.stream.feed(os.read(self.master, 65536))
        return self.process.returncode, termios.tcgetattr(self.slave) == self.before

    def close(self):
        if self.process.poll() is None:
            self.process.kill()
            self.process.wait()
        os.close(self.master)
        os.close(self.slave)

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.close()
