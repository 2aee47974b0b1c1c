# SPDX-License-Identifier: GPL-2.0-or-later
"""Where tools/deps takes the packages of the older suite from."""
import subprocess

import pytest
from project import PROJECT

DEPS = PROJECT / "tools" / "deps"
# As a step does it, but for the archive: one that has nothing.
FETCH = f"""
. {DEPS}/apt.sh
. {DEPS}/older_suite.sh
archive_uri() {{ echo file:$deps/archive/; }}
fetch_older "$@"
"""
WANTED = ["one=1.0-1", "two=2:1.0-1"]


@pytest.fixture
def packages(tmp_path):
    """A function that makes a package in a folder of the user's."""
    folder = tmp_path / "packages"
    folder.mkdir()

    def make(name, version, architecture="all"):
        control = tmp_path / f"{name}-{architecture}" / "DEBIAN" / "control"
        control.parent.mkdir(parents=True)
        control.write_text(f"Package: {name}\nVersion: {version}\nArchitecture: {architecture}\nMaintainer: nobody <n@example.org>\n"
                           "Description: empty\n")
        subprocess.run(["dpkg-deb", "--build", control.parent.parent, folder / f"{name}-{architecture}.deb"], check=True,
                       capture_output=True)

    make.folder = folder
    return make


@pytest.fixture
def fetch(tmp_path):
    """A function that fetches what is wanted; the exit status, the last line said, what setup would show, and the files."""
    work, why = tmp_path / "work", tmp_path / "why"
    work.mkdir()
    (tmp_path / "archive").mkdir()

    def run(folder):
        environment = {"PATH": "/usr/sbin:/usr/bin:/sbin:/bin", "deps": str(tmp_path), "why": str(why)}
        environment |= {"DIAGD_PACKAGES": str(folder)} if folder else {}
        done = subprocess.run(["bash", "-euo", "pipefail", "-c", FETCH, "fetch", *WANTED], cwd=work, env=environment, text=True,
                              stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.STDOUT)
        shown = why.read_text() if why.exists() else None
        return done.returncode, (done.stdout.splitlines() or [""])[-1], shown, sorted(path.name for path in work.iterdir())

    return run


def test_packages_of_the_users_folder_are_taken_without_the_archive(packages, fetch):
    packages("one", "1.0-1")
    packages("two", "2:1.0-1")
    assert fetch(packages.folder) == (0, "", None, ["one-all.deb", "two-all.deb"])


def test_what_neither_has_is_said_in_one_line_with_where_it_was_looked_for(tmp_path, packages, fetch):
    packages("one", "1.0-1")
    line = f"missing: two=2:1.0-1; looked in {packages.folder} and bullseye main of file:{tmp_path}/archive"
    assert fetch(packages.folder) == (1, line, line + "\n", ["one-all.deb"])


def test_without_a_folder_the_line_says_how_to_name_one(tmp_path, fetch):
    line = (f"missing: one=1.0-1 two=2:1.0-1; looked in bullseye main of file:{tmp_path}/archive; "
            "DIAGD_PACKAGES names no folder")
    assert fetch(None) == (1, line, line + "\n", [])


def test_another_version_or_machine_is_not_taken(packages, fetch):
    other = "arm64" if subprocess.check_output(["dpkg", "--print-architecture"], text=True) != "arm64\n" else "amd64"
    packages("one", "1.0-2")
    packages("two", "2:1.0-1", other)
    status, line, _, files = fetch(packages.folder)
    assert status == 1 and line.startswith("missing: one=1.0-1 two=2:1.0-1; ") and files == []
