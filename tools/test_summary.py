#!/usr/bin/python3
# SPDX-License-Identifier: GPL-2.0-or-later
"""Adds up the JUnit reports of one ./test run: one line per failed or skipped test, then the totals.

usage: test_summary.py LOG_FOLDER NAME=EXIT_STATUS...

The report of NAME is LOG_FOLDER/NAME.xml.  EXIT_STATUS 124, timeout's, says that it was stopped: the tests that it was
at are the files' contents in LOG_FOLDER/running, or those that the log of ctest says to have started and no more.

A runner that failed without a failed test (it crashed, its report is missing) counts as one failure; a skipped
test is not a passed one.
"""

import re
import sys
import xml.etree.ElementTree as ElementTree
from pathlib import Path

NOTHING_SELECTED = {"unit": (0, 8), "system": (5,)}  # ctest, pytest: no test matched
STOPPED = 124


def read_report(path):
    """Names of the passed, failed and skipped tests of a report."""
    passed, failed, skipped = [], [], []
    for case in ElementTree.parse(path).iter("testcase"):
        name = case.get("classname", "") + "::" + case.get("name", "")
        skip = case.find("skipped")
        if skip is not None:
            # ctest says the same of a test that chose not to run and of one whose program is missing.
            missing = case.get("status") == "notrun" and "SKIP" not in skip.get("message", "")
            (failed if missing else skipped).append(name)
        elif case.find("failure") is not None or case.find("error") is not None or case.get("status") == "fail":
            failed.append(name)
        elif case.get("status") == "disabled":
            skipped.append(name)
        else:
            passed.append(name)
    return passed, failed, skipped


def running(folder, name):
    """The tests that a stopped runner was at."""
    if name == "system":
        return sorted(path.read_text() for path in Path(folder, "running").glob("*"))
    log = Path(folder, name + ".log").read_text(errors="replace")
    started = dict(re.findall(r"^ +Start +(\d+): (.+)$", log, re.M))
    done = re.findall(r"^ *\d+/\d+ Test +#(\d+):", log, re.M)
    return [test for number, test in started.items() if number not in done]


def main(folder, *results):
    passed, failed, skipped = [], [], []
    for name, status in (result.split("=") for result in results):
        status = int(status)
        try:
            report = read_report(Path(folder, name + ".xml"))
        except (OSError, ElementTree.ParseError) as error:
            report = [], [f"{name} tests left no report: {error}"], []
        if status == STOPPED:
            at = running(folder, name)
            report[1].append(f"{name} tests were stopped, the run had its time; running: {', '.join(at) or 'none'}")
        nothing = not (report[0] or report[1]) and status in NOTHING_SELECTED.get(name, ())
        if status != 0 and not report[1] and not nothing:
            report[1].append(f"{name} tests ended with status {status}; see {folder}/{name}.log")
        for total, part in zip((passed, failed, skipped), report):
            total.extend(part)

    print()
    for word, names in (("SKIPPED", skipped), ("FAILED", failed)):
        for name in names:
            print(f"{word} {name}")
    if skipped:
        print(f"{len(skipped)} skipped, not counted as passed")
    print(f"{len(passed)} passed, {len(failed)} failed")
    return 0 if passed and not failed else 1


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
