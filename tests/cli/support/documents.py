# SPDX-License-Identifier: GPL-2.0-or-later
"""Command lines of a document and the output that it shows for them.

A block indented by four blanks whose lines begin with "$ " is such a session:

    $ COMMAND                a line for the shell; it goes on after a backslash at its end and to the end of a "here document"
    what it prints           until the next "$ ", or the end of the block

In what is shown "..." alone on a line stands for any lines, and within a line for any text; a date with a time stands for
any.  "$ sleep N", or "sleep N; " before a command, is what a reader waits for: the command behind it is repeated until it
shows what the document has.
"""
import re

INDENT = "    "
WAIT = re.compile(r"sleep \d+(?:; |$)")
HERE = re.compile(r"<<'?(\w+)'?")
TIME = r"\d{4}[-/]\d\d[-/]\d\d[ T,]\d\d:\d\d:\d\d(?:\.\d+)?"
MARK = re.compile(rf"(\.\.\.|{TIME})")


class Step:
    """A command, what it shows, whether the reader waits before it, and its line in the document."""

    def __init__(self, command, line):
        self.command, self.line = command, line
        self.expected = []
        self.waits = False

    def __repr__(self):
        return f"line {self.line}: {self.command}"

    def read_on(self, lines):
        """Takes what belongs to the command from the lines behind its first."""
        while self.command.endswith("\\"):
            self.command += "\n" + next(lines)
        here = HERE.search(self.command)
        while here and not self.command.endswith("\n" + here[1]):
            self.command += "\n" + next(lines)


def blocks(text):
    """The indented blocks, as lists of (line number, line without its indentation)."""
    block = []
    for number, line in enumerate([*text.splitlines(), "end"], 1):
        if line.startswith(INDENT) or (block and not line):
            block.append((number, line[len(INDENT) :]))
        elif block:
            yield block
            block = []


def steps(text):
    """The commands of a document in their order."""
    found = []
    for block in blocks(text):
        step, lines = None, iter(block)
        for number, line in lines:
            if line.startswith("$ "):
                step = Step(line[2:], number)
                found.append(step)
                step.read_on(line for _, line in lines)
            elif step:
                step.expected.append(line)
        while step and step.expected and not step.expected[-1]:
            step.expected.pop()
    return list(waiting(found))


def waiting(found):
    """The same without what only waits."""
    waits = False
    for step in found:
        waited = WAIT.match(step.command)
        if waited:
            step.command = step.command[waited.end() :]
            waits = True
        if step.command:
            step.waits, waits = waits, False
            yield step


def matches(shown, expected):
    """Whether the lines shown are the lines that the document has."""
    pattern = ""
    for line in expected:
        if line == "...":
            pattern += r"(?:.*\n)*"
            continue
        parts = MARK.split(line.rstrip())
        kinds = [".*" if part == "..." else TIME if MARK.fullmatch(part) else re.escape(part) for part in parts]
        pattern += "".join(kinds) + r"[ \r]*\n"
    return re.fullmatch(pattern, "".join(line + "\n" for line in shown)) is not None
