#!/usr/bin/env python3
# SPDX-License-Identifier: GPL-2.0-or-later
"""The binary interface of the five platform libraries is the one that is written down in abi.txt.

Boxes replace our libraries by their own, and programs that are not ours link them: a symbol that goes, an argument or
a field that moves breaks those at run time. abi.txt lists the exported symbols, the prototypes and result codes of the C
headers, and every structure of theirs with the places of its fields, all read from what the compiler made.

usage: abi_test.py BUILD_FOLDER             says in a diff what has changed
       abi_test.py BUILD_FOLDER --update    writes abi.txt: for a change that is meant
"""
import difflib
import re
import subprocess
import sys
import tempfile
from pathlib import Path

HERE = Path(__file__).resolve().parent
INCLUDE = HERE.parents[3] / "platform" / "include"
REFERENCE = HERE / "abi.txt"
LIBRARIES = ("tqapi", "tqdatabase", "util_cpld", "util_i2c", "util_phy")


def output(*command):
    return subprocess.run(command, capture_output=True, text=True, check=True).stdout


def symbols(build):
    for library in LIBRARIES:
        yield f"lib{library}.so"
        lines = output("nm", "-D", "--defined-only", build / "lib" / f"lib{library}.so").splitlines()
        # B and D differ only in whether a variable starts with zeros; a leading __ is the compiler's
        yield from sorted(f"  {'function' if kind in 'TW' else 'variable'} {name}"
                          for _, kind, name in map(str.split, lines) if not name.startswith("__"))


def prototypes(listing):
    """From what gcc's -aux-info tells of the declarations."""
    yield "prototypes"
    for line in sorted(set(re.findall(rf"^/\* {re.escape(str(INCLUDE))}/\S+ \*/ extern (.*;)$", listing, re.MULTILINE))):
        yield f"  {line}"


def entries(dump):
    """Debug information as readelf shows it: level, tag and attributes of each entry."""
    entry = None
    for line in dump.splitlines():
        if begin := re.match(r" <(\d+)><\w+>: Abbrev Number: \d+(?: \((\w+)\))?", line):
            if entry:
                yield entry
            entry = (int(begin[1]), begin[2], {})
        elif entry and (value := re.match(r"\s+<\w+>\s+DW_AT_(\w+)\s*: (.*?)\s*$", line)):
            # in front of the value stands its form, as one version of readelf or another puts it
            entry[2][value[1]] = re.sub(r"^(\([^)]*\):?\s*)+", "", value[2])
    if entry:
        yield entry


def codes_and_structures(dump):
    codes, found, fields = [], {}, None
    for level, tag, values in entries(dump):
        name = values.get("name", "")
        if level == 1:
            fields = None
            if tag == "DW_TAG_structure_type" and re.match(r"(tq_|board_|sclient$)", name) and "byte_size" in values:
                fields = [f"struct {name}: {values['byte_size']} bytes"]
                found[name] = fields
        elif level == 2 and tag == "DW_TAG_member" and fields is not None:
            fields.append(f"  {values.get('data_member_location', '0'):>5} {name}")
        elif tag == "DW_TAG_enumerator" and re.match(r"TQ_(OK|ERR)", name):
            codes.append(f"  {name} {values['const_value']}")
    yield "result codes"
    yield from codes
    for _, lines in sorted(found.items()):
        yield from lines


def measured(build):
    with tempfile.TemporaryDirectory(prefix="diagd-abi-") as folder:
        source, made, listing = (Path(folder, name) for name in ("all.c", "all.o", "prototypes"))
        source.write_text("".join(f'#include "{header.name}"\n' for header in sorted(INCLUDE.glob("*.h"))))
        gcc = ("gcc", "-std=gnu11", f"-I{INCLUDE}", source)
        output(*gcc, "-c", "-gdwarf-4", "-fno-eliminate-unused-debug-types", "-aux-info", listing, "-o", made)
        yield from symbols(build)
        yield from prototypes(listing.read_text())
        yield from codes_and_structures(output("readelf", "--wide", "--debug-dump=info", made))


def main():
    lines = [line + "\n" for line in measured(Path(sys.argv[1]).resolve())]
    if sys.argv[2:] == ["--update"]:
        REFERENCE.write_text("".join(lines))
        return 0
    difference = list(difflib.unified_diff(REFERENCE.read_text().splitlines(keepends=True), lines, str(REFERENCE), "now"))
    sys.stdout.writelines(difference)
    if difference:
        print(f"\nThe binary interface has changed.  If that is meant: {Path(__file__)} {sys.argv[1]} --update")
    return 1 if difference else 0


if __name__ == "__main__":
    sys.exit(main())
