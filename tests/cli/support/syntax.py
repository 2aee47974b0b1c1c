# SPDX-License-Identifier: GPL-2.0-or-later
"""The command syntax of libfrr, read so as to type commands: lines in which each alternative comes at least once."""

import itertools
import re
from dataclasses import dataclass

TOKEN = re.compile(
    r"""\s*(?:
    (?P<placeholder>A\.B\.C\.D(?:/M)?|X:X::X:X(?:/M)?|X:X:X:X:X:X(?:/M)?|S/P|\(-?\d+[ ]?-[ ]?-?\d+\)
                   |[A-Z][-_A-Z:0-9]+(?![-+_a-zA-Z0-9*]))
    |(?P<word>[-+]?[a-zA-Z0-9*][-+_a-zA-Z0-9*]*)
    |(?P<name>\$[-+_a-zA-Z0-9*]+)
    |(?P<repeat>\.\.\.)
    |(?P<mark>!\[|[][<>{}|])
    )""",
    re.VERBOSE,
)
CLOSING = {"<": ">", "[": "]", "![": "]", "{": "}"}


@dataclass(frozen=True)
class Word:
    """A word of a line.  text: as typed; shown: what help shows in its place."""

    text: str
    shown: str
    keyword: bool


def tokens(syntax):
    """The tokens of a syntax line as pairs of kind and text."""
    found, place = [], 0
    syntax = syntax.rstrip()
    while place < len(syntax):
        match = TOKEN.match(syntax, place)
        assert match, f"{syntax!r} at {place}"
        found.append((match.lastgroup, match[match.lastgroup]))
        place = match.end()
    return found


class _Reader:
    """Gives each part of the syntax as its variants: the lists of words that stand for it."""

    def __init__(self, syntax, values):
        self.tokens = tokens(syntax)
        self.place = 0
        self.values = values

    def _take(self):
        self.place += 1
        return self.tokens[self.place - 1]

    def _at(self, *texts):
        return self.place == len(self.tokens) or self.tokens[self.place][1] in texts

    def sequence(self):
        parts = []
        while not self._at("|", ">", "]", "}"):
            kind, text = self._take()
            if kind == "word":
                parts.append([[Word(text, text, True)]])
            elif kind == "placeholder":
                parts.append([[Word(value, text, False)] for value in self.values(text)])
            elif kind == "mark":
                parts.append(self._choice(text))
            # A name is for the handler only, and one word is enough of what may be repeated.
        count = max((len(part) for part in parts), default=1)
        return [list(itertools.chain(*(part[i % len(part)] for part in parts))) for i in range(count)]

    def _choice(self, opening):
        alternatives = []
        while not alternatives or self._take()[1] == "|":
            alternatives.append(self.sequence())
            assert self.place < len(self.tokens), "a bracket is not closed"
            assert self._at("|", CLOSING[opening])
        variants = list(itertools.chain(*alternatives))
        if opening == "{":
            return [*variants, list(itertools.chain(*(alternative[0] for alternative in alternatives)))]
        return variants if opening == "<" else [[], *variants]


def examples(syntax, values):
    """Lines of Words that fit the syntax.  values(placeholder): the words to type for A.B.C.D, (1-8), NAME ..."""
    reader = _Reader(syntax, values)
    lines = reader.sequence()
    assert reader.place == len(reader.tokens), f"{syntax!r} goes on"
    return lines


def typed(words):
    return " ".join(word.text for word in words)


def pattern(syntax):
    """A pattern of the lines that fit the syntax, whose placeholders stand for any one word."""
    text = ""
    for kind, token in tokens(syntax):
        if kind in ("word", "placeholder"):
            text += (re.escape(token) if kind == "word" else r"\S+") + " "
        elif kind == "mark":
            text += {"<": "(?:", "[": "(?:", "![": "(?:", ">": ")", "]": ")?", "|": "|"}[token]
    # Each word brings the space behind it, but the last one's is none.
    return re.compile(f"(?:{text})".replace(" ", r"(?: +|$)"))
