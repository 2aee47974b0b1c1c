# SPDX-License-Identifier: GPL-2.0-or-later
"""./run: starts an OLT, says how to reach it, ends all of it, and keeps its state.

It runs in network, IPC and mount namespaces made for the test, which stand for the host: what is left behind
there is seen exactly, and other OLTs on the real host do not matter.
"""

import contextlib
import json
import os
import re
import signal
import socket
import subprocess
from pathlib import Path

import pytest

from olt import BUILD, PROJECT, wait_until
from stopwatch import Stopwatch
from vty import DEADLINE_S, Telnet, in_namespace

RUN = str(PROJECT / "run")
DIAGSH = str(BUILD / "bin" / "diagsh")
PATHS_OF_THE_BOX = (
    "/etc/frr/diagd.conf",
    "/etc/olt",
    "/run/frr/diagd.vty",
    "/run/olt",
    "/run/boardsim",
    "/dev/tq_gpio_cfg",
    "/var/lib/olt",
    "/media/config",
    "/var/log/diagd.log",
)

pytestmark = [
    pytest.mark.slow,
    pytest.mark.skipif(BUILD.name != "release", reason="./run always starts the release build, whose run of the tests has these"),
]


class Host:
    """Namespaces that stand for the host."""

    def __init__(self):
        self.holder = subprocess.Popen(
            ["unshare", "--mount", "--ipc", "--net", "--", "sh", "-c"]
            + ["mount -t tmpfs host /dev/shm && ip link set lo up && echo ready && exec sleep infinity"],
            stdout=subprocess.PIPE,
        )
        assert self.holder.stdout.readline() == b"ready\n"
        self.network = f"/proc/{self.holder.pid}/ns/net"

    def command(self, *words):
        return ["nsenter", "--target", str(self.holder.pid), "--mount", "--ipc", "--net", "--", *map(str, words)]

    def output(self, *words):
        return subprocess.run(self.command(*words), capture_output=True, text=True, check=True).stdout

    def traces(self):
        """What a program could leave behind here, apart from processes."""
        return {
            "semaphores and shared memory": self.output("ipcs"),
            "/dev/shm": self.output("ls", "/dev/shm"),
            "mounts": self.output("cat", "/proc/self/mounts"),
            "files": [path for path in PATHS_OF_THE_BOX if os.path.lexists(path)],
        }

    def close(self):
        self.holder.kill()
        self.holder.wait()


def processes_of(state):
    """Processes that were started for the state folder: the name of each, by its id."""
    found = {}
    for process in Path("/proc").glob("[0-9]*"):
        with contextlib.suppress(OSError):  # it has ended meanwhile
            if f"RUN_TEST={state}".encode() in (process / "environ").read_bytes():
                found[int(process.name)] = (process / "comm").read_text().rstrip()
    return found


class Run:
    """One ./run."""

    def __init__(self, host, state, *options, before=()):
        self.host, self.state = host, state
        self.output = ""
        self.process = subprocess.Popen(
            host.command(*before, RUN, "--no-build", "--state", state, *options),
            stdin=subprocess.DEVNULL,
            stdout=subprocess.PIPE,
            stderr=subprocess.STDOUT,
            text=True,
            env={**os.environ, "RUN_TEST": str(state)},
            start_new_session=True,
        )

    def wait_up(self):
        for line in self.process.stdout:
            self.output += line
            if line.startswith("  logs"):
                return self
        raise AssertionError(f"./run ended: {self.output}")

    def interrupt(self):
        """Control-C: the whole foreground process group gets it."""
        os.killpg(self.process.pid, signal.SIGINT)
        return self.process.wait(DEADLINE_S)

    def ends(self):
        """Exit status and all that was said."""
        self.output += self.process.communicate(timeout=DEADLINE_S)[0]
        return self.process.returncode, self.output

    def diagsh(self, *words):
        done = subprocess.run([DIAGSH, "-s", self.state, *words], capture_output=True, text=True, stdin=subprocess.DEVNULL)
        assert done.returncode == 0, done.stderr
        return done.stdout


@pytest.fixture
def host():
    made = Host()
    yield made
    made.close()


@pytest.fixture
def run(host, states, request):
    """A function that starts ./run on a state folder of the test's own."""
    state = states / ("run-" + re.sub(r"\W", "_", request.node.name))
    started = []

    def start(*options, **how):
        started.append(Run(host, state, *options, **how))
        return started[-1]

    yield start
    for one in started:
        if one.process.poll() is None:
            one.interrupt()


def test_run_says_how_to_connect_and_each_way_works(run, host):
    up = run().wait_up()
    password = re.search(r"telnet localhost 2709 +password (\S+)", up.output).group(1)
    with Telnet(host.network, password) as session:
        assert session.prompt == "olt> "
    shell, *options = re.search(r"^  shell +(.*)", up.output, re.M).group(1).split()
    done = subprocess.run([shell, *options, "-n", "enable", "-c", "show running-config"], capture_output=True, text=True)
    assert done.returncode == 0 and "hostname olt" in done.stdout
    board = re.search(r"^  board +(.*)", up.output, re.M).group(1).rsplit(" ", 1)[0]
    assert subprocess.run(f"{board} channel show", shell=True, capture_output=True).returncode == 0
    assert os.stat(up.state / "conf" / "vty-password").st_mode & 0o777 == 0o600


@pytest.mark.parametrize("how", ["control-c", "terminate", "kill"])
def test_nothing_is_left_behind(run, host, how):
    before = host.traces()
    up = run().wait_up()
    assert len(processes_of(up.state)) > 2
    if how == "control-c":
        assert up.interrupt() == 0
    elif how == "terminate":
        up.process.terminate()
        assert up.process.wait(DEADLINE_S) == 0
    else:
        up.process.kill()
        up.process.wait(DEADLINE_S)
    wait_until(lambda: not processes_of(up.state), "all processes end")
    assert host.traces() == before


def test_run_ends_with_an_error_when_the_daemon_dies(run, host):
    before = host.traces()
    up = run().wait_up()
    (daemon,) = [pid for pid, name in processes_of(up.state).items() if name == "diagd"]
    os.kill(daemon, signal.SIGKILL)
    status, output = up.ends()
    assert status == 1 and "ended by itself" in output
    wait_until(lambda: not processes_of(up.state), "all processes end")
    assert host.traces() == before


def test_end_is_orderly(run):
    up = run().wait_up()
    up.interrupt()
    assert "Terminating on signal" in (up.state / "log" / "diagd.log").read_text()


def test_state_survives_a_restart_and_fresh_forgets_it(run):
    up = run().wait_up()
    up.diagsh("-n", "enable", "-c", "configure terminal", "-c", "hostname other", "-c", "do write file")
    marker = up.state / "flash" / "kept"
    marker.write_text("kept")
    up.interrupt()
    up = run().wait_up()
    assert "hostname other" in up.diagsh("-n", "enable", "-c", "show running-config")
    assert marker.exists()
    up.interrupt()
    up = run("--fresh").wait_up()
    assert "hostname olt" in up.diagsh("-n", "enable", "-c", "show running-config")
    assert not marker.exists()


def test_what_this_start_lacks_is_told_and_nothing_of_an_earlier_one(run):
    up = run().wait_up()
    conf = up.state / "conf" / "diagd.conf"
    assert "started" not in up.output
    up.diagsh("-n", "enable", "-c", "write")
    up.interrupt()
    conf.chmod(0)
    up = run().wait_up()
    assert "run: the daemon started without newest configuration (" in up.output
    up.interrupt()
    up = run().wait_up()
    assert "started" not in up.output
    up.interrupt()
    for path in (conf, conf.with_name("diagd.conf.sav")):
        path.chmod(0)
    up = run().wait_up()
    assert re.findall("run: the daemon started without (.*?) \\(", up.output) == ["configuration"]


def test_fresh_forgets_by_name_and_leaves_what_is_the_operators_or_mounted(run, host):
    up = run().wait_up()
    up.interrupt()
    (up.state / "notes").write_text("mine")
    stick = up.state / "flash" / "stick"
    stick.mkdir()
    assert subprocess.run(host.command("mount", "-t", "tmpfs", "stick", stick)).returncode == 0
    precious = f"echo precious >{stick}/file"
    assert subprocess.run(host.command("sh", "-c", precious)).returncode == 0
    status, output = run("--fresh").ends()
    assert status == 1 and str(stick) in output
    assert host.output("cat", stick / "file") == "precious\n"
    host.output("umount", stick)
    up = run("--fresh").wait_up()
    assert (up.state / "notes").read_text() == "mine" and not stick.exists()


def boardctl(up, *words):
    return subprocess.run(
        [BUILD / "bin" / "boardctl", *words],
        env={**os.environ, "BOARDSIM_DIR": str(up.state / "board")},
        check=True,
        capture_output=True,
    )


def serial_numbers(up):
    ports = json.loads(up.diagsh("-c", "show transceiver json"))
    return {name: port[0].get("vendorSerialNumber", "").strip() for name, port in ports.items()}


def test_new_olt_has_modules_and_the_operators_changes_to_them_survive(run):
    up = run().wait_up()
    new = serial_numbers(up)
    assert len(set(new.values()) - {""}) >= 7
    assert new["PON 0/5"] == ""
    boardctl(up, "unplug", "gpon", "1")
    boardctl(up, "plug", "gpon", "5", str(PROJECT / "sim" / "modules" / "sfp-850.json"))
    changed = serial_numbers(up)
    assert changed["PON 0/1"] == "" and changed["PON 0/5"] == new["GE 0/1"]
    up.interrupt()
    up = run().wait_up()
    assert serial_numbers(up) == changed
    up.interrupt()
    up = run("--fresh").wait_up()
    assert serial_numbers(up) == new


def test_later_start_takes_at_most_5_seconds(run):
    run().wait_up().interrupt()
    watch = Stopwatch()
    run().wait_up()
    assert watch.spent_s() <= 5


def one_line(output):
    assert output.count("\n") == 1, output
    return output


def test_taken_port_is_refused_in_one_line(run, host):
    taken = in_namespace(host.network, socket.socket)
    with taken:
        taken.setsockopt(socket.SOL_SOCKET, socket.SO_REUSEPORT, 1)
        taken.bind(("", 2709))
        taken.listen()
        status, output = run().ends()
    assert status == 1
    assert "2709 is taken" in one_line(output)


def test_second_run_is_refused_and_the_first_goes_on(run):
    up = run().wait_up()
    status, output = run().ends()
    assert status == 1 and "2709 is taken" in one_line(output)
    assert "hostname" in up.diagsh("-n", "enable", "-c", "show running-config")


def test_state_folder_in_use_is_refused_even_with_fresh(run):
    up = run().wait_up()
    other = Host()  # its port 2709 is free
    try:
        status, output = Run(other, up.state, "--fresh").ends()
    finally:
        other.close()
    assert status == 1 and "in use" in one_line(output)
    assert "hostname" in up.diagsh("-n", "enable", "-c", "show running-config")


def test_user_without_rights_is_refused_in_one_line(run):
    # The project may lie where nobody may not go, so the script is opened for it.
    opened = 'exec setpriv --reuid nobody bash /dev/fd/9 "${@:2}" 9<"$1"'
    status, output = run(before=["bash", "-c", opened, "bash"]).ends()
    assert status == 1 and "must be run by root" in one_line(output)


def test_root_that_may_not_make_namespaces_is_refused_in_one_line(run):
    status, output = run(before=["setpriv", "--bounding-set=-sys_admin", "--inh-caps=-sys_admin"]).ends()
    assert status == 1 and "may not make namespaces" in one_line(output)


def test_board_description_that_cannot_be_read_is_refused_in_one_line(run):
    status, output = run("--board", "/nonexistent.json").ends()
    assert status == 1 and "/nonexistent.json" in one_line(output)


def test_board_description_that_makes_no_sense_ends_the_start_with_the_reason(run, tmp_path):
    board = tmp_path / "board.json"
    board.write_text("{ nonsense")
    status, output = run("--board", str(board)).ends()
    assert status == 1 and "board.json" in output and "did not start" in output


def test_board_description_that_never_started_is_not_what_the_olt_was_begun_with(run, tmp_path):
    board = tmp_path / "board.json"
    description = json.loads((PROJECT / "sim" / "boards" / "olt2.json").read_text())
    board.write_text(json.dumps({**description, "pon_cages": {}}))
    status, output = run("--board", str(board)).ends()
    assert status == 1 and "pon_cages" in output and "did not start" in output
    assert "Killed" not in output and "line " not in output
    board.write_text(json.dumps(description))
    run("--board", str(board)).wait_up()


def test_second_olt_runs_beside_the_first_and_each_is_reached_and_ended_alone(run, host, states):
    first = run().wait_up()
    second = Run(host, states / "run-second", "--net").wait_up()
    try:
        assert "telnet    none" in second.output
        for up, name in ((first, "first"), (second, "second")):
            up.diagsh("-c", f"hostname {name}")
        for up, name in ((first, "first"), (second, "second")):
            assert f"hostname {name}\n" in up.diagsh("-n", "enable", "-c", "show running-config")
        second.process.terminate()
        assert second.process.wait(DEADLINE_S) == 0
        wait_until(lambda: not processes_of(second.state), "all processes of the second end")
        assert "hostname first\n" in first.diagsh("-n", "enable", "-c", "show running-config")
    finally:
        if second.process.poll() is None:
            second.process.terminate()
            second.process.wait(DEADLINE_S)


def test_background_of_a_script_is_ended_by_sigterm(run):
    # As a shell without job control starts what is put behind "&".
    up = run(before=["sh", "-c", 'trap "" INT QUIT; exec "$@"', "sh"]).wait_up()
    up.process.terminate()
    assert up.process.wait(DEADLINE_S) == 0
    wait_until(lambda: not processes_of(up.state), "all processes end")


def test_board_of_ones_own_has_empty_cages_and_stays_until_fresh(run, tmp_path):
    board = tmp_path / "board.json"
    description = json.loads((PROJECT / "sim" / "boards" / "olt8.json").read_text())
    description["base_information"]["serial_number"] = "OWN1"
    board.write_text(json.dumps(description))
    up = run("--board", str(board)).wait_up()
    assert "OWN1" in up.diagsh("-c", "show version")
    assert set(serial_numbers(up).values()) <= {""}
    up.interrupt()
    status, output = run("--board", str(PROJECT / "sim" / "boards" / "olt8.json")).ends()
    assert status == 1 and "--fresh" in one_line(output)
    up = run("--fresh").wait_up()
    assert "OWN1" not in up.diagsh("-c", "show version")


def test_unknown_option_shows_the_usage(run):
    status, output = run("--nonsense").ends()
    assert status == 2 and output.startswith("usage: ./run")


def test_help_is_given_without_starting_anything(run, host):
    status, output = run("--help").ends()
    assert status == 0 and "--fresh" in output and "--no-build" in output and "--board" in output
