# SPDX-License-Identifier: GPL-2.0-or-later
"""The manual pages: man finds nothing wrong with them, and they tell the options that the programs have.

usage: man_test.py BUILD_FOLDER
"""
import os
import re
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

PROJECT = Path(__file__).resolve().parents[3]
BUILD = Path(sys.argv.pop(1)).resolve()
PAGES = ("boardctl.1", "boardsim.8", "diagd.8", "diagsh.1", "optics.1")


def shown(page):
    """The page as man shows it, and what man complains about."""
    environment = {**os.environ, "LC_ALL": "C.UTF-8", "MANWIDTH": "100", "MAN_KEEP_FORMATTING": ""}
    command = ["man", "--warnings=w", "-P", "cat", "-l", str(page)]
    run = subprocess.run(command, capture_output=True, text=True, check=False, env=environment)
    return re.sub(".\b", "", run.stdout), run.stderr, run.returncode


def made(text, name="page.1"):
    """Exit status, page and complaint of tools/make_man.py for this source."""
    with tempfile.TemporaryDirectory() as folder:
        source = Path(folder, name + ".md")
        source.write_text(text)
        command = ["/usr/bin/python3", "-B", PROJECT / "tools/make_man.py", source, "1.2"]
        run = subprocess.run(command, capture_output=True, text=True, check=False)
        page = Path(folder, name)
        page.write_text(run.stdout)
        return run.returncode, (shown(page)[0] if run.returncode == 0 else ""), run.stderr


class Pages(unittest.TestCase):
    def test_every_document_is_a_page(self):
        self.assertEqual(sorted(path.stem for path in (PROJECT / "docs/man").iterdir()), sorted(PAGES))

    def test_man_has_no_complaint(self):
        for name in PAGES:
            with self.subTest(name):
                text, complaints, status = shown(BUILD / "man" / name)
                self.assertEqual((complaints, status), ("", 0))
                self.assertIn(f"{name.partition('.')[0].upper()}({name[-1]})", text)

    def test_man_would_complain(self):
        with tempfile.TemporaryDirectory() as folder:
            page = Path(folder, "bad.1")
            page.write_text((BUILD / "man" / "diagsh.1").read_text() + ".NOSUCHMACRO\n")
            self.assertIn("NOSUCHMACRO", shown(page)[1])

    def test_name_and_purpose_can_be_looked_up(self):
        for name in PAGES:
            run = subprocess.run(["lexgrog", BUILD / "man" / name], capture_output=True, text=True, check=False)
            self.assertIn(f'"{name.partition(".")[0]} - ', run.stdout)

    def test_pages_tell_the_options_of_their_programs(self):
        for name in ("boardsim.8", "diagsh.1"):
            program = name.partition(".")[0]
            run = subprocess.run([BUILD / "bin" / program, "--help"], capture_output=True, text=True, check=False)
            options = set(re.findall(r"(?<![\w-])--\w+", run.stdout + run.stderr)) - {"--help"}
            self.assertGreater(len(options), 3)
            told = set(re.findall(r"^ {7}(?:-\w, )?(--\w+)", shown(BUILD / "man" / name)[0], re.MULTILINE)) - {"--help"}
            self.assertEqual(told, options)


class Maker(unittest.TestCase):
    def test_what_roff_would_obey_is_shown_as_written(self):
        status, text, _ = made("# page(1): it\n\n## One\n\n.so it `printf 'a\\n'`\n'quoted'\n\n    .TH code\\d -x\n")
        self.assertEqual(status, 0)
        self.assertIn(".so it printf 'a\\n' 'quoted'", text)
        self.assertIn(".TH code\\d -x", text)

    def test_rows_become_terms(self):
        _, text, _ = made("# page(1): it\n\n## One\n\n| a | b |\n|---|---|\n| `x\\|y` | first |\n| | second | third |\n")
        self.assertRegex(text, r"x\|y\s+first\n")
        self.assertRegex(text, r"second\s+third\n")

    def test_link_over_two_lines_is_its_text(self):
        _, text, _ = made("# page(1): it\n\n## One\n\nsee [the\nother](a.md) one\n")
        self.assertIn("see the other one", text)

    def test_what_is_not_known_is_refused(self):
        for text in ("# page(1) it\n", "# other(1): it\n", "# page(1): it\n\n#### deep\n", "# page(1): it\n\n```\n"):
            status, _, complaint = made(text)
            self.assertEqual(status, 1, text)
            self.assertIn("page.1.md", complaint)


if __name__ == "__main__":
    unittest.main()
