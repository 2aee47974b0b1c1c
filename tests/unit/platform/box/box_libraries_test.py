#!/usr/bin/env python3
# SPDX-License-Identifier: GPL-2.0-or-later
"""diagd on the platform libraries that a box brings (-DDIAGD_PLATFORM_DIR).

A box is a folder with copies of our five libraries. The daemon is not compiled for it again: what the option changes
is the configuration and the link, so the configuration is made and its own link command is run over the objects of
the build that is there.

usage: box_libraries_test.py BUILD_FOLDER
"""
import os
import re
import shutil
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

PROJECT = Path(__file__).resolve().parents[4]
BUILD = Path()  # set by main
LIBRARIES = ("tqapi", "tqdatabase", "util_cpld", "util_i2c", "util_phy")


def cached(name):
    """A setting of the build that is there."""
    return re.search(rf"^{name}:\w+=(.*)$", (BUILD / "CMakeCache.txt").read_text(), re.MULTILINE)[1]


class BoxLibraries(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory(prefix="diagd-box-")
        self.addCleanup(folder.cleanup)
        self.box, self.build = Path(folder.name, "box"), Path(folder.name, "build")
        self.box.mkdir()
        for library in LIBRARIES:
            shutil.copy(BUILD / "lib" / f"lib{library}.so", self.box)

    def configure(self):
        same = ("CMAKE_CXX_FLAGS", "CMAKE_C_FLAGS", "CMAKE_BUILD_TYPE", "DIAGD_DEPS_DIR", "DIAGD_FRR_VARIANT",
                "DIAGD_SANITIZE")
        return subprocess.run(
            ["cmake", "-S", PROJECT, "-B", self.build, "-G", "Ninja", f"-DDIAGD_PLATFORM_DIR={self.box}",
             *(f"-D{name}={cached(name)}" for name in same)],
            capture_output=True, text=True, check=False)

    def ninja(self, *words):
        return subprocess.run(["ninja", "-C", self.build, "-t", *words], capture_output=True, text=True, check=True).stdout

    def link(self):
        """Runs the box's link command of diagd; the daemon."""
        command = self.ninja("commands", "bin/diagd").splitlines()[-1]
        for made in set(re.findall(r"\S+\.o\b|\S+\.a\b", command)):
            target = self.build / made
            target.parent.mkdir(parents=True, exist_ok=True)
            target.symlink_to(BUILD / made)
        (self.build / "bin").mkdir(exist_ok=True)
        done = subprocess.run(command, shell=True, cwd=self.build, capture_output=True, text=True, check=False)
        self.assertEqual(done.returncode, 0, done.stderr)
        return self.build / "bin" / "diagd"

    def test_the_daemon_links_with_the_libraries_of_the_box_and_loads_them(self):
        done = self.configure()
        self.assertEqual(done.returncode, 0, done.stderr)
        daemon = self.link()
        # -r: every symbol is looked for, as at the start of the daemon
        loaded = subprocess.run(["ldd", "-r", daemon], capture_output=True, text=True, check=True)
        for library in LIBRARIES:
            self.assertIn(f"lib{library}.so => {self.box}/lib{library}.so ", loaded.stdout)
        self.assertNotRegex(loaded.stdout + loaded.stderr, "undefined symbol|not found")

    def test_nothing_of_our_platform_is_built(self):
        self.assertEqual(self.configure().returncode, 0)
        made = self.ninja("targets", "all")
        self.assertIn("bin/diagd:", made)
        self.assertIn("bin/diagsh:", made)
        for word in ("libtq", "libutil_", "platform/alarms", "platform/database", "boardsim", "gpio_sim", "_test:"):
            self.assertNotIn(word, made)

    def test_a_library_that_the_box_lacks_is_named(self):
        os.remove(self.box / "libutil_phy.so")
        done = self.configure()
        self.assertNotEqual(done.returncode, 0)
        self.assertIn(f"{self.box}/libutil_phy.so is missing", " ".join(done.stderr.split()))


if __name__ == "__main__":
    BUILD = Path(sys.argv.pop(1)).resolve()
    unittest.main()
