# SPDX-License-Identifier: GPL-2.0-or-later
"""What an installation consists of: each component's files, no more and no fewer, and that they work where they are.

usage: install_test.py BUILD_FOLDER
"""
import json
import os
import re
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

PROJECT = Path(__file__).resolve().parents[3]
BUILD = Path(sys.argv.pop(1)).resolve()
VERSION = (PROJECT / "VERSION").read_text().strip()
EXPECTED = {
    "daemon": ["sbin/diagd", "share/diagd/logrotate.d/diagd", "share/man/man8/diagd.8"],
    "platform": [
        "lib/diagd/libtqapi.so",
        "lib/diagd/libtqdatabase.so",
        "lib/diagd/libtqdatabase_guard.so",
        "lib/diagd/libtqtrap.so",
        "lib/diagd/libutil_cpld.so",
        "lib/diagd/libutil_i2c.so",
        "lib/diagd/libutil_phy.so",
        "share/diagd/mibs/OLT-ALARM-MIB.txt",
        "share/diagd/yang/olt-alarm-log.yang",
        "share/diagd/yang/olt-ntp.yang",
    ],
    "runtime": [
        "lib/diagd/bin/sysrepocfg",
        "lib/diagd/bin/sysrepoctl",
        "lib/diagd/libfrr.so.0",
        "lib/diagd/libpcre.so.3",
        "lib/diagd/libsysrepo.so.5",
        "lib/diagd/libyang.so.1",
        "lib/diagd/libyang1/extensions/metadata.so",
        "lib/diagd/libyang1/extensions/nacm.so",
        "lib/diagd/libyang1/extensions/yangdata.so",
        "lib/diagd/libyang1/user_types/user_inet_types.so",
        "lib/diagd/libyang1/user_types/user_yang_types.so",
    ],
    "simulator": [
        "bin/boardctl",
        "lib/diagd/libgpio_sim.so",
        "sbin/boardsim",
        "share/diagd/boards/olt16-modules.json",
        "share/diagd/boards/olt16.json",
        "share/diagd/boards/olt2-modules.json",
        "share/diagd/boards/olt2.json",
        "share/diagd/boards/olt8-modules.json",
        "share/diagd/boards/olt8.json",
        "share/diagd/modules/combo-1490-1577.json",
        "share/diagd/modules/gpon-1490-external.json",
        "share/diagd/modules/gpon-1490.json",
        "share/diagd/modules/qsfp28-lr4.json",
        "share/diagd/modules/sfp-1310-no-diagnostics.json",
        "share/diagd/modules/sfp-1310.json",
        "share/diagd/modules/sfp-850.json",
        "share/diagd/modules/sfp-unsupported.json",
        "share/diagd/modules/xgpon-1577.json",
        "share/man/man1/boardctl.1",
        "share/man/man8/boardsim.8",
    ],
    "shell": ["bin/board-thresholds", "bin/diagsh", "share/man/man1/diagsh.1"],
    "optics": ["bin/optics", "share/man/man1/optics.1"],
    "development": [
        "include/diagd/tq_alarms.def",
        "include/diagd/tq_alarms.h",
        "include/diagd/tq_api.h",
        "include/diagd/tq_board.h",
        "include/diagd/tq_database.h",
        "include/diagd/tq_errno.h",
        "include/diagd/tq_types.h",
        "include/diagd/util_cpld.h",
        "include/diagd/util_i2c.h",
        "include/diagd/util_phy.h",
    ],
}
# A library's full version is its maker's; the name that programs ask for is ours to know.
FULL_VERSION = re.compile(r"(\.so\.\d+)(\.\d+)+$")


def installed(component, prefix):
    """Installs the component (all: None) and gives what is there then."""
    selection = ["--component", component] if component else []
    command = ["cmake", "--install", BUILD, "--prefix", prefix, *selection]
    run = subprocess.run(command, capture_output=True, text=True, check=False)
    assert run.returncode == 0, run.stdout + run.stderr
    found = {str(path.relative_to(prefix)) for path in prefix.rglob("*") if not path.is_dir()}
    return sorted({FULL_VERSION.sub(r"\1", name) for name in found})


class Install(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.prefix = Path(folder.name, "prefix")

    def test_each_component_is_exactly_its_files(self):
        for component, files in EXPECTED.items():
            with self.subTest(component):
                self.assertEqual(installed(component, self.prefix / component), files)

    def test_all_components_together_are_everything(self):
        self.assertEqual(installed(None, self.prefix), sorted(name for files in EXPECTED.values() for name in files))

    def test_installed_files_need_nothing_of_the_build(self):
        installed(None, self.prefix)
        environment = {name: value for name, value in os.environ.items() if not name.startswith("LD_")}
        files = [path for path in self.prefix.rglob("*") if path.is_file() and not path.is_symlink()]
        objects = [path for path in files if path.read_bytes()[:4] == b"\x7fELF"]
        self.assertGreater(len(objects), 15)
        for path in objects:
            run = subprocess.run(["ldd", path], capture_output=True, text=True, check=False, env=environment)
            self.assertNotIn("not found", run.stdout, path)
            self.assertNotIn(str(PROJECT), run.stdout, path)

    def test_programs_say_the_version(self):
        installed("simulator", self.prefix)
        installed("shell", self.prefix)
        for program in ("bin/boardctl", "bin/diagsh", "sbin/boardsim"):
            run = subprocess.run([self.prefix / program, "--version"], capture_output=True, text=True, check=False)
            expected = (0, f"{Path(program).name} {VERSION}\n", "")
            self.assertEqual((run.returncode, run.stdout, run.stderr), expected)

    def test_daemon_needs_no_test_framework(self):
        options = ["-DDIAGD_TESTS=OFF", "-DDIAGD_BENCH=OFF", "-DDIAGD_WERROR=OFF", "-DCMAKE_EXPORT_COMPILE_COMMANDS=ON"]
        missing = [f"-DCMAKE_DISABLE_FIND_PACKAGE_{name}=ON" for name in ("GTest", "benchmark")]
        command = ["cmake", "-G", "Ninja", "-S", PROJECT, "-B", self.prefix, *options, *missing]
        run = subprocess.run(command, capture_output=True, text=True, check=False)
        self.assertEqual(run.returncode, 0, run.stderr)
        entries = json.loads((self.prefix / "compile_commands.json").read_text())
        sources = {str(Path(entry["file"]).relative_to(PROJECT)) for entry in entries}
        self.assertIn("diagd/diag_main.cpp", sources)
        self.assertEqual([name for name in sources if name.startswith(("tests/", "bench/"))], [])
        self.assertEqual([entry["file"] for entry in entries if "-Werror" in entry["command"]], [])


if __name__ == "__main__":
    unittest.main()
