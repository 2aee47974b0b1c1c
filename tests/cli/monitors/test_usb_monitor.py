# SPDX-License-Identifier: GPL-2.0-or-later
"""The USB monitor: the front panel's LED after the mount table and the kernel's hot-plug events."""
import os
from pathlib import Path

import pytest
from calls import in_order, of
from monitors import calls_of, start_calls, steps, wait_call, wait_thread
from olt import wait_until
from uevents import port_of, send

ON, OFF = "0x01\n", "0x00\n"
LIGHT, DARKEN = ["take", "write 6 1", "give"], ["take", "write 6 0", "give"]


def led(olt):
    return olt.boardctl("reg", "get", 6)


def set_led(olt, value):
    olt.boardctl("reg", "set", 6, value)


def wait_socket(olt):
    wait_call(olt, "usb_monitor", "bind")
    wait_until(lambda: "USB Monitor         : Enable" in olt.run("show diag monitor", "diagnose")[0], "the switch is on")


def wait_received(olt, text, since):
    """The thread's calls from the receipt of the event on that begins like this."""
    def behind():
        calls = calls_of(olt, "usb_monitor", since)
        at = [at for at, call in enumerate(calls)
              if call.op == "recvmsg" and call.values.get("head", "").startswith(text.encode().hex())]
        return at and (calls[:at[0]], calls[at[0]:])

    return wait_until(behind, f"{text} is received")


def handled(olt, *messages):
    """What the thread does to the board for these messages."""
    before = len(olt.trace())
    for count, message in enumerate(messages, 1):
        send(olt, message)
        wait_call(olt, "usb_monitor", "recvmsg", since=before, count=count)
    # A last one that is told apart by its name: all before it are done when it is received.
    send(olt, "add@/usb-end-of-test")
    said = steps(wait_received(olt, "add@/usb-end-of-test", before)[0])
    wait_until(lambda: steps(wait_received(olt, "add@/usb-end-of-test", before)[1]) == LIGHT, "the LED is lit at the end")
    return said


@pytest.fixture(scope="module")
def shared(make_olt):
    own = make_olt()
    own.faults()
    own.start(trace=True)
    wait_socket(own)
    return own


@pytest.fixture
def olt(shared):
    assert shared.run("usb monitor", "diagnose") == ("", 0)
    return shared


def test_it_starts_with_the_led_dark_and_a_detached_thread(shared):
    calls = start_calls(shared, "usb_monitor")
    assert steps(calls) == ["raise usb_monitor", "misc_cpld_i2c_open", "lower", *DARKEN, "pthread_create", "pthread_detach"]
    wait_thread(shared, "usb_monitor")


def test_the_socket_is_the_kernels_event_socket_set_up_with_privileges(shared):
    in_order(calls_of(shared, "usb_monitor"), r'setmntent path="/proc/mounts" mode="r"', r'raise reason="usb_monitor_thread"',
             r"socket domain=16 type=2 protocol=15 ", r"setsockopt level=1 option=33 value=1024 -> 0",
             rf"bind port={port_of(shared)} groups=1 -> 0", r"lower ")
    assert "USB Monitor         : Enable" in shared.run("show diag monitor", "diagnose")[0]


@pytest.mark.parametrize("message, expected", [
    ("add@/devices/pci0000:00/usb1/1-2", LIGHT),
    ("remove@/devices/pci0000:00/usb1/1-2", DARKEN),
    ("change@/devices/usb1", DARKEN),
    ("bind@/devices/usb1", DARKEN),
    ("unbind@/devices/usb1", DARKEN),
    ("add@/devices/usb1/hub", LIGHT),
    ("add@/devices/virtual/net/x", []),
    ("remove@/devices/virtual/net/x", []),
    ("remove@/devices/usb1/padding", LIGHT),
    (b"add@/devices/virtual/net/x\0SUBSYSTEM=usb\0", []),
    (b"remove@/devices/usb1\0ACTION=add\0", DARKEN),
    (b"x" * 1024, []),
    (b"x" * 1021 + b"usb", DARKEN),
    (b"x" * 2000 + b"usb", []),
    (b"add@/devices/usb1" + b"x" * 2000, LIGHT),
])
def test_an_event_and_what_becomes_of_it(olt, message, expected):
    assert handled(olt, message) == expected


def test_a_short_event_after_a_long_one_sees_nothing_of_it(olt):
    assert handled(olt, b"add@/devices/usb1/" + b"y" * 900, b"remove@/devices/virtual/net/x") == LIGHT
    assert handled(olt, b"x" * 1024, b"add@/devices/x") == []
    assert handled(olt, b"xxxxxxxxusbadd" + b"x" * 900, b"remove@") == LIGHT


def test_events_while_switched_off_are_lost(olt):
    set_led(olt, 0)
    assert olt.run("no usb monitor", "diagnose") == ("", 0)
    before = len(olt.trace())
    send(olt, "add@/devices/usb1")
    send(olt, "add@/other")
    wait_received(olt, "add@/other", before)  # the first is dealt with
    assert olt.run("usb monitor", "diagnose") == ("", 0)
    assert handled(olt, "add@/devices/virtual/net/x") == []
    assert of(calls_of(olt, "usb_monitor", before), "setmntent") == [], "the mount table is not read again"


@pytest.mark.parametrize("result", ["ret=0", "ret=-1 errno=105", "ret=-1 errno=4", "ret=-1 errno=5"])
def test_a_receive_that_fails_is_passed_over(olt, result):
    before = len(olt.trace())
    olt.faults(f"recvmsg thread=usb_monitor nth=1 count=3 {result}")
    try:
        send(olt, "add@/devices/virtual/net/x")  # ends the receive that was under way
        wait_call(olt, "usb_monitor", "recvmsg", since=before, count=4)
    finally:
        olt.faults()
    assert handled(olt, "remove@/devices/usb1") == DARKEN


def test_a_receive_that_fails_for_ever_does_not_spin(olt):
    def cpu_ticks():
        fields = Path(f"/proc/{olt.pid}/stat").read_text().rsplit(")", 1)[1].split()
        return int(fields[11]) + int(fields[12])

    before = len(olt.trace())
    olt.faults("recvmsg thread=usb_monitor ret=-1 errno=5")
    try:
        send(olt, "add@/devices/virtual/net/x")
        begin = cpu_ticks()
        calls = wait_call(olt, "usb_monitor", "recvmsg", since=before, count=10)
        assert calls[-1].time_ms - calls[1].time_ms >= 700
        assert cpu_ticks() - begin <= os.sysconf("SC_CLK_TCK") // 10
    finally:
        olt.faults()


def test_a_register_that_refuses_is_passed_over(olt):
    olt.boardctl("fault", "add", "cpld_write", "reg=6")
    try:
        assert handled(olt, "add@/devices/usb1") == LIGHT
    finally:
        olt.boardctl("fault", "clear")
    assert handled(olt, "add@/devices/usb1") == LIGHT and led(olt) == ON


def test_real_events_of_the_kernel(olt):
    set_led(olt, 0)
    olt.exec("ip", "link", "add", "usb0", "type", "bridge", check=True)
    wait_until(lambda: led(olt) == ON, "the LED is lit")
    olt.exec("ip", "link", "del", "usb0", check=True)
    wait_until(lambda: led(olt) == OFF, "the LED is dark")
    handled(olt)  # and whatever else the kernel says of it


def test_a_real_device_that_is_not_usb_is_left_alone(olt):
    set_led(olt, 1)
    before = len(olt.trace())
    olt.exec("ip", "link", "add", "eth7", "type", "bridge", check=True)
    olt.exec("ip", "link", "del", "eth7", check=True)
    wait_call(olt, "usb_monitor", "recvmsg", since=before, count=2)
    assert handled(olt, "add@/devices/x") == [] and steps(calls_of(olt, "usb_monitor", before))[:-3] == []


def start_with_mounts(olt, *devices):
    """The daemon begins with these, and no others, in its mount table."""
    (olt.state / "log" / "mounts").write_text("".join(f"{device} /mnt ext4 rw 0 0\n" for device in devices))
    olt.start(trace=True, env={"CALL_SHIM_MOUNTS": "/var/log/mounts"})
    wait_socket(olt)


@pytest.mark.parametrize("devices, expected", [
    ([], []), (["/dev/sda1"], LIGHT), (["/dev/sd"], LIGHT), (["/dev/sda1", "/dev/sdb2"], LIGHT), (["/dev/nvme0"], []),
    (["x/dev/sda1"], []), (["/dev/s"], []), (["tmpfs", "/dev/sdb"], LIGHT),
])
def test_a_mounted_disk_lights_the_led_at_the_start(cold_olt, devices, expected):
    start_with_mounts(cold_olt, *devices)
    assert steps(calls_of(cold_olt, "usb_monitor")) == [*expected, "raise usb_monitor_thread", "lower"]


def test_the_mount_table_is_the_systems(cold_olt):
    cold_olt.exec("mkdir", "/var/tmp/disk", check=True)
    cold_olt.exec("mount", "-t", "tmpfs", "/dev/sda1", "/var/tmp/disk", check=True)
    cold_olt.start(trace=True)
    wait_socket(cold_olt)
    assert steps(calls_of(cold_olt, "usb_monitor")) == [*LIGHT, "raise usb_monitor_thread", "lower"]


def test_without_a_mount_table_there_are_still_events(cold_olt):
    cold_olt.faults("setmntent ret=0 errno=2")
    cold_olt.start(trace=True)
    wait_socket(cold_olt)
    assert steps(calls_of(cold_olt, "usb_monitor")) == ["raise usb_monitor_thread", "lower"]
    assert handled(cold_olt, "add@/devices/usb1") == LIGHT


def test_without_a_handle_there_is_no_monitor(cold_olt):
    cold_olt.faults("misc_cpld_i2c_open nth=1 ret=-1 errno=19")
    cold_olt.start(trace=True)
    assert cold_olt.stdout() == "open fan failed: No such device\r\n"
    assert steps(start_calls(cold_olt, "usb_monitor")) == ["raise usb_monitor", "misc_cpld_i2c_open", "lower"]
    assert "usb_monitor" not in cold_olt.threads()
    assert "USB Monitor         : Disable" in cold_olt.run("show diag monitor", "diagnose")[0]


def test_a_thread_that_is_refused_is_told(cold_olt):
    cold_olt.faults("pthread_create nth=2 ret=-1 errno=11")
    cold_olt.start(trace=True)
    text = "wtd_app_init create usb_monitor_thread failed!\r"
    assert cold_olt.stdout() in (text, text + "\n")
    assert "usb_monitor" not in cold_olt.threads()
    assert "USB Monitor         : Disable" in cold_olt.run("show diag monitor", "diagnose")[0]


def test_a_positive_result_of_the_threads_creation_is_no_failure(cold_olt):
    cold_olt.faults("pthread_create nth=2 ret=11")
    cold_olt.start(trace=True)
    assert cold_olt.stdout() == ""
    assert steps(start_calls(cold_olt, "usb_monitor"))[-1] == "pthread_create", "nothing to detach"
    assert "usb_monitor" not in cold_olt.threads()
    assert "USB Monitor         : Disable" in cold_olt.run("show diag monitor", "diagnose")[0], "the thread switches it on"


@pytest.mark.parametrize("step, errno, said, calls", [
    ("socket", 93, "error create hotplug socket: Protocol not supported", ["socket"]),
    ("setsockopt", 1, "error set hotplug socket receive buffer size: Operation not permitted", ["socket", "setsockopt"]),
    ("bind", 98, "error bind hotplug socket: Address already in use", ["socket", "setsockopt", "bind"]),
])
def test_without_its_socket_the_thread_ends_and_says_why(cold_olt, step, errno, said, calls):
    cold_olt.faults(f"{step} thread=usb_monitor ret=-1 errno={errno}")
    cold_olt.start(trace=True)
    wait_until(lambda: "usb_monitor" not in cold_olt.threads(), "the thread ends")
    assert cold_olt.stdout() == said, "without a line end"
    made = calls_of(cold_olt, "usb_monitor")
    assert [call.op for call in of(made, "socket|setsockopt|bind")] == calls
    assert steps(made)[-2:] == ["raise usb_monitor_thread", "lower"]
    assert not any("NETLINK" in target for target in cold_olt.fds().values())
    assert "USB Monitor         : Disable" in cold_olt.run("show diag monitor", "diagnose")[0]
    assert led(cold_olt) in (ON, OFF)
