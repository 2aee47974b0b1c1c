# SPDX-License-Identifier: GPL-2.0-or-later
"""The commands that the daemon has to install: tests/commands.txt, which says how it is written."""

from dataclasses import dataclass, field

from project import PROJECT

NODES = {"config": 4, "fan": 97, "gpon": 124, "xgpon": 125, "diagnose": 133, "alarm-log": 155}
CONFIG, FAN, GPON, XGPON, DIAGNOSE, ALARM_LOG = NODES.values()
# Nodes that the daemon makes, in their order; it only installs into the others.
OWN_NODES = [(FAN, "fan"), (ALARM_LOG, "alarm-log"), (GPON, "gpon"), (XGPON, "xgpon")]


@dataclass(frozen=True)
class Command:
    node: int
    name: str
    syntax: str
    help: tuple[str, ...] | None  # None: any that explains each word
    hidden: bool
    family: str = field(default="", compare=False)  # heading in the table


def _blocks():
    """Family, title, lines and help lines of each set and each command."""
    text = (PROJECT / "tests" / "commands.txt").read_text()
    family = ""
    for block in text.split("\n\n"):
        lines = [line for line in block.splitlines() if not line.startswith("#")]
        if not lines:
            family = block.strip("# \n")
        else:
            title, *rest = lines
            yield (family, title.split(), [line.strip() for line in rest if not line.startswith("  - ")],
                   [line.removeprefix("  - ") for line in rest if line.startswith("  - ")])


def _read():
    sets, commands = {}, []
    for family, title, lines, help_lines in _blocks():
        if title[0] == "set":
            words = " ".join(lines).split()
            each = any("{}" in line for line in help_lines)
            sets[title[1]] = words, [line.replace("{}", word) for word in (words if each else [""]) for line in help_lines]
            continue
        (syntax,) = lines
        for name, (words, _) in sets.items():
            syntax = syntax.replace(f"{{{name}}}", f"<{'|'.join(words)}>")
        texts = [text for line in help_lines for text in (sets[line[1:-1]][1] if line.startswith("{") else [line])]
        nodes, name, *hidden = title
        assert hidden in ([], ["hidden"]), title
        commands += [Command(NODES[node], f"{name}_cmd", syntax, tuple(texts) or None, bool(hidden), family)
                     for node in nodes.split(",")]
    return {name: words for name, (words, _) in sets.items()}, commands


# Alternatives that commands share, by name, and all commands in their order.
SETS, COMMANDS = _read()
