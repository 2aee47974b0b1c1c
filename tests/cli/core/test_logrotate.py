# SPDX-License-Identifier: GPL-2.0-or-later
"""What we ship for logrotate keeps the daemon's log small, and the daemon writes on."""
import gzip

import pytest
from olt import wait_until
from project import PROJECT
from vty import SUCCESS

SHIPPED = PROJECT / "packaging" / "logrotate" / "diagd"
LARGE = 2 << 20
SMALL = 1 << 19


@pytest.fixture
def rotate(olt):
    """A function that runs logrotate as the box's timer does."""
    # It takes no file that others than root may change, as a checkout may be.
    olt.exec("install", "-m", "0644", SHIPPED, "/run/olt/logrotate", check=True)

    def run():
        done = olt.exec("/run/olt/deps/tools/bin/logrotate", "--state", "/run/olt/logrotate.state", "/run/olt/logrotate")
        assert (done.returncode, done.stdout, done.stderr) == (0, "", "")

    return run


def say(olt, text, size):
    """Has the daemon log a text, and makes of its log one of this size."""
    assert olt.run(f"logmsg informational {text}", "enable") == ("", SUCCESS)
    olt.wait_log(text)
    with open(olt.state / "log" / "diagd.log", "ab") as file:
        file.truncate(size)


def logs(olt):
    return {path.name: path for path in (olt.state / "log").glob("diagd.log*")}


def test_a_small_log_is_left_alone(olt, rotate):
    say(olt, "small", SMALL)
    before = {name: path.stat().st_ino for name, path in logs(olt).items()}
    rotate()
    assert {name: path.stat().st_ino for name, path in logs(olt).items()} == before


def test_the_daemon_goes_on_in_a_new_log_and_five_are_kept(olt, rotate):
    for number in range(7):
        say(olt, f"turn_{number}", LARGE)
        rotate()
        wait_until(lambda: "/var/log/diagd.log" in olt.fds().values(), "the daemon has its new log open")
    say(olt, "turn_7", SMALL)
    found = logs(olt)
    assert set(found) == {"diagd.log", "diagd.log.1", "diagd.log.2.gz", "diagd.log.3.gz", "diagd.log.4.gz"}
    said = {0: found["diagd.log"].read_bytes(), 1: found["diagd.log.1"].read_bytes()}
    said |= {turn: gzip.decompress(found[f"diagd.log.{turn}.gz"].read_bytes()) for turn in (2, 3, 4)}
    for turn, text in said.items():
        assert [number for number in range(8) if b"turn_%d" % number in text] == [7 - turn]
    assert (found["diagd.log"].stat().st_mode & 0o777, found["diagd.log"].stat().st_uid) == (0o640, 1)
