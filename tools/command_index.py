#!/usr/bin/python3
# SPDX-License-Identifier: GPL-2.0-or-later
"""Writes the index of commands in docs/commands/README.md from what a running daemon lists.

usage: command_index.py [--check] [DIAGSH_OPTION...]

The daemon is the one that diagsh finds, that of ./run for one; DIAGSH_OPTION is for another (-s FOLDER).  With
--check nothing is written, and the exit status is 1 when the index is not what it should be.
"""
import re
import subprocess
import sys
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent
FOLDER = ROOT / "docs" / "commands"
INDEX = FOLDER / "README.md"
PAGES = sorted(set(FOLDER.glob("*.md")) - {INDEX})
SECTION = 3  # level of a command's heading; those above are the groups
NODES = {
    "view": "view",
    "enable": "enable",
    "config": "configuration",
    "interface gpon 0/1": "gpon",
    "interface xgpon 0/1": "xgpon",
    "diagnose": "diagnose",
}
OPENING, CLOSING = "<[{", ">]}"


def headings(document):
    """The headings of a document as pairs of level and text; what looks like one in an example is none."""
    lines = document.read_text().splitlines()
    return [(len(match[1]), match[2]) for match in (re.fullmatch(r"(#+) (.+)", line) for line in lines) if match]


def syntaxes_of(heading):
    """The commands that a heading names."""
    return re.findall(r"`([^`]+)`", heading)


def words(syntax):
    """The words of a syntax; what is in brackets is one."""
    found, depth = [""], 0
    for character in syntax:
        depth += (character in OPENING) - (character in CLOSING)
        if character == " " and not depth:
            found.append("")
        else:
            found[-1] += character
    return [word for word in found if word]


def stands_for(written, syntax):
    """Whether a heading's syntax is that of the command.  A word in capitals stands for any one placeholder or choice."""
    ours, theirs = words(written), words(syntax)
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


def documented():
    """Every command that has a section, as (syntax, page, heading)."""
    return [
        (syntax, page, text)
        for page in PAGES
        for level, text in headings(page)
        if level >= SECTION
        for syntax in syntaxes_of(text)
    ]


def index(commands_of):
    """The lines of the index; commands_of(node) gives the syntaxes that the daemon lists in a node."""
    listed = {node: commands_of(node) for node in NODES}
    lines = []
    for syntax, page, heading in sorted(documented()):
        nodes = [
            name for node, name in NODES.items() if any(stands_for(syntax, command) for command in listed[node])
        ]
        # Headings of one syntax are told apart by what follows it.
        rest = heading.rpartition("`")[2]
        lines.append(f"- [`{syntax}`{rest}]({page.name}#{anchor(heading)}): {', '.join(nodes) or 'hidden'}\n")
    return "".join(lines)


def written_index():
    """What the document has below its last heading's words, and the text before that."""
    text = INDEX.read_text()
    start = text.find("\n- [`", text.index("\n## Index\n")) + 1
    return (text[:start], text[start:]) if start else (text, "")


def commands_of_daemon(options):
    def commands_of(node):
        diagsh = ROOT / "build" / "release" / "bin" / "diagsh"
        run = subprocess.run([diagsh, *options, "-n", node, "-c", "list"], capture_output=True, text=True, check=False)
        if run.returncode != 0:
            sys.exit(f"command_index: node {node}: {run.stderr.strip()}")
        return [line.strip() for line in run.stdout.splitlines() if line.strip()]

    return commands_of


def main(options):
    check = "--check" in options
    wanted = index(commands_of_daemon([option for option in options if option != "--check"]))
    above, present = written_index()
    if present == wanted:
        return 0
    if check:
        print(f"command_index: {INDEX.relative_to(ROOT)} is not what tools/command_index.py makes of the daemon")
        return 1
    INDEX.write_text(above + wanted)
    return 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
