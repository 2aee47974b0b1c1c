# SPDX-License-Identifier: GPL-2.0-or-later
"""optics decode: forms of dumps, output, exit statuses, and what it says to bad input.

usage: program_test.py OPTICS
"""

import json
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

PROGRAM = ""  # path of optics
GOOD, DOUBTFUL, UNREADABLE, USAGE = 0, 1, 2, 64

TEXT = """\
SFF-8472 module
  identifier        SFP (0x03)
  vendor            ACME OPTICS
  OUI               00:90:65
  part              AC-10G-LR  revision B2
  serial            SN0001  date 210304
  connector         LC (0x07)
  medium            optical, 1310 nm
  length            single mode 10 km
  rate              10300 MBd, 64B/66B (0x06)
  check codes       CC_BASE good, CC_EXT good, CC_DMI good
  diagnostics       internal calibration, RX power is the average
  temperature       25.50 C         normal
  supply voltage    3.255 V         normal
  laser bias        27.872 mA       normal
  TX power          -1.96 dBm       normal
  RX power          < -40 dBm       no light, low-alarm; flags: low-alarm
  status            RX loss of signal
  thresholds             low alarm low warning  high warn.  high alarm
  temperature, C            -25.00      -20.00       85.00       90.00
  supply voltage, V          3.000       3.050       3.500       3.600
  laser bias, mA             2.000       3.000      80.000      90.000
  TX power, dBm              -7.00       -6.00        1.50        2.50
  RX power, dBm             -16.00      -15.00        0.50        1.00
  verdict           good
"""


def put(memory, byte, data):
    memory[byte : byte + len(data)] = data


def words(*values):
    return b"".join((value & 0xFFFF).to_bytes(2, "big") for value in values)


def sfp():
    """A0h and A2h of a module that gets no light."""
    a0, a2 = bytearray(256), bytearray(256)
    put(a0, 0, bytes([3, 4, 7, 0x20]))
    put(a0, 11, bytes([6, 103, 0, 10, 100]))
    for byte, size, text in ((20, 16, "ACME OPTICS"), (40, 16, "AC-10G-LR"), (56, 4, "B2"), (68, 16, "SN0001"), (84, 8, "210304")):
        put(a0, byte, text.ljust(size).encode())
    put(a0, 37, bytes([0, 0x90, 0x65]))
    put(a0, 60, words(1310))
    put(a0, 92, bytes([0x68, 0xF0, 8]))
    put(a2, 0, words(90 * 256, -25 * 256, 85 * 256, -20 * 256, 36000, 30000, 35000, 30500, 45000, 1000, 40000, 1500))
    put(a2, 24, words(17783, 1995, 14125, 2512, 12589, 251, 11220, 316))
    put(a2, 96, words(0x1980, 32545, 13936, 6361, 0))
    a2[110], a2[113] = 0x02, 0x40
    a0[63], a0[95], a2[95] = sum(a0[:63]) % 256, sum(a0[64:95]) % 256, sum(a2[:95]) % 256
    return bytes(a0), bytes(a2)


def run(*arguments, stdin=b""):
    return subprocess.run([PROGRAM, *map(str, arguments)], input=stdin, capture_output=True, timeout=60, check=False)


def ethtool(data):
    lines = [f"0x{i:04x}:\t\t" + " ".join(f"{byte:02x}" for byte in data[i : i + 16]) + " " for i in range(0, len(data), 16)]
    return "\n".join(["Offset\t\tValues", "------\t\t------", *lines, ""]).encode()


def i2cdump(data):
    lines = ["     0  1  2  3  4  5  6  7  8  9  a  b  c  d  e  f    0123456789abcdef"]
    for i in range(0, len(data), 16):
        row = data[i : i + 16]
        lines.append(f"{i:02x}: " + " ".join(f"{byte:02x}" for byte in row) + "    " + "".join(chr(b) if 32 < b < 127 else "." for b in row))
    return "\n".join([*lines, ""]).encode()


class Program(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = Path(folder.name)

    def file(self, name, data):
        path = self.folder / name
        path.write_bytes(data)
        return path

    def assert_shown(self, result, status=GOOD):
        self.assertEqual((result.returncode, result.stderr.decode()), (status, ""))
        self.assertEqual(result.stdout.decode(), TEXT)

    def assert_refused(self, result, status, words):
        self.assertEqual((result.returncode, result.stdout), (status, b""))
        self.assertIn(words, result.stderr.decode())

    def test_every_form_of_a_dump_is_read(self):
        a0, a2 = sfp()
        self.assert_shown(run("decode", self.file("m.bin", a0 + a2)))
        self.assert_shown(run("decode", self.file("m.txt", ethtool(a0 + a2))))
        self.assert_shown(run("decode", self.file("0x50.txt", i2cdump(a0)), self.file("0x51.txt", i2cdump(a2))))
        self.assert_shown(run("decode", self.file("m.a2.bin", a2), self.file("m.a0.bin", a0)))
        self.assert_shown(run("decode", self.file("digits", (a0 + a2).hex().encode())))
        self.assert_shown(run("decode", "-", stdin=a0 + a2))
        self.assert_shown(run("decode", "-", stdin=ethtool(a0 + a2)))
        self.assert_shown(run("decode", "--", self.file("128.a0.bin", a0[:128]), self.file("128.a2.bin", a2[:128])))

    def test_json_has_the_same_in_full(self):
        a0, a2 = sfp()
        result = run("decode", "--json", "-", stdin=a0 + a2)
        self.assertEqual((result.returncode, result.stderr), (GOOD, b""))
        shown = json.loads(result.stdout)
        self.assertEqual(shown["verdict"], "good")
        self.assertEqual(shown["identity"]["part"], "AC-10G-LR")
        self.assertEqual(shown["temperature"], {"value": 25.5, "unit": "C", "state": "ok", "judgement": "normal", "flags": []})
        self.assertEqual(
            shown["lanes"][0]["rx_power"],
            {"value": None, "unit": "dBm", "state": "no-light", "reason": "no-light", "judgement": "low-alarm", "flags": ["low-alarm"]},
        )
        self.assertAlmostEqual(shown["lanes"][0]["tx_power"]["value"], -1.96474604, delta=1e-8)
        self.assertAlmostEqual(shown["lanes"][0]["tx_power"]["mw"], 0.6361, delta=1e-8)
        self.assertEqual(shown["lanes"][0]["rx_los"], True)
        self.assertEqual(shown["thresholds"]["bias"]["high_warning"], 80)

    def test_wrong_check_code_makes_it_doubtful(self):
        a0, a2 = sfp()
        result = run("decode", "-", stdin=a0[:63] + bytes([a0[63] ^ 1]) + a0[64:] + a2)
        self.assertEqual((result.returncode, result.stderr), (DOUBTFUL, b""))
        expected = f"doubtful\n{'':20}check code CC_BASE is 0x{a0[63] ^ 1:02x}, should be 0x{a0[63]:02x}\n"
        self.assertTrue(result.stdout.decode().endswith(expected), result.stdout)

    def test_memory_that_was_cut_off_is_decoded_as_far_as_it_goes(self):
        a0, _ = sfp()
        result = run("decode", "--json", "-", stdin=a0[:64])
        self.assertEqual(result.returncode, DOUBTFUL)
        shown = json.loads(result.stdout)
        self.assertEqual([check["result"] for check in shown["checks"]], ["good", "not-read"])
        self.assertEqual((shown["identity"]["part"], shown["identity"]["serial"]), ("AC-10G-LR", ""))
        self.assertEqual(shown["temperature"]["reason"], "not-read")

    def test_second_path_of_a_combo_module_counts(self):
        a0, a2 = sfp()
        shown = json.loads(run("decode", "--json", "-", stdin=a0 + a2 + a0 + a2).stdout)
        self.assertEqual(shown["second_path"]["temperature"]["value"], 25.5)
        spoilt = a0[:20] + b"X" + a0[21:]
        result = run("decode", "-", stdin=a0 + a2 + spoilt + a2)
        self.assertEqual(result.returncode, DOUBTFUL)
        self.assertIn(b"second path: SFF-8472 module\n", result.stdout)

    def test_other_kinds_of_modules_are_named_and_not_decoded(self):
        a0, _ = sfp()
        result = run("decode", "-", stdin=b"\x06" + a0[1:])
        self.assertEqual(result.returncode, UNREADABLE)
        self.assertIn(b"identifier        XFP (0x06)\n", result.stdout)
        self.assertEqual(json.loads(run("decode", "--json", "-", stdin=b"\x06" + a0[1:]).stdout)["verdict"], "not-decoded")

    def test_what_is_no_dump_is_refused_in_a_line(self):
        a0, _ = sfp()
        cases = {
            "hello\n": "line 1: no dump line",
            "00: 03 0g\n": 'line 1: "0g" is not a hexadecimal byte',
            "": "empty",
            '{"name": "lab"}': "a description of a module, not a dump",
        }
        for number, (content, words_) in enumerate(cases.items()):
            path = self.file(f"bad{number}", content.encode())
            result = run("decode", path)
            self.assert_refused(result, UNREADABLE, f"optics: {path}: {words_}")
            self.assertEqual(result.stderr.count(b"\n"), 1)
        self.assert_refused(run("decode", self.folder / "none"), UNREADABLE, "No such file or directory")
        self.assert_refused(run("decode", self.folder), UNREADABLE, str(self.folder))
        self.assert_refused(run("decode", self.file("big", bytes(1 << 19))), UNREADABLE, "too large")
        self.assert_refused(run("decode", self.file("long", a0 * 5)), UNREADABLE, "more than the four memories")
        self.assert_refused(run("decode", self.file("a.a0.bin", a0), self.file("b.a0.bin", a0)), UNREADABLE, "a second A0h")

    def test_names_of_files_are_no_orders_to_the_terminal(self):
        result = run("decode", self.folder / "\x1b[2J")
        self.assert_refused(result, UNREADABLE, "\\x1b[2J")
        self.assertNotIn(b"\x1b", result.stderr)

    def test_wrong_command_lines_show_the_usage(self):
        for arguments in ((), ("decode",), ("decode", "--yaml", "-"), ("encode", "-"), ("--json", "-")):
            with self.subTest(arguments):
                self.assert_refused(run(*arguments), USAGE, "usage: optics decode")
        self.assertRegex(run("--version").stdout.decode(), r"\Aoptics \d+\.\d+\.\d+\n\Z")
        for arguments in (("--help",), ("decode", "--help")):
            result = run(*arguments)
            self.assertEqual((result.returncode, result.stderr), (GOOD, b""))
            self.assertTrue(result.stdout.startswith(b"usage: optics decode"))

    def test_output_that_cannot_be_written_is_no_success(self):
        a0, a2 = sfp()
        with open("/dev/full", "wb") as full:
            run_ = subprocess.run([PROGRAM, "decode", "-"], input=a0 + a2, stdout=full, stderr=subprocess.PIPE, check=False, timeout=60)
        self.assertEqual(run_.returncode, UNREADABLE)
        self.assertIn(b"cannot write", run_.stderr)


if __name__ == "__main__":
    PROGRAM = sys.argv.pop(1)
    unittest.main()
