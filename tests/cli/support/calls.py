# SPDX-License-Identifier: GPL-2.0-or-later
"""The daemon's call trace: what was called, in which order, by which thread."""

import functools
import re
import subprocess
from dataclasses import dataclass

from project import BUILD, PROJECT

_LINE = re.compile(r"(\d+) (\d+) (\S+) (\S+)(?: (.*))? -> (.*)")
_ARGUMENT = re.compile(r'(\w+)=(?:"((?:[^"\\]|\\.)*)"|(\S*))')
_ESCAPE = re.compile(r"\\(x[0-9a-f]{2}|.)")
_CONTROL = {"r": "\r", "n": "\n"}


@dataclass(frozen=True)
class Call:
    time_ms: int
    thread: str
    op: str
    arguments: str
    result: str

    def __str__(self):
        return f"{self.op} {self.arguments} -> {self.result}"

    @property
    def values(self):
        """The arguments by name, as text; quoted ones as they were before they were written down."""
        return {
            name: bare if quoted is None else _ESCAPE.sub(_unescape, quoted)
            for name, quoted, bare in (match.groups() for match in _ARGUMENT.finditer(self.arguments))
        }


def _unescape(match):
    text = match[1]
    if len(text) == 3:
        return chr(int(text[1:], 16))
    return _CONTROL.get(text, text)


def read_trace(path, start=0, end=None, only=""):
    """The calls of a trace file behind its first `start` bytes, up to byte `end`, in the order they returned.
    `only` is a pattern of the lines that matter, for a trace that is long."""
    matters = re.compile(only)
    calls = []
    with open(path, "rb") as file:
        # The file's size may have been looked at in the middle of a line, which then belongs to what came before.
        file.seek(max(start - 1, 0))
        head = file.read(1) if start else b"\n"
        text = file.read(-1 if end is None else end - start).decode("latin-1")
    *lines, _half_written = text.split("\n")
    if head != b"\n":
        lines = lines[1:]
    for line in lines:
        if matters.search(line):
            match = _LINE.fullmatch(line)
            assert match, f"a line of the trace that is none: {line!r}"
            _, time_ms, thread, op, arguments, result = match.groups()
            calls.append(Call(int(time_ms), thread, op, arguments or "", result))
    return calls


@functools.cache
def traced_operations():
    """Names of all calls that can be in a trace: what the platform's libraries export, and what the shim records."""
    libraries = sorted((BUILD / "lib").glob("lib*.so"))
    exports = subprocess.run(["nm", "-D", "--defined-only", *libraries], capture_output=True, text=True, check=True)
    shim = "".join(source.read_text() for source in (PROJECT / "tests" / "shim").glob("calls_*.cpp"))
    return {*re.findall(r"^[0-9a-f]+ T (\w+)$", exports.stdout, re.M), *re.findall(r'recorded<\w+>\(\s*"(\w+)"', shim)}


@functools.cache
def require_traced(pattern):
    """Fails when an alternative of the pattern names no operation that can be in a trace: one that was renamed would
    never be found, and never fail."""
    for alternative in re.split(r"\|(?![^(]*\))", pattern):  # not those inside a group
        known = any(re.fullmatch(alternative, name) for name in traced_operations())
        assert known, f"no call is named {alternative!r}"


def of(calls, pattern):
    """The calls of these operations."""
    require_traced(pattern)
    return [call for call in calls if re.fullmatch(pattern, call.op)]


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
