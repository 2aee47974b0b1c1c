# SPDX-License-Identifier: GPL-2.0-or-later
"""What a daemon must say of calls that fail while it starts."""
import signal

from calls import read_trace
from fault_calls import UNREACHABLE_TEXT
from olt import wait_until

# Without these there is no daemon.
ENDS = {"semaphore_create", "database_init"}
GPIO = "/dev/tq_gpio_cfg"
# Each is made once for a monitor, in this order.
THREADS = ["fan_monitor_thread init failed!\r", "wtd_app_init create usb_monitor_thread failed!\r", "power monitorfailed!\r",
           "wtd_app_init create tq_reset_app_thread failed!\r"]
# Of calls that are made once: who calls, the call, stream and text.  What is logged before the log file is open goes to
# standard error.
FIRST = {
    ("main", "semaphore_create"): ("stderr", "diagd init semaphore failed"),
    ("main", "setenv"): ("stderr", "setenv XTABLES_LIBDIR failed: Input/output error\n"),
    ("main", "database_init"): ("stderr", "DIAGD init database failed"),
    ("usb_monitor", "socket"): ("stdout", "error create hotplug socket: Input/output error"),
    ("usb_monitor", "setsockopt"): ("stdout", "error set hotplug socket receive buffer size: Input/output error"),
    ("usb_monitor", "bind"): ("stdout", "error bind hotplug socket: Input/output error"),
}
DEFAULTS = {"set_alarm_name": "name", "set_alarm_desc": "description", "set_alarm_level": "level", "set_alarm_type": "type",
            "set_alarm_class": "class", "set_action_print": "print", "set_action_record": "record", "set_action_trap": "trap",
            "set_action_remote": "remote", "set_alarm_log_flash_level": "flash level",
            "set_remote_server_ipv4_enable": "remote server", "set_remote_server_ipv6_enable": "remote server"}


def unharmed_start(olt):
    """The calls of a start: the main thread's up to its event loop, and the USB monitor's up to its socket."""
    olt.start(trace=True)

    def calls_of(thread):
        return read_trace(olt.trace_path, only=rf"^\d+ \d+ {thread} ")

    main = calls_of("main")
    usb = wait_until(lambda: (found := calls_of("usb_monitor")) and found[-1].op == "recvmsg" and found or
                     any(call.op == "bind" for call in found) and found, "the USB monitor's socket")
    olt.kill(signal.SIGKILL)
    return main[: [call.op for call in main].index("frr_run")] + [call for call in usb if call.op != "recvmsg"]


def calls_of_start(olt):
    """All calls so far of a daemon that has just been started."""
    return read_trace(olt.trace_path)


def required_text(calls, fault):
    """Stream and text of what must be said once when that call fails in a start of these calls; None where nothing is
    laid down."""
    op, nth = fault.op, fault.nth
    same = [call for call in calls if (call.thread, call.op) == (fault.thread, op)]
    if (fault.thread, op) in FIRST:
        return FIRST[fault.thread, op]
    if op == "database_dev_get_port_info":
        return ("stderr", "DIAGD: get port info from db failed!") if nth == 1 else ("stdout", "diagd port init failed\r")
    if op == "pthread_create":
        return "stdout", THREADS[nth - 1]
    if op == "misc_cpld_i2c_open" and nth <= 2:  # the USB monitor's and the power monitor's
        return "stdout", "open fan failed: Input/output error\r\n"
    if op == "open" and GPIO in same[nth - 1].arguments:
        return "stderr", f"open {GPIO} failed\n: Input/output error\n"
    for setting, word in DEFAULTS.items():
        if op == f"db_olt_alarm_log_{setting}":
            return "stderr", f"set alarm log {word} failed : {UNREACHABLE_TEXT}\n"
    return None
