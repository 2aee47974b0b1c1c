# SPDX-License-Identifier: GPL-2.0-or-later
"""`write` replaces the startup configuration as a whole or not at all, and says which."""
import os
import re
import signal

import pytest
from olt import wait_until
from vty import SUCCESS, WARNING

FOLDER = "/etc/frr"
FILE = f"{FOLDER}/diagd.conf"
SAVED = (f"Configuration saved to {FILE}\n", SUCCESS)
TEMPORARY = rf"{FILE}\.\w{{6}}\.tmp"


@pytest.fixture(scope="module")
def olt(traced_olt):
    return traced_olt


@pytest.fixture
def folder(olt):
    """The folder of the configuration as a file system of its own; a function that gives it a size, in pages left."""
    kept = olt.exec("mktemp", "-d", "/run/configuration.XXXXXX", check=True).stdout.strip()
    olt.exec("cp", "-a", f"{FOLDER}/.", kept, check=True)
    olt.exec("mount", "-t", "tmpfs", "-o", "size=1m", "tmpfs", FOLDER, check=True)
    olt.exec("cp", "-a", f"{kept}/.", FOLDER, check=True)
    assert olt.run("write", "enable") == SAVED

    def leave(pages):
        used = int(olt.exec("stat", "-f", "-c", "%b", FOLDER, check=True).stdout) - free_pages(olt)
        olt.exec("mount", "-o", f"remount,size={4096 * (used + pages)}", FOLDER, check=True)
        assert free_pages(olt) == pages

    yield leave
    olt.exec("umount", FOLDER, check=True)


def free_pages(olt):
    return int(olt.exec("stat", "-f", "-c", "%f", FOLDER, check=True).stdout)


def files(olt):
    """Every file of the folder: name and content."""
    names = olt.exec("find", FOLDER, "-type", "f", check=True).stdout.split()
    return {name: olt.exec("cat", name, check=True).stdout for name in names}


@pytest.mark.parametrize("line", ["write", "write file", "write memory", "copy running-config startup-config"])
def test_a_full_file_system_leaves_the_saved_configuration_and_is_said(olt, folder, line):
    before = files(olt)
    folder(0)
    assert olt.run(f"hostname {os.urandom(4).hex()}") == ("", SUCCESS)
    text, status = olt.run(line, "enable")
    assert "Can't write configuration file" in text and "No space left on device" in text
    assert "saved" not in text and status == WARNING
    assert files(olt) == before
    folder(10)
    assert olt.run(line, "enable") == SAVED


def test_what_fits_in_part_is_not_saved_in_part(olt, folder):
    before = files(olt)
    with olt.vty() as session:
        for line in ("alarm-log alarm all enable all", "alarm-log event all enable all"):
            assert session.run(line) == ("", SUCCESS)
    assert len(olt.run("show running-config", "enable")[0]) > 4096
    folder(1)
    text, status = olt.run("write", "enable")
    assert "No space left on device" in text and "saved" not in text and status == WARNING
    assert files(olt) == before and free_pages(olt) == 1


def test_a_configuration_that_cannot_be_synced_is_not_saved(olt, folder):
    before = files(olt)
    assert olt.run("hostname unsynced") == ("", SUCCESS)
    olt.faults("fsync nth=1 ret=-1 errno=5")
    text, status = olt.run("write", "enable")
    assert re.fullmatch(rf"Can't write configuration file {TEMPORARY}: Input/output error \(5\)\.\n", text)
    assert status == WARNING and files(olt) == before
    olt.faults()
    assert olt.run("write", "enable") == SAVED


def test_a_name_that_may_not_last_is_said(olt, folder):
    """The file is whole; its folder could not be synced."""
    assert olt.run("hostname perhaps") == ("", SUCCESS)
    olt.faults("fsync nth=3 ret=-1 errno=5")
    text, status = olt.run("write", "enable")
    assert "may be lost if the power fails: Input/output error" in text and status == WARNING
    olt.faults()
    assert "hostname perhaps\n" in files(olt)[FILE]
    assert set(files(olt)) == {FILE, f"{FILE}.sav", f"{FOLDER}/vty-password"}


def test_the_file_before_is_kept_as_the_backup(olt, folder):
    assert olt.run("hostname one") == ("", SUCCESS)
    assert olt.run("write", "enable") == SAVED
    one = files(olt)[FILE]
    assert olt.run("hostname two") == ("", SUCCESS)
    assert olt.run("write", "enable") == SAVED
    found = files(olt)
    assert found[f"{FILE}.sav"] == one and "hostname two\n" in found[FILE]
    # a write that was killed in between leaves both names on one file
    olt.exec("ln", "-f", FILE, f"{FILE}.sav", check=True)
    assert olt.run("write", "enable") == SAVED
    assert set(files(olt)) == set(found)


def test_a_backup_that_does_not_fit_is_not_taken_for_a_configuration(cold_olt):
    """The daemon starts from the backup where the file is missing; half a copy of it must not stay."""
    folder = cold_olt.state / "conf"
    (folder / "diagd.conf").rename(folder / "diagd.conf.sav")
    cold_olt.faults("fsync count=1 nth=1 ret=-1 errno=28")
    cold_olt.start(trace=True)
    assert {path.name for path in folder.iterdir()} == {"diagd.conf.sav", "vty-password"}
    cold_olt.restart()
    assert (folder / "diagd.conf").read_text() == (folder / "diagd.conf.sav").read_text()


def test_what_a_write_left_that_was_killed_goes_with_the_next_start(cold_olt):
    folder = cold_olt.state / "conf"

    def sizes():
        return {path.name: path.stat().st_size for path in folder.iterdir()}

    cold_olt.faults()
    cold_olt.start(trace=True)
    before = sizes()
    cold_olt.faults("fsync nth=1 delay_ms=60000")
    with cold_olt.vty() as session:
        session.send("write file")
        new = wait_until(lambda: [name for name, size in sizes().items() if name not in before and size], "a file is written")
        assert cold_olt.kill() == -signal.SIGKILL
    assert set(sizes()) == {*before, *new}
    cold_olt.faults()
    cold_olt.start()
    assert sizes() == before
