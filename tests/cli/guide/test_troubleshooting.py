# SPDX-License-Identifier: GPL-2.0-or-later
"""The page of what goes wrong: it has every line that a start that fails can print, and each of them has been tried."""
import re
import shutil
import subprocess
from pathlib import Path

import pytest
from olt import BOX, BUILD, OLT, PROJECT, wait_until

PAGE = PROJECT / "docs" / "guide" / "troubleshooting.md"
TESTS = Path(__file__).parents[1]
RUN = PROJECT / "run"
SCRIPTS = {"run": RUN, "box": BOX, "olt": OLT}
# Where the daemon prints while it starts.
START_SOURCES = ["start_steps.cpp", "board/session.cpp", "peers/port_numbers.cpp", "alarm_log/alarm_log_database.cpp",
                 "alarm_log/running_config/defaults.cpp", *(f"monitors/{unit}_monitor.cpp" for unit in (
                     "fan/fan", "usb/usb", "power/power", "reset_button/reset"))]
# Printed there later, by what runs then.
LATER = {"not get power state 2", "Restarting system by push-button...", "... sclient_send_message() failed",
         "system: exit status of the child WTERMSIG[...]"}


def rows():
    """Every message of the page."""
    cells = re.findall(r"^\| (`.*?`) \|", PAGE.read_text(), re.M)
    return [message for cell in cells for message in re.findall(r"`([^`]+)`", cell)]


def pattern(message):
    return re.compile(".*".join(map(re.escape, message.split("..."))))


def is_told(text):
    return any(pattern(message).fullmatch(text) for message in rows())


def with_marks(text):
    """What a shell or printf fills in, as the page has it."""
    return re.sub(r"\$\(.*\)|\$\{[^}]*\}|\$\w+|%\.?\*?\w", "...", text)


@pytest.mark.parametrize("name", SCRIPTS)
def test_every_line_with_which_a_script_dies_is_on_the_page(name):
    said = re.findall(r'\bdie "(.*)"', SCRIPTS[name].read_text())
    assert len(said) > 4
    assert {f"{name}: {with_marks(line)}" for line in said} <= set(rows())
    # What it says and goes on.
    own = {row for row in rows() if row.startswith(f"{name}: ")} - {"run: ... does not fit together:",
                                                                    "run: the daemon started without ..."}
    assert own == {f"{name}: {with_marks(line)}" for line in said}


def printed(source):
    """What a source of the daemon prints, errno's text behind a colon left out."""
    calls = r'(?:\b(?:puts|printf|perror|zlog_err|return failed)\(|fprintf\(stderr, |message\[\] =)\s*"((?:[^"\\]|\\.)*)"'
    lines = re.findall(calls, (PROJECT / "diagd" / source).read_text())
    return {with_marks(line.replace("\\n", "").replace("\\r", "")) for line in lines}


def test_every_line_that_the_daemon_prints_at_its_start_is_on_the_page():
    said = set().union(*map(printed, START_SOURCES)) - LATER - {"error ...: ..."}
    # Two are put together from texts.
    said = {f"error {line}: reason" if "hotplug socket" in line else line.replace("to database ...!", "to database failed!")
            for line in said}
    assert len(said) > 15
    assert [line for line in sorted(said) if not is_told(line)] == []


def output(*words, **how):
    """What a program says, in a network and mounts of its own."""
    done = subprocess.run(["unshare", "--net", "--mount", "--", *map(str, words)], stdin=subprocess.DEVNULL,
                          stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True, check=False, **how)
    assert done.returncode != 0
    return done.stdout


def no_olt(tmp_path):
    folder = tmp_path / "no-olt"
    folder.mkdir()
    (folder / "precious").touch()
    return folder


def odd_board(tmp_path):
    board = tmp_path / "odd.json"
    board.write_text((PROJECT / "sim/boards/olt2.json").read_text().replace('"count": 2', '"count": 1'))
    return board


def copied_run(tmp_path):
    return shutil.copy(RUN, tmp_path)


def project_in_log(tmp_path):
    return ["sh", "-c", f"mount -t tmpfs box /var/log && mkdir -p /var/log/p/sim/boards {tmp_path}/state && "
                        f"cp {BOX} /var/log/p/sim && touch {tmp_path}/state/board.json && exec /var/log/p/sim/box --state {tmp_path}/state --build {tmp_path} -- true"]


def as_nobody(script):
    # The project may lie where nobody may not go, so the script is opened for it.
    return ["bash", "-c", 'exec setpriv --reuid nobody bash /dev/fd/9 -- true 9<"$0"', script]


# Message: what provokes it.
PROVOKED = {
    "run: ... needs a value": lambda tmp_path: [RUN, "--board"],
    "run: build/release/... is missing; run without --no-build": lambda tmp_path: [copied_run(tmp_path), "--no-build"],
    "box: must be run by root": lambda tmp_path: as_nobody(BOX),
    "box: no command given": lambda tmp_path: [BOX],
    "box: no process ...": lambda tmp_path: [BOX, "--enter", "4194304", "--", "true"],
    "box: the box cannot use a state folder under /dev, /media or /var/log":
        lambda tmp_path: ["sh", "-c", f"mount -t tmpfs box /dev/shm && exec {BOX} --state /dev/shm/x --build {BUILD} -- true"],
    "box: the box cannot be run from a project under /media or /var/log": project_in_log,
}
OF_RELEASE = {
    "run: ... is no state folder of an OLT":
        lambda tmp_path: [RUN, "--no-build", "--fresh", "--state", no_olt(tmp_path)],
    "run: ... does not fit together:":
        lambda tmp_path: [RUN, "--no-build", "--fresh", "--state", no_olt(tmp_path), "--board", odd_board(tmp_path)],
}
# Message: the test that tries it, and what that looks for.
ELSEWHERE = {
    "run: must be run by root": ("sim/test_run.py", "must be run by root"),
    "run: TCP port ... is taken; another OLT or daemon is running on this machine; --net starts one beside it": ("sim/test_run.py", "2709 is taken"),
    "run: this root may not make namespaces: ...": ("sim/test_run.py", "may not make namespaces"),
    "run: cannot read the board description ...": ("sim/test_run.py", "/nonexistent.json"),
    "run: ... was begun with another board; use --fresh": ("sim/test_run.py", '"--fresh" in one_line'),
    "run: ... is in use by another OLT": ("sim/test_run.py", '"in use" in one_line'),
    "run: the OLT did not start; see .../log": ("sim/test_run.py", "did not start"),
    "run: the daemon started without ...": ("sim/test_run.py", "run: the daemon started without"),
    "run: the OLT has ended by itself (status ...); see .../log": ("sim/test_run.py", "ended by itself"),
    "boardsim: ...": ("sim/test_board_json.py", "the higher one is 0"),
    "diagd init semaphore failed": ("core/test_start_order.py", "diagd init semaphore failed"),
    "DIAGD init database failed": ("core/test_start_order.py", "DIAGD init database failed"),
    "DIAGD: get port info from db failed!": ("core/test_start_order.py", "DIAGD: get port info from db failed!"),
    "diagd port init failed": ("core/test_start_order.py", "diagd port init failed"),
    "setenv XTABLES_LIBDIR failed: ...": ("core/test_start_order.py", "setenv XTABLES_LIBDIR failed: "),
    "set alarm log ... failed : ...": ("alarm_log/test_defaults.py", "failed : "),
    "open fan failed: ...": ("core/test_start_order.py", "open fan failed: "),
    "open /dev/tq_gpio_cfg failed": ("monitors/test_reset_button.py", "open /dev/tq_gpio_cfg failed"),
    "/dev/tq_gpio_cfg ioctl fail!": ("monitors/test_reset_button.py", "/dev/tq_gpio_cfg ioctl fail!"),
    "Failed to open the device": ("monitors/test_reset_button.py", "Failed to open the device"),
    "devuio mmap": ("monitors/test_reset_button.py", "devuio mmap"),
    "error ... hotplug socket...: ...": ("monitors/test_usb_monitor.py", "error create hotplug socket: "),
    "power monitorfailed!": ("monitors/test_power_monitor.py", "power monitorfailed!"),
    "fan_monitor_thread init failed!": ("monitors/test_fan_monitor.py", "fan_monitor_thread init failed!"),
    "wtd_app_init create ... failed!": ("monitors/test_usb_monitor.py", "wtd_app_init create usb_monitor_thread failed!"),
    "DIAG Msg: vty connect to database failed!": ("core/test_start_order.py", "vty connect to database failed!"),
    "diagd: ... on config line ...: ...": ("core/test_start_report.py", "on config line"),
    "diagd: ...can't open configuration file ...": ("core/test_start_report.py", "can't open configuration file"),
    "diagd: ...using backup configuration file!": ("core/test_start_report.py", "using backup configuration file!"),
    "started without ...; see diagd(8), Starting without": ("core/test_start_report.py", "see diagd(8), Starting without"),
    "goes on without ...; see diagd(8), Starting without": ("../unit/core/start_report_test.cpp", "goes on without"),
    "diagsh: no daemon answers on ...; is the OLT running?": ("shell/test_diagsh.py", "no daemon answers"),
    "diagsh: only root and the vty group may use ...": ("shell/test_diagsh.py", "only root and the vty group"),
}
# A minute in vain, and a kernel that does not let a mount be protected.
UNTRIED = {"box: process ... is no box", "olt: ... did not come up within ... s", "box: cannot make ... read-only"}


tried = set()


def tries(*messages):
    """Says which messages a test below provokes."""
    tried.update(messages)
    return lambda test: test


def test_every_message_of_the_page_has_been_tried():
    assert set(rows()) == {*PROVOKED, *OF_RELEASE, *ELSEWHERE, *UNTRIED, *tried}
    for message, (file, text) in ELSEWHERE.items():
        assert text in (TESTS / file).read_text(), message


@pytest.mark.parametrize("message", PROVOKED)
def test_what_is_provoked_is_said(tmp_path, message):
    assert any(pattern(message).fullmatch(line) for line in output(*PROVOKED[message](tmp_path)).splitlines())


@pytest.mark.skipif(BUILD.name != "release", reason="./run always starts the release build")
@pytest.mark.parametrize("message", OF_RELEASE)
def test_what_run_refuses_is_said_with_the_reason(tmp_path, message):
    text = output(*OF_RELEASE[message](tmp_path))
    assert any(pattern(message).fullmatch(line) for line in text.splitlines()), text
    assert (tmp_path / "no-olt" / "precious").exists()


def in_a_box(state, script):
    """What the preparation of an OLT says in a box where the script has been run before."""
    return output(BOX, "--state", state, "--build", BUILD, "--", "sh", "-c", f"{script} && exec {OLT} files")


@tries("olt: the database cannot be prepared: ...")
def test_a_model_that_is_refused_ends_the_start_with_the_reason(tmp_path):
    text = in_a_box(tmp_path, "mount -t tmpfs box /run/olt/build/yang && echo nonsense >/run/olt/build/yang/olt-ntp.yang")
    assert re.search(r"^olt: the database cannot be prepared: .", text, re.M), text


@tries("olt: the database cannot be read")
def test_a_database_that_cannot_be_listed_ends_the_start(tmp_path):
    tool = "/run/olt/deps/sysrepo/bin/sysrepoctl"
    text = in_a_box(tmp_path, f"printf '#!/bin/sh\\n[ $1 != --list ]\\n' >/tmp/s && chmod 755 /tmp/s && mount --bind /tmp/s {tool}")
    assert "olt: the database cannot be read" in text.splitlines(), text


@tries("olt: the board has ended: ...")
def test_a_board_that_cannot_begin_ends_the_start_with_the_reason(make_olt):
    with pytest.raises(AssertionError, match=r"the box ended: olt: the board has ended: boardsim: .*: i2c_buses: "):
        make_olt(board={"i2c_buses": 0})


@tries("box: ... is in use by another box",
       "olt: up, board, files, daemon, zebra, answers, logs, thresholds or sysrepocfg",
       "olt: the ...board has ended; see diagd.log and console.log in the log folder")
def test_what_a_box_refuses_beside_one_that_runs_is_said(make_olt):
    olt = make_olt()
    assert output(BOX, "--state", olt.state, "--build", BUILD, "--", "true").endswith(" is in use by another box\n")
    assert olt.exec(OLT, "nonsense").stderr == "olt: up, board, files, daemon, zebra, answers, logs, thresholds or sysrepocfg\n"
    # The second board of a folder ends at once.
    assert olt.exec(OLT, "board").stderr == "olt: the board has ended; see diagd.log and console.log in the log folder\n"


@tries("Cannot bind path ...",
       "Ran out of docstring while parsing 'alarm-log debug send ...",
       "watchfrr: no process found")
def test_what_the_daemon_says_of_its_socket_and_without_harm(cold_olt):
    olt = cold_olt
    socket = olt.state / "run" / "diagd.vty"
    socket.mkdir()
    olt.start(wait=False)
    wait_until(lambda: "Cannot bind path /run/frr/diagd.vty: " in olt.stderr(), "the daemon says so")
    assert "Ran out of docstring while parsing 'alarm-log debug send " in olt.stderr()
    olt.kill()
    socket.rmdir()
    olt.start()
    assert olt.run("reload") == ("", 0)
    wait_until(lambda: "watchfrr: no process found" in olt.stderr(), "killall says so")
