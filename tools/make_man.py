#!/usr/bin/python3
# SPDX-License-Identifier: GPL-2.0-or-later
"""Makes the manual pages of docs/man/*.md, for man(1).

usage: make_man.py SOURCE VERSION >PAGE

The source is the part of Markdown that those documents use: a title "name(section): what it is", headings of two
levels, paragraphs, lists, indented examples, and tables, of which the first column becomes the term of a list.
Anything else ends this with status 1, rather than to come out wrong.
"""
import re
import sys
from pathlib import Path

TITLE = re.compile(r"# (\w+)\((\d)\): (.+)")
INLINE = re.compile(r"`([^`]+)`|\*\*([^*]+)\*\*|\[([^]]+)\]\([^)]+\)")


def plain(text):
    """Text as roff prints it."""
    return text.replace("\\", "\\e").replace("-", "\\-").replace("'", "\\(aq").replace("`", "\\(ga").replace("^", "\\(ha").replace("~", "\\(ti")


def inline(text):
    """A line of a paragraph; code and what is strong become bold, a link its text."""
    parts, end = [], 0
    for match in INLINE.finditer(text):
        parts.append(plain(text[end : match.start()]))
        code, strong, link = match.groups()
        parts.append(f"\\fB{plain(code or strong)}\\fR" if code or strong else inline(link))
        end = match.end()
    parts.append(plain(text[end:]))
    return "".join(parts)


def line(text):
    """A line that roff takes for text, whatever it begins with."""
    return "\\&" + text if text.startswith((".", "'")) else text


def cells(row):
    return [cell.strip().replace("\\|", "|") for cell in re.split(r"(?<!\\)\|", row.strip())[1:-1]]


def table(rows):
    """A term and what is said of it, for each row but the heading; an empty first cell leaves the term to the next."""
    for row in rows[2:]:
        first, *rest = cells(row)
        if not first:
            first, *rest = rest
        yield ".TP"
        yield line(inline(first))
        yield line(inline(": ".join(cell for cell in rest if cell)))


def blocks(text):
    """The document as lists of lines that belong together."""
    block = []
    for text_line in text.splitlines() + [""]:
        starts_item = text_line.startswith("- ") and not (block and block[0].startswith("    "))
        if block and (not text_line or starts_item):
            yield block
            block = []
        if text_line:
            block.append(text_line)


def body(block):
    first = block[0]
    if match := re.fullmatch(r"(##|###) (.+)", first):
        if len(block) > 1:
            raise ValueError(f"text right below a heading: {block[1]}")
        # man(7) wants the names of sections in capitals.
        title = match[2].upper() if match[1] == "##" else match[2]
        yield f"{'.SH' if match[1] == '##' else '.SS'} {inline(title)}"
    elif first.startswith("|"):
        yield from table(block)
    elif first.startswith("    "):
        yield from (".PP", ".RS 4", ".nf", *(line(plain(text[4:])) for text in block), ".fi", ".RE")
    elif first.startswith("- "):
        yield ".IP \\(bu 2"
        yield from (line(inline(text[2:].strip())) for text in block)
    elif first.startswith(("#", ">", "1.", "```", "!")):
        raise ValueError(f"not known how to write: {first}")
    else:
        yield ".PP"
        yield from (line(inline(text)) for text in " \n".join(block).split(" \n"))


def joined_paragraphs(block):
    """A link or code may go over the end of a line: then both lines are one."""
    joined = []
    for text in block:
        if joined and (joined[-1].count("`") % 2 or joined[-1].count("[") > joined[-1].count("](")):
            joined[-1] += " " + text.strip()
        else:
            joined.append(text)
    return joined


def page(source, version):
    text = source.read_text()
    head, _, rest = text.partition("\n")
    match = TITLE.fullmatch(head)
    if not match or source.name != f"{match[1]}.{match[2]}.md":
        raise ValueError(f"the title is not that of {source.name}: {head}")
    name, section, summary = match.groups()
    yield f'.\\" made of docs/man/{source.name} by tools/make_man.py'
    yield f'.TH {name.upper()} {section} "" "diagd {version}" ""'
    yield ".nh"
    yield ".ad l"
    yield ".SH NAME"
    yield f"{name} \\- {plain(summary)}"
    for block in blocks(rest):
        is_text = not block[0].startswith(("    ", "|", "#"))
        yield from body(joined_paragraphs(block) if is_text else block)


def main(source, version):
    try:
        print("\n".join(page(Path(source), version)))
    except ValueError as error:
        sys.exit(f"make_man: {source}: {error}")


if __name__ == "__main__":
    main(*sys.argv[1:])
