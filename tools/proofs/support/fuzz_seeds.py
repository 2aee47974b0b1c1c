# SPDX-License-Identifier: GPL-2.0-or-later
"""What the fuzz targets begin with: tests/fuzz/seeds/NAME.txt, and files of the tree that are what a target reads.

A line of a seed file is an input: as text, in which a backslash begins \\\\, \\n, \\t or \\xNN, or, behind "hex ", as bytes in
hexadecimal. A line that begins with "# " tells why the next ones are there; empty lines count for nothing."""
import re

from project import PROJECT

FOLDER = PROJECT / "tests" / "fuzz" / "seeds"
FILES = {"board_json": "sim/boards/olt8.json", "module_description": "sim/modules/*.json"}
MAX_BYTES = 200_000  # of all seeds in the tree


def decoded(line):
    if line.startswith("hex "):
        return bytes.fromhex(line[4:])
    return re.sub(rb"\\(\\|n|t|x[0-9a-f]{2})", _byte, line.encode("latin-1"))


def _byte(match):
    named = {b"\\": b"\\", b"n": b"\n", b"t": b"\t"}
    return named.get(match[1]) or bytes.fromhex(match[1][1:].decode())


def encoded(data):
    """The line of an input, in the shorter of its forms."""
    text = "".join(_letter(byte) for byte in data)
    if len(text) <= 2 * len(data) + 4 and not text.startswith(("hex ", "# ")) and text.strip() == text and text:
        return text
    return "hex " + data.hex()


def _letter(byte):
    named = {0x5C: "\\\\", 0x0A: "\\n", 0x09: "\\t"}
    return named.get(byte) or (chr(byte) if 0x20 <= byte < 0x7F else f"\\x{byte:02x}")


def read(path):
    lines = path.read_text().splitlines() if path.exists() else []
    return [decoded(line) for line in lines if line and not line.startswith("# ")]


def seeds_of(name):
    """The inputs that a target begins with."""
    found = read(FOLDER / f"{name}.txt")
    if name in FILES:
        found += [path.read_bytes() for path in sorted(PROJECT.glob(FILES[name]))]
    return found


def write_out(name, folder):
    """Makes the files that libFuzzer reads."""
    folder.mkdir(parents=True, exist_ok=True)
    for number, seed in enumerate(seeds_of(name)):
        (folder / f"seed{number:04}").write_bytes(seed)


def add(name, inputs):
    """Adds inputs to the seeds of a target that they are no part of yet; says how many there were."""
    known = set(seeds_of(name))
    new = sorted({data for data in inputs if data not in known}, key=lambda data: (len(data), data))
    with open(FOLDER / f"{name}.txt", "a") as file:
        file.writelines(encoded(data) + "\n" for data in new)
    return len(new)
