# SPDX-License-Identifier: GPL-2.0-or-later
"""The daemon's call trace: what was called, in which order, by which thread."""

import re
from dataclasses import dataclass

_LINE = re.compile(r"(\d+) (\d+) (\S+) (\S+)(?: (.*))? -> (.*)")


@dataclass(frozen=True)
class Call:
    time_ms: int
    thread: str
    op: str
    arguments: str
    result: str

    def __str__(self):
        return f"{self.op} {self.arguments} -> {self.result}"


def read_trace(path):
    """The calls of a trace file, in the order they returned."""
    calls = []
    with open(path, encoding="latin-1") as file:
        for line in file:
            match = _LINE.fullmatch(line.rstrip("\n"))
            if match:  # the last line may be half written
                _, time_ms, thread, op, arguments, result = match.groups()
                calls.append(Call(int(time_ms), thread, op, arguments or "", result))
    return calls


def in_order(calls, *patterns):
    """The first calls that match the patterns one after another; fails naming the pattern not found."""
    found, at = [], 0
    for pattern in patterns:
        while at < len(calls) and not re.match(pattern, str(calls[at])):
            at += 1
        assert at < len(calls), f"no call {pattern!r} after {found[-1] if found else 'the start'}"
        found.append(calls[at])
        at += 1
    return found
