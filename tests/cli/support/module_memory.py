# SPDX-License-Identifier: GPL-2.0-or-later
"""Memories of optical modules, byte by byte, and plugging them into a simulated board."""

import itertools
import os
import socket
import struct

from vty import DEADLINE_S

_numbers = itertools.count()


def memory(fields):
    """256 bytes with the given fields; a number fills one byte, a text or bytes what it is long."""
    page = bytearray(256)
    for register, value in fields.items():
        data = bytes([value]) if isinstance(value, int) else value.encode("ascii") if isinstance(value, str) else value
        page[register : register + len(data)] = data
    return bytes(page)


def words(*values):
    """16-bit numbers as modules store them; negative ones in two's complement."""
    return b"".join(struct.pack(">H", value & 0xFFFF) for value in values)


def path(wavelength=1490, monitoring=0x20, identifier=3, temperature=0x1980, voltage=33000, bias=5000, tx=10000, rx=5000,
         constants=(), id_page=None):
    """The two pages of an SFP's optical path.  constants: the ten external calibration words."""
    identity = {0: identifier, 20: "ACME OPTICS     ", 56: "1.0 ", 68: "SN0001          "}
    identity |= {60: words(wavelength), 92: monitoring} | (id_page or {})
    diagnostics = {76: words(*constants), 96: words(temperature, voltage, bias, tx, rx)}
    return memory(identity), memory(diagnostics)


def qsfp(lower=None, upper=None, identifier=0x11):
    """Lower memory and page 00h of an SFF-8636 module."""
    fields = {
        0: identifier,
        22: words(-0x1980),
        26: words(33000),
        34: words(1000, 2000, 5000, 10000),
        42: words(5000, 10000, 15000, 65535),
        50: words(10000, 5000, 1000, 0),
    }
    texts = {148: "ACME OPTICS     ", 184: "1A", 196: "SN0002          ", 186: b"\x66\x58"}
    return memory(fields | texts | (lower or {}) | (upper or {}))


def plug(olt, kind, port, *pages):
    """Plugs a module: one page (SFF-8636), or pairs of identity and diagnostics page (SFP)."""
    folder = olt.state / "modules"
    folder.mkdir(exist_ok=True)
    name = f"module{next(_numbers)}"
    parts = {"lower": pages[0][:128], "page00": pages[0][128:]} if len(pages) == 1 else dict(zip(("a0", "a2", "b0", "b2"), pages))
    files = []
    for part, data in parts.items():
        files.append(folder / f"{name}.{part}.bin")
        files[-1].write_bytes(data)
    olt.boardctl("plug", kind, port, *files)


def plug_image(olt, kind, port, devices):
    """Plugs memories of any shape without a file or a program.  devices: by 7-bit address, the lower half and
    the pages above it, by number; a flat memory has page 0 only."""
    lines = ["module random"]
    for address, (lower, pages) in devices.items():
        lines += [f"device {address:02x} {'paged' if len(pages) > 1 else 'flat'}", "lower " + lower.hex()]
        lines += [f"page {number:02x} {page.hex()}" for number, page in pages.items()]
    ask_board(olt, "plug", kind, str(port), "\n".join([*lines, "end", ""]))


def set_memory(olt, kind, port, address, register, data):
    """Writes into the memory of a plugged module, without a program."""
    ask_board(olt, "module", "set", kind, str(port), f"{address:#x}", str(register), bytes(data).hex())


def ask_board(olt, *words):
    """A verb of boardctl and its words, without a program; it must be accepted."""
    # The folder by its descriptor: an address holds 108 characters only.
    folder = os.open(olt.state / "board", os.O_PATH)
    try:
        with socket.socket(socket.AF_UNIX) as board:
            board.settimeout(DEADLINE_S)
            board.connect(f"/proc/self/fd/{folder}/ctl.sock")
            board.sendall(b"".join(word.encode() + b"\0" for word in words))
            board.shutdown(socket.SHUT_WR)
            answer = b"".join(iter(lambda: board.recv(65536), b""))
    finally:
        os.close(folder)
    assert answer[:1] == b"0", answer
