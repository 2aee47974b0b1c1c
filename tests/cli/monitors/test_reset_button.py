# SPDX-License-Identifier: GPL-2.0-or-later
"""The reset push-button: its line and register, short and long presses, and what cannot be had."""
import signal
from pathlib import Path

import pytest
from calls import in_order, of
from monitors import calls_of, records, start_calls, steps, stopped, wait_call, wait_thread
from olt import wait_until
from proc_files import bound

REBOOT = (29, 2, "reset by push-button")
ERASE = (31, 2, "erase partial config by push-button")
RESTARTING = "Restarting system by push-button...\r\n"
SAVE = "export LD_LIBRARY_PATH=/usr/local/lib:/usr/lib:/lib;/usr/local/bin/vtysh -c write"
SHELL = "/usr/local/bin/vtysh"
GPIO, UIO, SIZE = "/dev/tq_gpio_cfg", "/dev/uio0", "/sys/class/uio/uio0/maps/map0/size"
HURRIED = "nanosleep thread=reset_monitor ret=0 delay_ms=50"
WORK = "sclient_send_message|system|cli_log|pal_system|sync|raise|lower|semaphore_[pv]|misc_.*"


@pytest.fixture
def olt(cold_olt):
    """Its samples come every 50 ms."""
    cold_olt.faults(HURRIED)
    return cold_olt


def ended(olt):
    """Until the thread has done all that a press asks of it."""
    wait_until(lambda: "reset_monitor" not in olt.threads(), "the thread ends")


def pauses(olt):
    return of(calls_of(olt, "reset_monitor"), "nanosleep")


def work(olt):
    return of(calls_of(olt, "reset_monitor"), WORK)


def press(olt):
    """Presses the button between two calls of the daemon; returns the number of its calls before."""
    with stopped(olt):
        olt.boardctl("button", "press")
        return len(olt.trace())


def press_samples(olt, count):
    """Holds the button for so many samples or a few more; returns the number of calls before the release."""
    wait_call(olt, "reset_monitor", "nanosleep", since=press(olt), count=count)
    with stopped(olt):
        olt.boardctl("button", "release")
        return len(olt.trace())


def short_press(olt):
    press_samples(olt, 2)
    ended(olt)


def long_press(olt):
    """Returns the number of calls before it."""
    before = press(olt)
    ended(olt)
    return before


def test_it_sets_up_the_line_maps_the_register_and_starts_a_joinable_thread(cold_olt):
    cold_olt.start(trace=True)
    calls = start_calls(cold_olt, "reset_monitor")
    found = in_order(calls, r'raise reason="reset_monitor"', rf'open path="{GPIO}" flags=', r"ioctl .*request=0x0*3 word=0x0*200 -> 0",
                     rf'open path="{UIO}" flags=', rf'fopen path="{SIZE}" ', r"lower ", r"pthread_create ")
    o_rdwr, o_sync = 0o2, 0o4010000
    assert int(found[1].values["flags"], 0) & 3 == o_rdwr
    assert int(found[3].values["flags"], 0) & (3 | o_sync) == o_rdwr | o_sync
    assert of(calls, "pthread_detach") == []
    wait_thread(cold_olt, "reset_monitor")
    files = list(cold_olt.fds().values())
    assert GPIO not in files and any(name.endswith("uio0") for name in files)


def test_a_sample_is_taken_every_200_ms(cold_olt):
    cold_olt.start(trace=True)
    pauses = wait_call(cold_olt, "reset_monitor", "nanosleep", count=12)
    whole = [call for call in pauses if call.result == "0"]
    assert {call.values["ms"] for call in whole} >= {"200"}
    assert all(later.time_ms - earlier.time_ms >= 199 for earlier, later in zip(whole[1:], whole[2:])), "whole milliseconds"


def test_a_button_that_is_not_pressed_does_nothing(olt):
    olt.start(trace=True)
    wait_call(olt, "reset_monitor", "nanosleep", count=60)
    assert work(olt) == []
    assert "reset_monitor" in olt.threads()


def test_a_short_press_saves_the_logs_and_reboots(olt):
    olt.start(trace=True)
    short_press(olt)
    assert records(olt, "reset_monitor") == [REBOOT]
    assert olt.stdout() == RESTARTING
    in_order(work(olt), r"cli_log id=29 ", r'raise reason="log_backup"', r"pal_system .*/laststart/", r"lower ", r"sync ",
             r'raise reason="system_reboot"', r"pal_system .*killall -9 watchfrr", r"lower ", r"sync ")
    assert of(work(olt), "sclient_send_message|system|semaphore_p|misc_.*") == [], "no peer, no shell, no board"
    assert "reset by push-button" in olt.run("show alarm-log")[0]


def test_a_press_is_told_before_its_work_is_done(olt):
    olt.start(trace=True)
    go = olt.state / "log" / "go"
    with bound(olt, "/usr/bin/cp", "#!/bin/sh\nuntil [ -e /var/log/go ]; do sleep 0.01; done\n", mode=0o755):
        press_samples(olt, 2)
        wait_until(lambda: olt.stdout() == RESTARTING, "the press is told")
        go.touch()
        ended(olt)


def test_one_sample_is_enough(olt):
    olt.start(trace=True)
    press_samples(olt, 1)
    ended(olt)
    assert records(olt, "reset_monitor") == [REBOOT]


def test_24_samples_are_a_short_press(cold_olt):
    olt = cold_olt
    pause = "nanosleep thread=reset_monitor ret=0"
    for patience_s in (2, 10, 50):  # after the 24th sample, for the hand that lets go
        olt.faults(f"{pause} nth=1 count=24 delay_ms=5", f"{pause} nth=25 count=1 delay_ms={patience_s * 1000}",
                   f"{pause} nth=26 count=99 delay_ms=5")
        olt.boardctl("button", "press")
        olt.start(trace=True)
        wait_until(lambda: len(pauses(olt)) >= 24, "24 pressed samples")
        olt.boardctl("button", "release")
        if len(pauses(olt)) == 24:
            break
        olt.stop()
    else:
        pytest.fail("the hand was never fast enough")
    ended(olt)
    assert records(olt, "reset_monitor") == [REBOOT]
    assert olt.stdout().endswith(RESTARTING)


def test_a_long_press_acts_while_the_button_is_held_in_its_order(olt):
    olt.start(trace=True)
    begin = long_press(olt)
    assert records(olt, "reset_monitor") == [ERASE, REBOOT]
    assert olt.stdout().endswith(RESTARTING)
    found = in_order(work(olt), r"sclient_send_message ", r"system ", r"cli_log id=31 ", r"cli_log id=29 ",
                     r'raise reason="log_backup"', r"pal_system ", r"lower ", r"sync ", r'raise reason="system_reboot"',
                     r"pal_system ", r"lower ", r"sync ")
    assert found[1].values["line"] == SAVE
    samples = [call.op for call in calls_of(olt, "reset_monitor", begin)]
    before_action = samples[: samples.index("sclient_send_message")].count("nanosleep")
    assert 25 <= before_action <= 26 + 3, "the 25th pressed sample; those before the press are few"
    assert of(work(olt), "semaphore_p|misc_.*") == []


def test_a_long_press_really_saves_the_configuration(olt):
    olt.start(trace=True)
    olt.run("fan temperature 44")
    long_press(olt)
    assert of(calls_of(olt, "reset_monitor"), "system")[0].result == "0"
    assert "fan temperature 44\n" in (olt.state / "conf" / "diagd.conf").read_text()


def test_without_the_service_bus_the_failure_is_printed_and_all_else_done(olt):
    olt.faults(HURRIED, "sclient_send_message ret=-1")
    olt.start(trace=True)
    olt.run("fan temperature 44")
    long_press(olt)
    assert olt.stdout().startswith("reset_monitor_thread sclient_send_message() failed\r\n")
    assert olt.stdout().endswith(RESTARTING)
    assert records(olt, "reset_monitor") == [ERASE, REBOOT]
    assert "fan temperature 44\n" in (olt.state / "conf" / "diagd.conf").read_text()


@pytest.mark.parametrize("status, said", [
    (2, "system: exit status of the child WTERMSIG[2]\n"), (3, "system: exit status of the child WTERMSIG[3]\n"),
    (9, ""), (256, ""), (0, ""), (-1, ""),
])
def test_a_shell_that_was_interrupted_is_told_and_nothing_else(olt, status, said):
    olt.faults(HURRIED, f"system ret={status}")
    olt.start(trace=True)
    long_press(olt)
    assert olt.stdout().endswith(said + RESTARTING)
    assert ("WTERMSIG" in olt.stdout()) == bool(said)
    assert records(olt, "reset_monitor") == [ERASE, REBOOT]


def install_shell(olt, script):
    """Puts a script in the place of the box's shell."""
    olt.exec("sh", "-c", f"rm -f {SHELL} && cat >{SHELL} && chmod +x {SHELL}", input=f"#!/bin/sh\n{script}\n", check=True)


def ignores_children(olt):
    """Whether the daemon ignores the end of its child processes."""
    status = Path(f"/proc/{olt.pid}/status").read_text()
    return bool(int(status.split("SigIgn:")[1].split()[0], 16) & 1 << (signal.SIGCHLD - 1))


def test_the_end_of_a_child_is_heard_of_while_the_shell_runs_only(olt):
    install_shell(olt, "touch /media/begun; until [ -e /media/go ]; do sleep 0.05; done; exit 7")
    olt.start(trace=True, env={"CALL_SHIM_IGNORE": str(int(signal.SIGCHLD))})
    assert ignores_children(olt)
    olt.boardctl("button", "press")
    wait_until((olt.state / "flash" / "begun").exists, "the shell")
    assert not ignores_children(olt)
    olt.exec("touch", "/media/go", check=True)
    ended(olt)
    assert ignores_children(olt)
    assert int(of(calls_of(olt, "reset_monitor"), "system")[0].result) == 7 << 8


def test_the_shell_can_be_interrupted(olt):
    """What the shell runs sees no signal blocked or ignored that a program expects to end it."""
    install_shell(olt, 'grep -E "^Sig(Blk|Ign)" /proc/self/status >/media/signals')
    olt.start(trace=True)
    long_press(olt)
    masks = dict(line.split(":\t") for line in (olt.state / "flash" / "signals").read_text().splitlines())
    assert int(masks["SigBlk"], 16) == 0
    assert int(masks["SigIgn"], 16) & (1 << 1 | 1 << 2 | 1 << 14) == 0


def test_no_switch_holds_the_button_up(olt):
    olt.start(trace=True)
    for name in ("fan", "usb", "power", "transceiver"):
        olt.run(f"no {name} monitor", "diagnose")
    short_press(olt)
    assert records(olt, "reset_monitor") == [REBOOT]


def test_the_daemon_works_on_until_the_board_is_gone(olt):
    olt.start(trace=True)
    short_press(olt)
    assert olt.run("show version")[1] == 0
    assert olt.stop() == 0


def test_the_record_comes_with_the_first_sample_after_the_release(cold_olt):
    cold_olt.start(trace=True)
    released = press_samples(cold_olt, 2)
    wait_call(cold_olt, "reset_monitor", "cli_log")
    ops = [call.op for call in calls_of(cold_olt, "reset_monitor", released)]
    # The pause that was under way, and one that had ended without being written down yet.
    assert ops[: ops.index("cli_log")].count("nanosleep") <= 2


@pytest.mark.parametrize("make, said, opened", [
    (f"rm {GPIO}", "open /dev/tq_gpio_cfg failed\n: No such file or directory\n", [GPIO]),
    (f"rm {UIO}", "Failed to open the device: No such file or directory\n", [GPIO, UIO]),
    (f"rm {SIZE}", "devuio mmap: Invalid argument\n", [GPIO, UIO]),
    (f"echo nonsense >{SIZE}", "devuio mmap: Invalid argument\n", [GPIO, UIO]),
    (f"rm {UIO}; mkfifo {UIO}", "devuio mmap: No such device\n", [GPIO, UIO]),
])
def test_without_its_devices_there_is_no_button(cold_olt, make, said, opened):
    cold_olt.exec("sh", "-c", make, check=True)
    cold_olt.start(trace=True)
    calls = start_calls(cold_olt, "reset_monitor")
    assert said in cold_olt.stderr()
    assert [call.values["path"] for call in of(calls, "open") if call.values["path"] in (GPIO, UIO)] == opened
    assert steps(calls)[:2] == ["raise reset_monitor", "lower"] and "pthread_create" not in steps(calls)
    assert "reset_monitor" not in cold_olt.threads()
    assert not [name for name in cold_olt.fds().values() if "uio" in name or name == GPIO]
    assert cold_olt.run("show version")[1] == 0


def test_a_line_that_cannot_be_set_up_is_told(cold_olt):
    cold_olt.boardctl("gpio", "fail", "req3", "1", "errno=5")
    cold_olt.start(trace=True)
    assert "/dev/tq_gpio_cfg ioctl fail!\n: Input/output error\n" in cold_olt.stderr()
    assert steps(start_calls(cold_olt, "reset_monitor"))[:2] == ["raise reset_monitor", "lower"]
    assert "reset_monitor" not in cold_olt.threads()
    assert GPIO not in cold_olt.fds().values()


def test_a_thread_that_is_refused_is_told(cold_olt):
    cold_olt.faults("pthread_create nth=4 ret=-1 errno=11")
    cold_olt.start(trace=True)
    text = "wtd_app_init create tq_reset_app_thread failed!\r"
    assert cold_olt.stdout() in (text, text + "\n")
    assert "reset_monitor" not in cold_olt.threads()


def test_a_positive_result_of_the_threads_creation_is_no_failure(cold_olt):
    cold_olt.faults("pthread_create nth=4 ret=11")
    cold_olt.start(trace=True)
    assert cold_olt.stdout() == ""
    assert "reset_monitor" not in cold_olt.threads()
    assert cold_olt.run("show version")[1] == 0


def test_a_larger_region_is_mapped_whole(cold_olt):
    cold_olt.exec("sh", "-c", f"echo 0x0000000000010000 >{SIZE}", check=True)
    cold_olt.start()
    maps = open(f"/proc/{cold_olt.pid}/maps").read()
    region = next(line for line in maps.splitlines() if line.endswith("uio0"))
    begin, end = (int(word, 16) for word in region.split()[0].split("-"))
    assert end - begin == 0x10000 and region.split()[1] == "rw-s"
