# SPDX-License-Identifier: GPL-2.0-or-later
"""What the daemon does from its first call to its event loop, and what it makes of steps that fail."""
import os
import re
import signal
from pathlib import Path

import pytest
from olt import PASSWORD, wait_until
from calls import in_order, of
from vty import TELNET_PORT, Telnet, in_namespace

START = [
    r"board_mmap_init regions=13 size=2928 ",
    r"semaphore_create key=0x0*102410 count=1 ",
    r'setenv name="XTABLES_LIBDIR" value="/usr/lib/xtables" overwrite=[1-9]',
    r"database_init ",
    r"db_debug_flag_return ",
    r"db_debug_flag_reg ",
    r"sysrepo_debug_func_return ",
    r"sysrepo_debug_fun_reg ",
    r"tq_db_cb_init_func ",
    r"tq_db_cb_free_func ",
    r"db_database_init ",
    r"db_debug_flag_return ",
    r"db_debug_flag_reg ",
    r"sysrepo_debug_func_return ",
    r"sysrepo_debug_fun_reg ",
    r"database_dev_get_port_info ",
    r"port_init ",
    r"misc_cpld_i2c_init .*",
    r'frr_preinit name="diagd" vty_port=2709 ',
    r"frr_init ",
    r"pon_mode_get ",
    r"tq_alarm_log_init ",
    r'install_node node=155 name="alarm-log" ',
    r'install_node node=124 name="gpon" ',
    r'install_node node=125 name="xgpon" ',
    r"frr_config_fork ",
    r"frr_run ",
]
PLATFORM = ("board_", "semaphore_", "database_", "db_", "tq_", "misc_", "port_", "pon_", "cli_log", "sysrepo_")
STEPS = {re.match(r"\w+", pattern)[0] for pattern in START} - {"install_node"}


def vty_port_is_open(olt):
    def look():
        table = Path("/proc/thread-self/net/tcp").read_text() + Path("/proc/thread-self/net/tcp6").read_text()
        return f":{TELNET_PORT:04X} " in table

    return in_namespace(f"/proc/{olt.holder.pid}/ns/net", look)


def start_calls(olt):
    """Calls of the main thread before the event loop."""
    calls = [call for call in olt.trace() if call.thread == "main"]
    ops = [call.op for call in calls]
    return calls[: ops.index("frr_run") + 1] if "frr_run" in ops else calls


def starts_although(cold_olt, *faults):
    """Starts with these steps failing; returns the calls of the start."""
    cold_olt.faults(*faults)
    cold_olt.start(trace=True)
    text, rc = cold_olt.run("show version")
    assert rc == 0 and text.count("\r\n") == 6
    return start_calls(cold_olt)


@pytest.fixture(scope="module")
def olt(make_olt):
    return make_olt().start(trace=True)


def test_the_steps_come_in_their_one_order(olt):
    in_order(start_calls(olt), *START)


def test_each_step_is_done_once_but_the_database_debug_hooks_twice(olt):
    ops = [call.op for call in start_calls(olt)]
    twice = {"db_debug_flag_return", "db_debug_flag_reg", "sysrepo_debug_func_return", "sysrepo_debug_fun_reg"}
    counts = {op: ops.count(op) for op in STEPS - {"database_dev_get_port_info"}}
    assert counts == {op: 2 if op in twice else 1 for op in counts}


def test_nothing_of_the_board_or_the_database_is_touched_before_the_first_step(olt):
    platform = [call for call in start_calls(olt) if call.op.startswith(PLATFORM)]
    assert platform[0].op == "board_mmap_init"


def test_the_steps_before_the_frame_work_as_root_and_the_daemon_as_user_daemon(olt):
    status = Path(f"/proc/{olt.pid}/status").read_text()
    daemon = olt.exec("id", "-u", "daemon").stdout.strip()
    group = olt.exec("id", "-g", "daemon").stdout.strip()
    assert re.search(rf"^Uid:\s+\d+\s+{daemon}\s", status, re.M)
    assert re.search(rf"^Gid:\s+\d+\s+{group}\s", status, re.M)


def test_the_vty_listens_on_tcp_2709_and_on_its_socket(olt):
    assert vty_port_is_open(olt)
    assert Path(olt.vty_path).is_socket()


def test_the_vty_socket_belongs_to_the_vty_group(olt):
    group = olt.exec("stat", "-c", "%U %G", "/run/frr/diagd.vty").stdout.split()
    assert group == ["daemon", "daemon"]


def test_the_daemon_stays_in_the_foreground(olt):
    assert olt.daemon.poll() is None
    assert Path(f"/proc/{olt.pid}/comm").read_text() == "diagd\n"
    parent = Path(f"/proc/{olt.pid}/stat").read_text().rsplit(")", 1)[1].split()[1]
    assert int(parent) == olt.daemon.pid


def test_the_library_folder_of_the_firewall_tools_replaces_an_inherited_one(cold_olt):
    cold_olt.start(env={"XTABLES_LIBDIR": "/somewhere/else"}, trace=True)
    in_order(cold_olt.trace(), r"semaphore_create ", r'setenv name="XTABLES_LIBDIR" value="/usr/lib/xtables"', r"database_init ")
    # What a child of the daemon would be given; the kernel's copy shows the environment of the start only.
    calls = [call for call in cold_olt.trace() if call.op == "setenv" and "XTABLES" in call.arguments]
    assert [call.result for call in calls] == ["0"]


def test_a_failing_setenv_is_reported_and_the_start_goes_on(cold_olt):
    starts_although(cold_olt, "setenv nth=1 ret=-1 errno=12")
    assert cold_olt.stderr().startswith("setenv XTABLES_LIBDIR failed: Cannot allocate memory\n")


def test_command_line_arguments_are_ignored(cold_olt):
    other = cold_olt.state / "conf" / "other.conf"
    other.write_text("hostname wrong\n")
    arguments = ["-f", "/etc/frr/other.conf", "-P", "3000", "-d", "--bogus", "-v", "--help", "stray"]
    cold_olt.start(*arguments)
    with cold_olt.telnet() as session:
        assert session.prompt == "olt> "
    assert Path(f"/proc/{cold_olt.pid}/cmdline").read_bytes().split(b"\0")[1:-1] == [word.encode() for word in arguments]
    assert cold_olt.stdout() == "" and "usage" not in cold_olt.stderr().lower()
    assert cold_olt.daemon.poll() is None


def test_the_default_configuration_file_is_read(cold_olt):
    cold_olt.configure("hostname olt-9", f"password {PASSWORD}", "log file /var/log/diagd.log")
    cold_olt.start(trace=True)
    with cold_olt.telnet() as session:
        assert session.prompt == "olt-9> "
    reads = [call for call in cold_olt.trace() if call.op == "vty_read_config"]
    assert len(reads) == 1
    assert "config_file=NULL" in reads[0].arguments
    assert 'default="/etc/frr/diagd.conf"' in reads[0].arguments


def test_a_missing_board_description_is_survived(cold_olt):
    starts_although(cold_olt, "board_mmap_init ret=-1")


def test_without_the_semaphore_27_bytes_are_said_and_the_daemon_ends_with_0(cold_olt):
    cold_olt.faults("semaphore_create nth=1 ret=-1 errno=28")
    cold_olt.start(trace=True, wait=False)
    assert cold_olt.wait_end() == 0
    assert cold_olt.stderr() == "diagd init semaphore failed"
    assert cold_olt.stdout() == ""
    assert cold_olt.log() == ""
    ops = [call.op for call in cold_olt.trace() if call.op in STEPS]
    assert ops == ["board_mmap_init", "semaphore_create"]
    assert not vty_port_is_open(cold_olt)
    assert not os.path.exists(cold_olt.vty_path)


def test_without_the_database_the_daemon_says_so_and_ends_with_0_before_the_vty_opens(cold_olt):
    cold_olt.faults("database_init nth=1 ret=-1")
    cold_olt.start(trace=True, wait=False)
    assert cold_olt.wait_end() == 0
    said = cold_olt.stderr() + cold_olt.stdout()
    assert said.count("DIAGD init database failed") == 1
    ops = [call.op for call in cold_olt.trace() if call.op in STEPS]
    assert ops == ["board_mmap_init", "semaphore_create", "setenv", "database_init"]
    assert not vty_port_is_open(cold_olt)
    assert not os.path.exists(cold_olt.vty_path)


def test_an_absent_database_is_the_same_as_one_that_cannot_be_opened(cold_olt):
    """The repository's folder is there, as a plain file that nobody can work in."""
    cold_olt.exec("sh", "-c", "umount /var/lib/olt/sysrepo; rm -rf /var/lib/olt/sysrepo; touch /var/lib/olt/sysrepo",
                  check=True)
    cold_olt.start(wait=False)
    assert cold_olt.wait_end() == 0
    assert (cold_olt.stderr() + cold_olt.stdout()).count("DIAGD init database failed") == 1
    assert not vty_port_is_open(cold_olt)


def test_without_the_port_record_the_daemon_runs_with_no_ports(cold_olt):
    calls = starts_although(cold_olt, "database_dev_get_port_info nth=1 ret=-1")
    said = cold_olt.stderr() + cold_olt.stdout() + cold_olt.log()
    assert said.count("DIAGD: get port info from db failed!") == 1
    ops = [call.op for call in calls]
    assert "port_init" not in ops
    assert ops.index("database_dev_get_port_info") < ops.index("misc_cpld_i2c_init") < ops.index("frr_preinit")


def test_without_the_second_port_record_the_port_map_is_told_missing_and_the_start_goes_on(cold_olt):
    calls = starts_although(cold_olt, "database_dev_get_port_info nth=2 ret=-1")
    assert [call.result for call in of(calls, "database_dev_get_port_info")] == ["0", "-1"]
    assert cold_olt.stdout() in ("diagd port init failed\r\n", "diagd port init failed\r")
    in_order(calls, *START)


@pytest.mark.parametrize("step", ["db_database_init", "port_init", "misc_cpld_i2c_init", "pon_mode_get",
                                  "tq_alarm_log_init"])
def test_the_result_of_a_step_that_may_fail_is_ignored(cold_olt, step):
    calls = starts_although(cold_olt, f"{step} nth=1 ret=-1")
    in_order(calls, *START)
    assert next(call for call in calls if call.op == step).result == "-1"


def test_a_semaphore_that_exists_is_taken_as_it_stands(cold_olt):
    """Another board user holds it before the daemon starts: its first board access, the USB LED's, waits for it."""
    holder = cold_olt.exec("python3", "-c", HOLD_BOARD_SEMAPHORE, check=True)
    assert holder.stdout == "0\n"
    cold_olt.start(trace=True, wait=False)
    wait_until(lambda: cold_olt.trace_path.exists() and
               [call for call in cold_olt.trace() if call.op == "raise" and "usb_monitor" in call.arguments], "the LED's turn")
    assert cold_olt.sem_value("board") == 0
    assert of(cold_olt.trace(), "semaphore_p") == []
    assert not vty_port_is_open(cold_olt)
    cold_olt.exec("python3", "-c", FREE_BOARD_SEMAPHORE, check=True)
    cold_olt.wait_answers()
    in_order(cold_olt.trace(), r"semaphore_p id=board -> 0", r"misc_cpld_i2c_set_byte .*reg=6 val=0x00")
    wait_until(lambda: cold_olt.sem_value("board") == 1, "the semaphore is free")


SEMAPHORE = """
import ctypes
libc = ctypes.CDLL(None, use_errno=True)
semaphore = libc.semget(0x102410, 1, 0o1666)
assert semaphore >= 0, ctypes.get_errno()
SETVAL, GETVAL = 16, 12
"""
HOLD_BOARD_SEMAPHORE = SEMAPHORE + "libc.semctl(semaphore, 0, SETVAL, 0)\nprint(libc.semctl(semaphore, 0, GETVAL))"
FREE_BOARD_SEMAPHORE = SEMAPHORE + "libc.semctl(semaphore, 0, SETVAL, 1)"


# --- one database connection per session


def session_calls(olt, since):
    return [call for call in olt.trace()[since:] if call.op in ("db_connect_init_with_vty", "db_disconnect_free_with_vty")]


def all_sessions_have_ended(olt):
    ops = [call.op for call in session_calls(olt, 0)]
    return ops.count("db_connect_init_with_vty") == ops.count("db_disconnect_free_with_vty")


@pytest.mark.parametrize("way", ["socket", "telnet"])
def test_a_session_gets_a_database_connection_and_gives_it_back(olt, way):
    wait_until(lambda: all_sessions_have_ended(olt), "earlier sessions have ended")
    before = len(olt.trace())
    session = olt.vty() if way == "socket" else olt.telnet()
    opened = [str(call) for call in session_calls(olt, before)]
    session.close()
    wait_until(lambda: len(session_calls(olt, before)) == 2, "the connection is given back")
    calls = session_calls(olt, before)
    assert [call.op for call in calls] == ["db_connect_init_with_vty", "db_disconnect_free_with_vty"]
    assert [call.result for call in calls] == ["0", "0"]
    assert len(opened) == 1
    assert calls[0].arguments == calls[1].arguments


def test_sessions_that_come_and_go_leave_no_descriptor_behind(olt):
    olt.run("show version")
    before = olt.settled_fds()
    for _ in range(50):
        olt.run("show version")
        Telnet(f"/proc/{olt.holder.pid}/ns/net").close()
    olt.wait_no_more_fds(before)


def test_a_session_without_a_database_connection_is_reported_and_stays_usable(cold_olt):
    cold_olt.faults()
    cold_olt.start(trace=True)
    said = cold_olt.stdout()
    cold_olt.faults("db_connect_init_with_vty nth=1 ret=-1")
    with cold_olt.vty() as session:
        text, rc = session.run("show version")
    assert rc == 0 and text.count("\r\n") == 6
    wait_until(lambda: cold_olt.stdout() != said, "the daemon prints")
    assert cold_olt.stdout() == said + "DIAG Msg: vty connect to database failed!\n"


def test_a_start_after_a_kill_is_a_good_start(cold_olt):
    for _ in range(3):
        cold_olt.start()
        assert cold_olt.run("show version")[1] == 0
        cold_olt.kill(signal.SIGKILL)
    cold_olt.start()
    assert cold_olt.run("show version")[1] == 0


def test_without_the_device_nodes_of_a_real_board_the_daemon_does_what_it_can(make_olt):
    board = make_olt(board={"transport": "linux"}).start()
    assert board.stdout() == 2 * "open fan failed: No such file or directory\r\n"  # power and USB monitor
    assert board.run("show logic version", "diagnose") == ("", 1)
    assert board.run("phy read 1 2", "diagnose") == ("phy 0x1 register 0x2 value 0x0\r\n", 0)
    switches = board.run("show diag monitor", "diagnose")[0]
    assert [line.split()[-1] for line in switches.splitlines()] == ["Disable", "Disable", "Disable", "Enable"]
