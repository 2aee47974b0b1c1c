# SPDX-License-Identifier: GPL-2.0-or-later
"""The logs of a simulated OLT stay small."""
import pytest
from olt import OLT
from vty import SUCCESS

MB = 1 << 20


def grow(log, size):
    with open(log, "ab") as file:
        file.truncate(size)


def test_a_log_that_has_grown_is_kept_once_and_begun_anew(olt):
    log, kept = olt.state / "log" / "diagd.log", olt.state / "log" / "diagd.log.1"
    for text in ("one", "two"):
        grow(log, 11 * MB)
        olt.exec(OLT, "logs", check=True)
        assert olt.run(f"logmsg informational {text}", "enable") == ("", SUCCESS)
        olt.wait_log(text)
        assert log.stat().st_size < MB and kept.stat().st_size >= 11 * MB
    assert sorted(path.name for path in log.parent.glob("diagd.log*")) == ["diagd.log", "diagd.log.1"]


def test_what_programs_printed_is_kept_once_and_begun_anew(olt):
    console = olt.state / "log" / "console.log"
    with open(console, "ab") as writer:
        grow(console, 11 * MB)
        olt.exec(OLT, "logs", check=True)
        writer.write(b"printed later\n")
    assert console.read_bytes() == b"printed later\n"
    assert console.with_suffix(".log.1").stat().st_size == 11 * MB


@pytest.mark.parametrize("name", ["diagd", "console"])
def test_a_small_log_is_left_alone(olt, name):
    log = olt.state / "log" / f"{name}.log"
    log.touch()
    before = log.stat()
    olt.exec(OLT, "logs", check=True)
    assert log.stat().st_ino == before.st_ino and log.stat().st_size >= before.st_size
