# SPDX-License-Identifier: GPL-2.0-or-later
"""The two resets through the GPIO device: requests, privileges, and a device that fails."""
import signal
import time

import pytest
from calls import of
from monitors import calls_of
from olt import wait_until
from traced_fixtures import no_faults, olt  # noqa: F401

DEVICE = "/dev/tq_gpio_cfg"
O_RDWR = 2
NO_SLEEP = "nanosleep ret=0"
SAID = "Restarting system by gpio...\r\n"


class Run:
    """One command with faults: what it printed, called, logged and left open."""

    def __init__(self, olt, command, *faults):
        olt.faults(*faults)
        log, calls, open_before = len(olt.log()), len(olt.trace()), devices(olt)
        with olt.vty("diagnose", timeout=60) as session:  # 100,000 recorded requests on a busy machine
            self.text, self.rc = session.run(command)
        olt.faults()
        self.log = olt.log()[log:]
        self.calls = [call for call in olt.trace()[calls:] if interesting(call)]
        self.left_open = devices(olt) - open_before

    @property
    def steps(self):
        return [step(call) for call in self.calls]


def devices(olt):
    return list(olt.fds().values()).count(DEVICE)


def interesting(call):
    if call.thread != "main":
        return False
    if call.op == "open":
        return DEVICE in call.arguments
    return call.op in ("raise", "lower", "ioctl", "nanosleep")


def step(call):
    if call.op == "ioctl":
        return f"request {int(call.values['request'], 0)} {int(call.values['word'], 0):#x}"
    if call.op == "raise":
        return f"raise {call.values['reason']}"
    if call.op == "nanosleep":
        return f"pause of {call.values['ms']} ms"
    if call.op == "open":
        assert int(call.values["flags"], 0) & 3 == O_RDWR
        return "open"
    return call.op


def test_pon_reset_pulls_gpio_1_low_with_raised_privileges(olt):
    run = Run(olt, "pon reset")
    assert (run.text, run.rc) == ("", 0)
    assert run.steps == ["raise pon_chip_reset", "open", "request 3 0x101", "request 1 0x100", "lower"]
    assert "fail" not in run.log


def test_pon_reset_leaves_the_device_open(olt):
    assert Run(olt, "pon reset").left_open == 1
    assert Run(olt, "pon reset").left_open == 1


@pytest.mark.parametrize("errno, text", [(2, "No such file or directory"), (13, "Permission denied"), (16, "Device or resource busy")])
def test_pon_reset_without_the_device_logs_one_error(olt, errno, text):
    run = Run(olt, "pon reset", f"open nth=1 ret=-1 errno={errno}")
    assert (run.text, run.rc, run.left_open) == ("", 0, 0)
    assert run.log.count(f"open {DEVICE} failed: {text}\n") == 1
    assert run.steps == ["raise pon_chip_reset", "open", "lower"]


def test_pon_reset_with_the_device_missing_logs_one_error(make_olt):
    own = make_olt().start()
    own.exec("rm", DEVICE, check=True)
    log = len(own.log())
    assert own.run("pon reset", "diagnose") == ("", 0)
    assert own.log()[log:].count(f"open {DEVICE} failed: No such file or directory\n") == 1


def test_pon_reset_stops_when_the_get_fails(olt):
    run = Run(olt, "pon reset", "ioctl nth=1 ret=-1 errno=5")
    assert (run.text, run.rc, run.left_open) == ("", 0, 0)
    assert run.log.count("get gpio 1 fail: Input/output error\n") == 1
    assert run.steps == ["raise pon_chip_reset", "open", "request 3 0x101", "lower"]


def test_pon_reset_reports_a_failing_set(olt):
    run = Run(olt, "pon reset", "ioctl nth=2 ret=-1 errno=25")
    assert (run.text, run.rc, run.left_open) == ("", 0, 0)
    assert run.log.count("set gpio 1 fail: Inappropriate ioctl for device\n") == 1
    assert run.steps == ["raise pon_chip_reset", "open", "request 3 0x101", "request 1 0x100", "lower"]


def test_the_errors_are_logged_at_error_level(make_olt):
    own = make_olt()
    own.start()
    own.exec("rm", DEVICE, check=True)
    assert own.run("log record-priority")[1] == 0
    own.run("pon reset", "diagnose")
    line = next(line for line in own.log().splitlines() if f"open {DEVICE} failed" in line)
    assert "errors:" in line


def test_system_reset_tells_the_console(olt):
    before = olt.stdout()
    Run(olt, "system gpio reset", NO_SLEEP, "ioctl nth=1 ret=-1 errno=5")
    wait_until(lambda: olt.stdout() != before, "the console line")
    assert olt.stdout()[len(before):] in ("Resetting By GPIO...\r\n", "Resetting By GPIO...\r")


@pytest.mark.parametrize("k", [1, 2, 500])
def test_system_reset_stops_at_the_first_set_that_fails(olt, k):
    run = Run(olt, "system gpio reset", NO_SLEEP, f"ioctl nth={k + 1} ret=-1 errno=5")
    assert (run.text, run.rc, run.left_open) == (SAID, 0, 0)
    assert run.steps.count("request 1 0x801") == k
    assert run.log.count("set gpio 8 fail: Input/output error\n") == 1


def test_system_reset_stops_when_the_get_fails(olt):
    run = Run(olt, "system gpio reset", NO_SLEEP, "ioctl nth=1 ret=-1 errno=19")
    assert (run.text, run.rc, run.left_open) == (SAID, 0, 0)
    assert run.steps == ["pause of 2000 ms", "raise system_gpio_reset", "open", "lower", "request 3 0x801"]
    assert run.log.count("get gpio 8 fail: No such device\n") == 1


def test_system_reset_without_the_device_has_lowered_its_privileges_before_it_reports(olt):
    run = Run(olt, "system gpio reset", NO_SLEEP, "open nth=1 ret=-1 errno=2")
    assert (run.text, run.rc, run.left_open) == (SAID, 0, 0)
    assert run.steps == ["pause of 2000 ms", "raise system_gpio_reset", "open", "lower"]
    assert run.log.count(f"open {DEVICE} failed: No such file or directory\n") == 1


def expect_text_before_pause(olt, ask, read_text, read_end):
    """The text is there while the pause of two seconds lasts; a test that was too slow to see that tries again."""

    def text_comes_first():
        olt.faults("ioctl nth=1 ret=-1 errno=5")
        before, begin = len(olt.trace()), time.monotonic()
        ask()
        read_text()
        ended = of(calls_of(olt, "main", before), "nanosleep")
        read_end()
        assert time.monotonic() - begin >= 2
        assert [call.values["ms"] for call in of(calls_of(olt, "main", before), "nanosleep")] == ["2000"]
        return not ended

    wait_until(text_comes_first, "the text comes before the pause has ended")


def test_the_operator_reads_the_text_before_the_pause_of_two_seconds(olt):
    with olt.vty("diagnose") as session:

        def read_text():
            text = b""
            while len(text) < len(SAID):
                text += session.socket.recv(4096)
            assert text.decode() == SAID

        def read_end():
            assert session.receive() == ("", 0)

        expect_text_before_pause(olt, lambda: session.send("system gpio reset"), read_text, read_end)


def test_the_text_comes_before_the_pause_over_telnet_too(olt):
    with olt.telnet() as session:
        session.run("enable")
        session.run("diagnose")
        expect_text_before_pause(olt, lambda: session.send("system gpio reset\r"),
                                 lambda: session.expect(rb"Restarting system by gpio\.\.\."), session.wait_prompt)


def test_no_semaphore_is_held_over_the_pause(olt):
    before = len(olt.trace())
    Run(olt, "system gpio reset", NO_SLEEP, "ioctl nth=1 ret=-1 errno=5")
    ops = [call.op for call in olt.trace()[before:] if call.thread == "main"]
    assert "nanosleep" in ops and "semaphore_p" not in ops


def test_a_terminate_signal_during_the_pause_still_ends_the_daemon(make_olt):
    own = make_olt().start()
    with own.vty("diagnose") as session:
        session.send("system gpio reset")
        session.socket.recv(4096)
        assert own.kill(signal.SIGTERM) == 0


def test_system_reset_raises_gpio_8_until_the_board_is_gone(make_olt):
    olt = make_olt()
    olt.faults()
    olt.start(trace=True)
    run = Run(olt, "system gpio reset", NO_SLEEP)
    assert (run.text, run.rc) == (SAID, 0)
    assert run.steps[:5] == ["pause of 2000 ms", "raise system_gpio_reset", "open", "lower", "request 3 0x801"]
    assert run.steps[5:] == ["request 1 0x801"] * 100_000
    assert run.left_open == 1
    assert "fail" not in run.log
