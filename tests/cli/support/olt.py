# SPDX-License-Identifier: GPL-2.0-or-later
"""An OLT for a test: a private box with a simulated board, pinned, and the daemon in it."""

import ctypes
import fcntl
import itertools
import json
import os
import re
import shutil
import signal
import subprocess
import time
from pathlib import Path

from calls import read_trace, require_traced
from project import BUILD, PROJECT
from vty import DEADLINE_S, Telnet, Vty, in_namespace, takes_commands

SUPPORT = Path(__file__).parent
BOX = PROJECT / "sim" / "box"
OLT = PROJECT / "sim" / "olt"
CALL_SHIM = "/run/olt/build/lib/libcall_shim.so"  # as the box sees it
LEAK_CHECK = "/run/olt/build/lib/libleak_check.so"
SEMAPHORE_KEYS = {"board": 0x102410, "alarm": 0x102411}
SANITIZER_REPORTS = ("AddressSanitizer", "runtime error:", "ThreadSanitizer")
PASSWORD = "secret"
# The call shim comes before the sanitizer's runtime: it sees the daemon's calls, not those that the runtime passes on.
ASAN_OPTIONS = "detect_leaks=1:verify_asan_link_order=0"
# Environment of a daemon whose memory is measured: what it frees goes back at once, sanitized or not.
NO_QUARANTINE = {"ASAN_OPTIONS": f"{ASAN_OPTIONS}:quarantine_size_mb=0:thread_local_quarantine_size_kb=0"}

# The seed of ./test --disturb: daemons then sleep around their calls and share one processor with a program that never
# rests.
DISTURB = os.environ.get("DIAGD_DISTURB")

_numbers = itertools.count()
_libc = ctypes.CDLL(None, use_errno=True)


def wait_until(condition, what, timeout=DEADLINE_S):
    """Polls condition until it gives something true, and returns that."""
    deadline = time.monotonic() + timeout
    while True:
        value = condition()
        if value:
            return value
        assert time.monotonic() < deadline, f"{what} within {timeout} s"
        time.sleep(0.01)


def prepared_database():
    """A prepared database to copy, made once for all that run side by side."""
    template = PROJECT / "build" / "test-state" / f"template-{BUILD.name}"
    template.parent.mkdir(parents=True, exist_ok=True)
    with open(f"{template}.lock", "w") as lock:
        fcntl.flock(lock, fcntl.LOCK_EX)
        subprocess.run([BOX, "--state", template, "--build", BUILD, "--net", "--", OLT, "files"], check=True)
    return template / "database"


def sanitizer_runtime():
    """The sanitizer's runtime that preloaded libraries need, if this build has one."""
    name = {"asan": "libasan.so", "tsan": "libtsan.so"}.get(BUILD.name)
    if not name:
        return []
    path = subprocess.run(["gcc", f"-print-file-name={name}"], capture_output=True, text=True, check=True)
    return [os.path.realpath(path.stdout.strip())]


class Olt:
    """The box and the board live from construction to close(); the daemon from start() to kill()."""

    def __init__(self, state, template=None, board=None):
        """state: a folder not yet there.  template: a database to begin with.  board: changes to the
        board description, merged at its top level."""
        self.state = Path(state)
        self.daemon = None
        self.pid = None
        self.stdout_path = self.state / "log" / "stdout"
        self.stderr_path = self.state / "log" / "stderr"
        self.trace_path = self.state / "log" / "trace"
        self.faults_path = self.state / "log" / "faults"
        for folder in ("conf", "run", "board", "database", "log", "flash"):
            (self.state / folder).mkdir(parents=True)
        if template:
            shutil.rmtree(self.state / "database")
            subprocess.run(["cp", "-a", str(template), str(self.state / "database")], check=True)
        description = json.loads((PROJECT / "sim" / "boards" / "olt8.json").read_text())
        description["drift"] = False
        description.update(board or {})
        (self.state / "board.json").write_text(json.dumps(description))
        (self.state / "conf" / "vty-password").write_text(PASSWORD + "\n")
        self.holder = subprocess.Popen(
            [BOX, "--state", self.state, "--build", BUILD, "--net", "--", OLT, "board"],
            stdin=subprocess.DEVNULL,
            stdout=open(self.state / "log" / "box", "wb"),
            stderr=subprocess.STDOUT,
        )
        wait_until(self._board_answers, "the board answers")

    def _board_answers(self):
        if self.holder.poll() is not None:
            raise AssertionError("the box ended: " + (self.state / "log" / "box").read_text())
        return self._run_boardctl("channel", "show").returncode == 0

    # --- the daemon

    def start(self, *arguments, env=None, preload=(), trace=False, wait=True):
        """Starts the daemon.  arguments: its command line; env: added to its environment; preload: libraries;
        trace: record its calls of the platform, of libfrr and of libc."""
        assert not self.daemon, "the daemon runs already"
        leak_check = [LEAK_CHECK] if BUILD.name == "asan" else []
        libraries = [*([CALL_SHIM] if trace or DISTURB else []), *sanitizer_runtime(), *leak_check, *map(str, preload)]
        variables = {"OLT_PRELOAD": ":".join(libraries)}
        variables["ASAN_OPTIONS"] = ASAN_OPTIONS
        variables["UBSAN_OPTIONS"] = "print_stacktrace=1"
        # The search for deadlocks gives up on sysrepo's many locks in shared memory.
        variables["TSAN_OPTIONS"] = f"detect_deadlocks=0:suppressions={PROJECT}/tests/tsan.supp"
        if trace:
            self.trace_path.unlink(missing_ok=True)
            variables["TQ_TRACE"] = "/var/log/trace"
        if self.faults_path.exists():
            variables["TQ_FAULTS"] = "/var/log/faults"
        command = self.inside(OLT, "daemon", *arguments)
        if DISTURB:
            variables["CALL_SHIM_DISTURB"] = DISTURB
            command = ["taskset", "--cpu-list", str(max(os.sched_getaffinity(0))), *command]
        variables.update(env or {})
        with open(self.stdout_path, "ab") as out, open(self.stderr_path, "ab") as err:
            self.daemon = subprocess.Popen(
                command,
                stdin=subprocess.DEVNULL,
                stdout=out,
                stderr=err,
                env={**os.environ, **variables},
            )
        if wait:
            self.wait_answers()
        return self

    def wait_answers(self):
        """Until the daemon answers a command on its vty."""

        def answers():
            if self.daemon.poll() is not None:
                raise AssertionError(f"the daemon ended with {self.daemon.returncode}: {self.stderr()}{self.stdout()}")
            return takes_commands(self.vty_path)

        try:
            wait_until(answers, "the daemon answers")
        except AssertionError as error:
            if self.daemon.poll() is not None:
                raise
            waits = [Path(task, "wchan").read_text() for task in Path(f"/proc/{self.daemon_pid()}/task").iterdir()]
            raise AssertionError(f"{error}; its threads wait in {waits}; {self.stderr()}{self.log()}") from None
        self.pid = self.daemon_pid()

    def daemon_pid(self):
        # nsenter waits for its only child, which is the daemon.
        children = Path(f"/proc/{self.daemon.pid}/task/{self.daemon.pid}/children").read_text().split()
        assert len(children) == 1, children
        return int(children[0])

    def send_signal(self, number):
        os.kill(self.pid or self.daemon_pid(), number)  # the former comes with its first answer

    def kill(self, number=signal.SIGKILL):
        """Ends the daemon and returns its exit status, negative when a signal ended it."""
        if self.daemon.poll() is None:
            self.send_signal(number)
        return self.wait_end()

    def stop(self):
        return self.kill(signal.SIGTERM)

    def wait_end(self, timeout=DEADLINE_S):
        status = self.daemon.wait(timeout)
        self.daemon = self.pid = None
        return status

    def restart(self, **how):
        self.stop()
        return self.start(**how)

    def close(self):
        """Ends the box and all in it; says what a sanitizer found."""
        if self.daemon:
            self.stop()
        self.holder.kill()  # the box dies with its starter's process
        self.holder.wait()
        reports = [line for line in self.stderr().splitlines() if any(r in line for r in SANITIZER_REPORTS)]
        assert not reports, reports

    # --- talking to it

    @property
    def vty_path(self):
        return str(self.state / "run" / "diagd.vty")

    def vty(self, node="config", **how):
        return Vty(self.vty_path, node, **how)

    def run(self, command, node="config"):
        """Text and return code of one command, in a session of its own."""
        with self.vty(node) as session:
            return session.run(command)

    def telnet(self, password=PASSWORD):
        return Telnet(f"/proc/{self.holder.pid}/ns/net", password)

    def boardctl(self, *words):
        """Runs boardctl; fails the test when it refuses."""
        done = self._run_boardctl(*words)
        assert done.returncode == 0, f"boardctl {words}: {done.stdout}{done.stderr}"
        return done.stdout

    def populate(self):
        """Plugs the modules that a new OLT comes with, one of each kind."""
        population = PROJECT / "sim" / "boards" / "olt8-modules.json"
        for module in json.loads(population.read_text())["modules"]:
            self.boardctl("plug", module["kind"], module["port"], population.parent / module["file"])

    def boardctl_refused(self, *words):
        """Runs boardctl, which must refuse; returns what it says."""
        done = self._run_boardctl(*words)
        assert done.returncode != 0, f"boardctl {words} did not refuse: {done.stdout}"
        return done.stdout + done.stderr

    def _run_boardctl(self, *words):
        return subprocess.run(
            [BUILD / "bin" / "boardctl", *map(str, words)],
            env={**os.environ, "BOARDSIM_DIR": str(self.state / "board")},
            stdin=subprocess.DEVNULL,
            capture_output=True,
            text=True,
        )

    def inside(self, *command):
        """The command line that runs a program inside the box, as root."""
        return [BOX, "--enter", str(self.holder.pid), "--", *map(str, command)]

    def exec(self, *command, **how):
        """Runs a program inside the box, as root; returns the completed process."""
        how = {"capture_output": True, "text": True, "stdin": subprocess.DEVNULL, "timeout": 60, **how}
        if "input" in how:
            del how["stdin"]
        return subprocess.run(self.inside(*command), **how)

    def configure(self, *lines):
        """Adds lines to the configuration file the daemon reads when it starts; before the first start."""
        with open(self.state / "conf" / "diagd.conf", "a", encoding="latin-1") as file:
            file.writelines(line + "\n" for line in lines)

    # --- looking at it

    def log(self):
        path = self.state / "log" / "diagd.log"
        return path.read_text("latin-1") if path.exists() else ""

    def wait_log(self, text, timeout=DEADLINE_S):
        wait_until(lambda: text in self.log(), f"{text!r} in the log", timeout)

    def stdout(self):
        return self.stdout_path.read_bytes().decode("latin-1") if self.stdout_path.exists() else ""

    def stderr(self):
        return self.stderr_path.read_bytes().decode("latin-1") if self.stderr_path.exists() else ""

    def trace(self):
        calls = read_trace(self.trace_path)
        return [call for call in calls if '"/var/log/faults"' not in call.arguments]

    def faults(self, *lines):
        """Makes platform calls fail, see platform/trace; each call replaces those of the last, none clears them.  To be
        called once before start, so that the daemon looks for the file at all."""
        for line in lines:
            require_traced(line.split()[0])
        # A line that is written as before keeps its count of calls; the comment makes it a new one.
        text = "".join(f"{line} # {next(_numbers)}\n" for line in lines)
        new = self.faults_path.with_suffix(".new")
        new.write_text(text)
        new.rename(self.faults_path)

    def fds(self):
        """What the daemon's descriptors lead to, by number."""
        found = {}
        for entry in os.scandir(f"/proc/{self.pid}/fd"):
            try:
                found[int(entry.name)] = os.readlink(entry.path)
            except FileNotFoundError:
                pass
        return found

    def settled_fds(self):
        """fds() once the sessions that ended just now are closed: the same at several looks in a row."""
        seen = [None] * 5

        def settled():
            time.sleep(0.02)
            seen[:] = [*seen[1:], self.fds()]
            return seen[0] is not None and all(found == seen[0] for found in seen) and seen[0]

        return wait_until(settled, "the daemon's descriptors stand still")

    def wait_no_more_fds(self, before):
        """Until the daemon has no more descriptors than `before`; a monitor may have one for a moment."""
        try:
            wait_until(lambda: len(self.fds()) <= len(before), "the daemon has no more descriptors than before")
        except AssertionError as error:
            raise AssertionError(f"{error}: before {before}, now {self.fds()}") from None

    def threads(self):
        """Names of the daemon's threads; the main thread's is "diagd"."""
        return sorted(name for name, _ in self._thread_users())

    def root_threads(self):
        """Names of those threads whose effective user is root now: the ones that have raised their privileges."""
        return sorted(name for name, user in self._thread_users() if user == 0)

    def _thread_users(self):
        found = []
        for task in Path(f"/proc/{self.pid}/task").iterdir():
            try:
                status = Path(task, "status").read_text()
            except (FileNotFoundError, ProcessLookupError):  # it has just ended
                continue
            name, users = (re.search(rf"^{key}:\t(.*)$", status, re.M)[1] for key in ("Name", "Uid"))
            found.append((name, int(users.split()[1])))
        return found

    def quiet(self):
        """Switches off the monitors that file records of their own accord, for tests that count records."""
        for monitor in ("fan", "power"):
            assert self.run(f"no {monitor} monitor", "diagnose") == ("", 0)
        return self

    def sem_value(self, name):
        """Value of the semaphore of the board or the alarm store: 1 is free, 0 held."""
        return self._semctl(name, 12)  # GETVAL

    def wait_free(self, name):
        """Until nobody holds that semaphore: the monitors take it, too, each for a moment."""
        wait_until(lambda: self.sem_value(name) == 1, f"the {name} semaphore is given back")

    def sem_waiters(self, name):
        """How many wait for that semaphore."""
        return self._semctl(name, 14)  # GETNCNT

    def _semctl(self, name, command):
        def read():
            identifier = _libc.semget(SEMAPHORE_KEYS[name], 0, 0)
            if identifier < 0:
                raise OSError(ctypes.get_errno(), f"semaphore {name}")
            return _libc.semctl(identifier, 0, command, 0)

        return in_namespace(f"/proc/{self.holder.pid}/ns/ipc", read)
