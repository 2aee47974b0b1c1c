# SPDX-License-Identifier: GPL-2.0-or-later
"""What precedes a reset: logs to flash, the watchdog stopped; the box's shell saving every configuration."""
import subprocess
import threading

import pytest
from calls import in_order, of
from olt import OLT, wait_until
from traced_fixtures import no_faults, olt  # noqa: F401
from vty import takes_commands

BACKUP = "cp /var/log/* /media/config/var/log/laststart/ -rf"
STOP = "killall -9 watchfrr &> /dev/null"
VTYSH = "/usr/local/bin/vtysh"


@pytest.fixture
def watchdog(olt):
    """A process of the box that bears the watchdog's name."""
    olt.exec("cp", "/bin/sleep", "/run/watchfrr", check=True)
    process = subprocess.Popen(olt.inside("/run/watchfrr", "600"), stdin=subprocess.DEVNULL)
    wait_until(lambda: olt.exec("pgrep", "-x", "watchfrr").returncode == 0, "the watchdog")
    yield process
    process.kill()
    process.wait()


def run(olt, command):
    before, out = len(olt.trace()), len(olt.stdout())
    text, rc = olt.run(command)
    calls = [call for call in olt.trace()[before:] if call.thread == "main"]
    return text, rc, calls, olt.stdout()[out:]


STEPS = [r'raise reason="log_backup"', r'pal_system line="cp ', r"lower", r"sync",
         r'raise reason="system_reboot"', r'pal_system line="killall ', r"lower", r"sync"]


def test_reboot_files_a_record_backs_up_and_stops_the_watchdog_in_this_order(olt):
    text, rc, calls, out = run(olt, "reboot")
    assert (text, rc) == ("Restarting system...\r\n", 0)
    assert out in ("Resetting ...\r\n", "Resetting ...\r")
    in_order(calls, "cli_log", *STEPS)
    own = of(calls, "cli_log|raise|lower|pal_system|sync|misc_.*|sclient_.*|semaphore_.*")
    assert [call.op for call in own if call.op not in ("semaphore_p", "semaphore_v")] == [
        "cli_log", "raise", "pal_system", "lower", "sync", "raise", "pal_system", "lower", "sync"]
    record = bytes.fromhex(of(calls, "cli_log")[0].values["rec"])
    assert record == (29).to_bytes(2, "little") + bytes(26) + (2).to_bytes(4, "little")
    assert of(calls, "cli_log")[0].values["text"] == "reset by command"
    assert [call.values["line"] for call in of(calls, "pal_system")] == [BACKUP, STOP]


def test_the_reset_stands_in_the_alarm_log(olt):
    run(olt, "reboot")
    assert "reset by command" in olt.run("show alarm-log")[0]


def test_reload_does_the_same_without_a_record_and_without_a_word(olt):
    text, rc, calls, out = run(olt, "reload")
    assert (text, rc, out) == ("", 0, "")
    in_order(calls, *STEPS)
    assert not of(calls, "cli_log|sclient_.*|misc_.*")


def test_the_logs_are_on_flash_folders_and_all(olt):
    olt.exec("mkdir", "-p", "/var/log/frr/old", check=True)
    olt.exec("cp", "/etc/hostname", "/var/log/frr/old/note", check=True)
    olt.run("reload")
    saved = olt.state / "flash" / "config" / "var" / "log" / "laststart"
    assert (saved / "frr" / "old" / "note").read_bytes() == (olt.state / "log" / "frr" / "old" / "note").read_bytes()
    assert (saved / "diagd.log").exists()


def test_an_older_backup_is_overwritten(olt):
    saved = olt.state / "flash" / "config" / "var" / "log" / "laststart" / "marker"
    olt.exec("mkdir", "-p", "/media/config/var/log/laststart")
    saved.write_text("old")
    (olt.state / "log" / "marker").write_text("new")
    olt.run("reload")
    assert saved.read_text() == "new"


@pytest.mark.parametrize("command", ["reboot", "reload"])
def test_the_watchdog_is_killed(olt, watchdog, command):
    olt.run(command)
    # the shell runs the line in the background
    wait_until(lambda: olt.exec("pgrep", "-x", "watchfrr").returncode == 1, "the watchdog's end")
    assert olt.run("show version")[1] == 0  # the daemon itself goes on


@pytest.mark.parametrize("fault", ["pal_system ret=-1 errno=12", "cli_log ret=-1", "pal_system nth=1 ret=256"])
def test_a_step_that_fails_never_holds_a_reset_up(olt, fault):
    olt.faults(fault)
    text, rc, calls, _ = run(olt, "reboot")
    assert (text, rc) == ("Restarting system...\r\n", 0)
    in_order(calls, "cli_log", *STEPS)


def test_a_flash_without_the_folder_never_holds_a_reset_up(olt):
    folder = olt.state / "flash" / "config" / "var" / "log"
    aside = folder.with_name("aside")
    folder.rename(aside)
    try:
        assert run(olt, "reload")[:2] == ("", 0)
    finally:
        aside.rename(folder)


def test_privileges_are_raised_around_the_shell_lines_only(olt):
    assert olt.root_threads() == []
    olt.faults("pal_system delay_ms=700")
    runner = threading.Thread(target=olt.run, args=("reload",))
    runner.start()
    wait_until(lambda: olt.root_threads() == ["diagd"], "raised privileges")
    runner.join()
    assert olt.root_threads() == []


def test_the_shell_line_works_as_root(olt):
    """What only root may read is saved, too."""
    olt.exec("install", "-m", "0600", "-o", "root", "/dev/null", "/var/log/private", check=True)
    olt.run("reload")
    assert (olt.state / "flash" / "config" / "var" / "log" / "laststart" / "private").exists()


# --- the box's shell


def write(olt, command="write"):
    return olt.exec(VTYSH, "-c", command)


@pytest.mark.parametrize("command", ["write", "write file", "write memory"])
def test_the_boxs_shell_saves_the_daemons_configuration(fresh_olt, command):
    file = fresh_olt.state / "conf" / "diagd.conf"
    fresh_olt.run("alarm-log flash level alert")
    assert "alert" not in file.read_text()
    done = write(fresh_olt, command)
    assert done.returncode == 0, done.stderr
    assert "alarm-log flash level alert\n" in file.read_text()
    fresh_olt.restart()
    assert "alert" in fresh_olt.run("show alarm-log flash level")[0]


def test_the_boxs_shell_saves_every_daemon_and_passes_over_a_dead_ones_socket(fresh_olt):
    zebra = subprocess.Popen(fresh_olt.inside(OLT, "zebra"), stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL,
                             stderr=subprocess.DEVNULL)
    try:
        wait_until(lambda: takes_commands(fresh_olt.state / "run" / "zebra.vty"), "zebra's vty")
        done = write(fresh_olt)
        assert done.returncode == 0, done.stderr
        assert (fresh_olt.state / "conf" / "zebra.conf").exists()
    finally:
        fresh_olt.exec("pkill", "-x", "zebra")
        zebra.wait()
    assert (fresh_olt.state / "run" / "zebra.vty").exists()
    assert write(fresh_olt).returncode == 0


def test_a_daemon_that_cannot_save_is_named_and_gives_the_exit_status(fresh_olt):
    fresh_olt.exec("chown", "root:root", "/etc/frr", check=True)
    fresh_olt.exec("chmod", "0555", "/etc/frr", check=True)
    before = (fresh_olt.state / "conf" / "diagd.conf").read_text()
    fresh_olt.run("alarm-log flash level alert")
    done = write(fresh_olt)
    assert done.returncode != 0
    assert "diagd.vty" in done.stderr
    assert (fresh_olt.state / "conf" / "diagd.conf").read_text() == before


def test_without_any_daemon_nothing_was_saved(cold_olt):
    done = write(cold_olt)
    assert done.returncode != 0 and "no daemon answers" in done.stderr


def test_other_commands_of_the_boxs_shell_run_in_the_enable_node(olt):
    done = olt.exec(VTYSH, "-c", "show running-config")
    assert done.returncode == 0 and "alarm-log flash level" in done.stdout
