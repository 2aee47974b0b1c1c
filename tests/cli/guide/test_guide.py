# SPDX-License-Identifier: GPL-2.0-or-later
"""Every command line of the guide's pages, and of board.json's, is run on an OLT, and shows what its page says
(documents.py has the form).

The OLT has the modules of a new one, and values that stand still.
"""
import contextlib
import os
import re
import signal
import subprocess

import pytest
from documents import matches, steps
from olt import BUILD, PROJECT, wait_until

PAGES = {path.name: path for path in [*sorted((PROJECT / "docs" / "guide").glob("*.md")), PROJECT / "docs" / "board.json.md"]}
# Its receivers run in a terminal of their own; what they get is held by the tests of log servers and traps.
OTHERS = {"alarms.md"}


def replaced(text, places):
    return re.sub("|".join(map(re.escape, places)), lambda match: places[match[0]], text)


class Reader:
    """Who reads a page and types its lines in the project's folder."""

    def __init__(self, olt, folder):
        self.olt = olt
        self.places = {"build/olt/log/console.log": str(olt.stderr_path), "build/olt": str(olt.state),
                       "build/release": str(BUILD), "/tmp/": f"{folder}/"}
        self.environment = {**os.environ, "BOARDSIM_DIR": str(olt.state / "board"), "OLT_STATE": str(olt.state),
                            "PATH": f"{BUILD / 'bin'}:{os.environ['PATH']}", "COLUMNS": "80"}

    def type(self, command):
        """What the command shows, as lines, with the names of the page."""
        if command.startswith("./run") and "--net" not in command:  # in the first terminal, after Control-C
            self.olt.restart()
            return []
        command = replaced(command, self.places)
        done = subprocess.run(["bash", "-c", command], cwd=PROJECT, env=self.environment, stdin=subprocess.DEVNULL,
                              stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True, errors="replace", check=False)
        return replaced(done.stdout, {place: name for name, place in self.places.items()}).splitlines()

    def follow(self, step):
        shown = []

        def as_written():
            shown[:] = self.type(step.command)
            return matches(shown, step.expected)

        if step.waits:
            with contextlib.suppress(AssertionError):
                wait_until(as_written, step)
        else:
            as_written()
        if not matches(shown, step.expected):
            assert shown == step.expected, f"{step} showed\n" + "\n".join(shown)


def test_run_builds_every_program_that_a_page_needs():
    scripts = [path for path in (PROJECT / "docs" / "guide").iterdir() if not path.suffix]
    typed = [step.command for page in PAGES.values() for step in steps(page.read_text())]
    lines = "\n".join([*typed, *(path.read_text() for path in scripts)])
    needed = {name for name in ("boardctl", "diagsh", "optics") if re.search(rf"(?:^|[;|(] *){name} ", lines, re.M)}
    assert needed == {"boardctl", "diagsh", "optics"}
    targets = re.search(r'tools/build" release (.*)', (PROJECT / "run").read_text())[1].split()
    assert needed <= {target.removesuffix("_program") for target in targets}


def page_of(name):
    starts_release = BUILD.name != "release" and "$ ./run --no-build --net" in PAGES[name].read_text()
    return pytest.param(name, marks=pytest.mark.skip(reason="./run always starts the release build")) if starts_release else name


@pytest.mark.parametrize("page", [page_of(name) for name in PAGES if name not in OTHERS])
def test_each_line_of_a_page_shows_what_the_page_says(cold_olt, tmp_path, page):
    found = steps(PAGES[page].read_text())
    assert found, "a page of the guide has lines to be typed"
    cold_olt.populate()
    reader = Reader(cold_olt.start(), tmp_path)
    try:
        for step in found:
            reader.follow(step)
    finally:
        for left in tmp_path.glob("*.pid"):  # in the background still
            with contextlib.suppress(ProcessLookupError):
                os.kill(int(left.read_text()), signal.SIGTERM)
