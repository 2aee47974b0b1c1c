# SPDX-License-Identifier: GPL-2.0-or-later
"""The summary of a run: what counts as passed, failed and skipped, and what it says of runners that did not end well."""
import subprocess
import tempfile
import unittest
from pathlib import Path

PROJECT = Path(__file__).resolve().parents[3]
PASSED = '<testcase classname="a" name="good" status="run"/>'
FAILED = '<testcase classname="a" name="bad" status="fail"><failure/></testcase>'
SKIPPED = '<testcase classname="a" name="left" status="notrun"><skipped message="SKIP"/></testcase>'
MISSING = '<testcase classname="a" name="gone" status="notrun"><skipped message=""/></testcase>'


class Summary(unittest.TestCase):
    def setUp(self):
        self.folder = Path(self.enterContext(tempfile.TemporaryDirectory()))

    def report(self, name, *cases):
        (self.folder / f"{name}.xml").write_text(f"<testsuite>{''.join(cases)}</testsuite>")

    def summary(self, *results):
        """Its lines that are not empty, and its exit status."""
        done = subprocess.run(["/usr/bin/python3", PROJECT / "tools/test_summary.py", self.folder, *results],
                              capture_output=True, text=True)
        self.assertEqual(done.stderr, "")
        return [line for line in done.stdout.splitlines() if line], done.returncode

    def test_passed_tests_of_all_runners_are_added_up(self):
        self.report("unit", PASSED, PASSED)
        self.report("system", PASSED)
        self.assertEqual(self.summary("unit=0", "system=0"), (["3 passed, 0 failed"], 0))

    def test_failed_and_skipped_tests_are_named_and_a_skipped_one_has_not_passed(self):
        self.report("unit", PASSED, FAILED, SKIPPED)
        self.assertEqual(self.summary("unit=8"),
                         (["SKIPPED a::left", "FAILED a::bad", "1 skipped, not counted as passed", "1 passed, 1 failed"], 1))

    def test_a_test_whose_program_is_missing_has_failed(self):
        self.report("unit", PASSED, MISSING)
        self.assertEqual(self.summary("unit=8"), (["FAILED a::gone", "1 passed, 1 failed"], 1))

    def test_a_runner_that_fails_without_a_failed_test_has_failed(self):
        self.report("system", PASSED)
        lines, status = self.summary("system=3")
        self.assertEqual((lines[-1], status), ("1 passed, 1 failed", 1))

    def test_a_runner_without_a_report_has_failed(self):
        lines, status = self.summary("system=0")
        self.assertEqual((lines[-1], status), ("0 passed, 1 failed", 1))

    def test_nothing_selected_is_no_failure_of_the_runner_and_no_success_of_the_run(self):
        self.report("unit")
        self.report("system", PASSED)
        self.assertEqual(self.summary("unit=8", "system=0"), (["1 passed, 0 failed"], 0))
        self.report("system")
        self.assertEqual(self.summary("unit=8", "system=5"), (["0 passed, 0 failed"], 1))

    def test_a_folder_of_tests_that_is_skipped_as_a_whole_selects_nothing(self):
        self.report("unit", PASSED)
        self.report("system", SKIPPED)
        lines, status = self.summary("unit=0", "system=5")
        self.assertEqual((lines[-1], status), ("1 passed, 0 failed", 0))

    def test_stopped_system_tests_are_named_with_what_they_were_at(self):
        self.report("system", PASSED, FAILED)
        (self.folder / "running").mkdir()
        (self.folder / "running/411").write_text("core/test_a.py::test_hangs")
        (self.folder / "running/412").write_text("core/test_b.py::test_hangs_too")
        lines, status = self.summary("system=124")
        self.assertIn("FAILED system tests were stopped, the run had its time; running: core/test_a.py::test_hangs,"
                      " core/test_b.py::test_hangs_too", lines)
        self.assertEqual((lines[-1], status), ("1 passed, 2 failed", 1))

    def test_stopped_unit_tests_are_named_with_what_they_were_at(self):
        (self.folder / "unit.log").write_text(
            "      Start  1: shell_test.Shell.a_word\n"
            "      Start 12: shell_test.Shell.a_line\n"
            " 1/20 Test  #1: shell_test.Shell.a_word ..........   Passed    0.01 sec\n")
        lines, _ = self.summary("unit=124")
        self.assertIn("FAILED unit tests were stopped, the run had its time; running: shell_test.Shell.a_line", lines)


if __name__ == "__main__":
    unittest.main()
