# SPDX-License-Identifier: GPL-2.0-or-later
"""The order of disturbed tests."""
import os
import subprocess
import sys
from itertools import groupby

import pytest
from project import PROJECT

FILES = ["self/test_calls.py", "self/test_tables.py", "self/test_olt.py"]


def collected(seed):
    """The tests in the order in which they would run."""
    environment = {name: value for name, value in os.environ.items() if name != "DIAGD_DISTURB"}
    if seed:
        environment["DIAGD_DISTURB"] = seed
    done = subprocess.run([sys.executable, "-m", "pytest", "-q", "--collect-only", "-p", "no:cacheprovider", *FILES],
                          cwd=PROJECT / "tests" / "cli", env=environment, capture_output=True, text=True, check=True)
    return [line for line in done.stdout.splitlines() if "::" in line]


@pytest.fixture(scope="module")
def usual():
    return collected(None)


def test_undisturbed_they_come_as_they_are_named_and_written(usual):
    assert [file for file, _ in groupby(usual, lambda test: test.split("::")[0])] == FILES


def test_disturbed_they_come_in_another_order_a_file_at_a_time(usual):
    tests = collected("7")
    assert sorted(tests) == sorted(usual) and tests != usual
    assert len([file for file, _ in groupby(tests, lambda test: test.split("::")[0])]) == len(FILES)


def test_a_seed_is_an_order():
    assert collected("7") == collected("7") != collected("8")
