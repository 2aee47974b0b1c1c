# SPDX-License-Identifier: GPL-2.0-or-later
"""The operators' documents: their headings, and which command a heading is about."""
import re

from olt import PROJECT

DOCUMENTS = [PROJECT / "docs" / "operator.md", PROJECT / "docs" / "alarms.md"]
OPENING, CLOSING = "<[{", ">]}"


def headings(document):
    """The headings of a document as pairs of level and text; what looks like one in an example is none."""
    lines = document.read_text().splitlines()
    return [(len(match[1]), match[2]) for match in (re.fullmatch(r"(#+) (.+)", line) for line in lines) if match]


def grammars_of(heading):
    """The commands that a heading names."""
    return re.findall(r"`([^`]+)`", heading)


def words(grammar):
    """The words of a grammar; what is in brackets is one."""
    found, depth = [""], 0
    for character in grammar:
        depth += (character in OPENING) - (character in CLOSING)
        if character == " " and not depth:
            found.append("")
        else:
            found[-1] += character
    return [word for word in found if word]


def stands_for(written, grammar):
    """Whether a heading's grammar is that of the command.  A word in capitals stands for any one placeholder or choice."""
    ours, theirs = words(written), words(grammar)
    return len(ours) == len(theirs) and all(map(_word_stands_for, ours, theirs))


def _word_stands_for(written, word):
    if written == word:
        return True
    if written[0] == word[0] == "[":
        return stands_for(written[1:-1], word[1:-1])
    is_name = re.fullmatch(r"[A-Z][A-Z_-]+", written)
    return bool(is_name) and (word[0] in "<(" or bool(re.fullmatch(r"[A-Z][-_A-Z:0-9]+", word)))


def anchor(heading):
    """The name by which a link reaches a heading."""
    return re.sub(r"[^\w -]", "", heading.lower()).replace(" ", "-")
