# SPDX-License-Identifier: GPL-2.0-or-later
"""Fixtures: OLTs in private boxes, so that tests run side by side."""

import itertools
import os
import random
import shutil
import signal
from pathlib import Path

import pytest

from olt import DISTURB, PROJECT, Olt, prepared_database

_numbers = itertools.count()

# Shells start what runs in the background with these ignored, and what the tests start would inherit that.
for _number in (signal.SIGINT, signal.SIGQUIT):
    if signal.getsignal(_number) == signal.SIG_IGN:
        signal.signal(_number, signal.SIG_DFL)


@pytest.fixture(scope="session")
def states(worker_id):
    """A folder for the state folders of this worker's OLTs, gone at the end."""
    folder = PROJECT / "build" / "test-state" / f"{worker_id}-{os.getpid()}"
    folder.mkdir(parents=True)
    yield folder
    shutil.rmtree(folder)


@pytest.fixture(scope="session")
def database():
    """A prepared database to copy."""
    return prepared_database()


@pytest.fixture(scope="module")
def make_olt(states, database):
    """A function that makes a box with its board; the daemon is not started yet."""
    made = []

    def make(**how):
        made.append(Olt(states / str(next(_numbers)), template=database, **how))
        return made[-1]

    yield make
    _close(made)


def _close(olts):
    errors = []
    for olt in olts:
        try:
            olt.close()
        except AssertionError as error:
            errors.append(error)
    assert not errors, errors


@pytest.fixture(scope="module")
def olt(make_olt):
    """An OLT that the tests of a module share."""
    return make_olt().start()


@pytest.fixture(scope="module")
def traced_olt(make_olt):
    """An OLT that the tests of a module share, its calls recorded and open to faults."""
    shared = make_olt()
    shared.faults()
    return shared.start(trace=True)


@pytest.fixture
def cold_olt(states, database):
    """An OLT of the test's own whose daemon is not started yet."""
    own = Olt(states / str(next(_numbers)), template=database)
    yield own
    _close([own])


@pytest.fixture
def fresh_olt(cold_olt):
    """An OLT of the test's own."""
    return cold_olt.start()


def pytest_collection_modifyitems(items):
    """Disturbed, files come in any order, and the tests within one, all workers agreeing."""
    if not DISTURB:
        return
    chance = random.Random(DISTURB)
    files = {}
    for item in items:
        files.setdefault(item.path, []).append(item)
    groups = list(files.values())
    chance.shuffle(groups)
    for group in groups:
        chance.shuffle(group)
    items[:] = itertools.chain(*groups)


@pytest.hookimpl(hookwrapper=True)
def pytest_runtest_protocol(item):
    """The file of this process in the folder RUNNING_TESTS names the test that it is at."""
    folder = os.environ.get("RUNNING_TESTS")
    if not folder:
        yield
        return
    path = Path(folder, str(os.getpid()))
    path.write_text(item.nodeid)
    outcome = yield
    if not outcome.excinfo:  # else the run is stopped here
        path.unlink()


@pytest.hookimpl(hookwrapper=True)
def pytest_runtest_makereport(item):
    """A failed test shows the end of what its daemon said."""
    outcome = yield
    report = outcome.get_result()
    if not report.failed:
        return
    for value in getattr(item, "funcargs", {}).values():
        if isinstance(value, Olt):
            for name, text in (("log", value.log()), ("stdout", value.stdout()), ("stderr", value.stderr())):
                if text:
                    report.sections.append((f"diagd {name}", text[-4000:]))
