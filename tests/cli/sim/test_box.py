# SPDX-License-Identifier: GPL-2.0-or-later
"""The box keeps the machine whole: whatever runs there as root, deletes and writes, nothing outside is touched.

The machine is played by a mount namespace of the test's own, where what could be lost is in memory: a box that lets
something through costs the test, not the machine.
"""

import os
import shutil
import subprocess

import pytest

from olt import BOX, BUILD, PROJECT
from vty import DEADLINE_S

FOLDERS = ("/tmp", "/mnt", "/var/tmp", "/run", "/boot")  # in memory, for the test alone
EXISTING = ("/etc/skel", "/var/lib/misc", "/dev/shm")  # of every Debian
PRECIOUS = [
    *(f"{folder}/{file}" for folder in FOLDERS for file in ("plain", "disk/file", "disk/nested/file", "bound/file")),
    *(f"{folder}/file" for folder in EXISTING),
]
# A tmpfs for each, another one below it, and a part of it mounted once more elsewhere.
PREPARE = f"""
set -e
for folder in {" ".join(FOLDERS)}; do
    mount -t tmpfs -o mode=1777 machine $folder
    echo precious >$folder/plain
    mkdir $folder/disk $folder/bound
    mount -t tmpfs disk $folder/disk
    mkdir $folder/disk/nested $folder/disk/part
    mount -t tmpfs nested $folder/disk/nested
    mount --bind $folder/disk/part $folder/bound
    for file in disk/file disk/nested/file bound/file; do
        echo precious >$folder/$file
    done
done
for folder in {" ".join(EXISTING)}; do
    mount -t tmpfs disk $folder
    echo precious >$folder/file
done
echo ready
exec sleep infinity
"""
# Every way to lose a file that a careless line of a test may take.
DESTROY = """
for file; do
    echo lost >"$file"
    chmod 0 "$file"
    mv "$file" "$file.away"
    rm -f "$file"
    rm -rf "${file%/*}"
done
rm -rf /tmp/* /mnt/* /var/tmp/* /run/disk /run/bound /run/plain /boot/* /dev/shm/*
umount -l /tmp /mnt /var/tmp
rm -rf /tmp/* /mnt/* /var/tmp/*
echo done
"""


class Machine:
    """A mount namespace that stands for the machine."""

    def __init__(self, prepare):
        self._holder = subprocess.Popen(
            ["unshare", "--mount", "--propagation", "private", "--", "sh", "-c", prepare], stdout=subprocess.PIPE
        )
        assert self._holder.stdout.readline() == b"ready\n"

    def run(self, *words):
        return subprocess.run(
            ["nsenter", "--target", str(self._holder.pid), "--mount", "--wd=/", "--", *map(str, words)],
            stdin=subprocess.DEVNULL,
            capture_output=True,
            text=True,
            timeout=DEADLINE_S,
        )

    def read(self, path):
        return self.run("cat", path).stdout

    def close(self):
        self._holder.kill()
        self._holder.wait()


@pytest.fixture
def machine():
    made = []

    def make(prepare=PREPARE):
        made.append(Machine(prepare))
        return made[-1]

    yield make
    for one in made:
        one.close()


def in_box(machine, state, *command, box=BOX):
    """What the command says that runs in a box on that machine."""
    done = machine.run(box, "--state", state, "--build", BUILD, "--net", "--", *command)
    assert done.returncode == 0, done.stdout + done.stderr
    return done.stdout


@pytest.fixture
def state(states, request):
    folder = states / request.node.name
    yield folder
    shutil.rmtree(folder, ignore_errors=True)


def test_what_is_mounted_on_the_machine_is_whole_after_a_box_that_deletes_everything(machine, state):
    host = machine()
    assert in_box(host, state, "sh", "-c", DESTROY, "sh", *PRECIOUS).endswith("done\n")
    assert {path: host.read(path) for path in PRECIOUS} == dict.fromkeys(PRECIOUS, "precious\n")


def test_what_the_machine_has_mounted_below_a_folder_is_not_in_the_box(machine, state):
    listed = in_box(machine(), state, "sh", "-c", "ls /tmp /tmp/disk /mnt/disk /var/tmp/disk /var/lib/misc; ls /run").split()
    assert "plain" in listed and "file" not in listed and "nested" not in listed
    assert listed[-1] == "olt"  # /run is the box's own


def test_a_project_and_a_state_folder_below_a_mount_are_used_and_the_project_stays_whole(machine, state):
    here = "/tmp/disk/project"
    host = machine(f"""
        set -e
        mount -t tmpfs -o mode=1777 machine /tmp
        mkdir /tmp/disk
        mount -t tmpfs disk /tmp/disk
        mkdir -p {here}/build/deps
        cp -a {PROJECT}/sim {here}
        mount -t tmpfs deps {here}/build/deps
        touch {here}/build/deps/marker
        mkdir -p /tmp/disk/state
        mount -t tmpfs state /tmp/disk/state
        echo ready
        exec sleep infinity
    """)
    before = host.run("find", here).stdout
    said = in_box(host, "/tmp/disk/state", "sh", "-c", f"""
        ls $BOX_PROJECT/sim/box $BOX_PROJECT/build/deps /run/olt/deps; command -v boardsim
        echo kept >/media/kept
        rm -rf $BOX_PROJECT /tmp/*
        touch $BOX_PROJECT/new || echo read-only
    """, box=f"{here}/sim/box").split("\n")
    assert said == [f"{here}/sim/box", "", "/run/olt/deps:", "marker", "", f"{here}/build/deps:", "marker",
                    "/run/olt/build/bin/boardsim", "read-only", ""]
    assert host.run("find", here).stdout == before
    assert host.read("/tmp/disk/state/flash/kept") == "kept\n"


def test_only_what_the_box_brings_along_can_be_written_to(state):
    places = ["/", "/usr", "/root", "/home", "/sys/kernel", "/proc/sys/kernel/panic", "/run/olt/build", "/run/olt/deps", PROJECT]
    own = ["/etc", "/tmp", "/var/tmp", "/var/lib", "/mnt", "/run", "/dev", "/dev/shm", "/media", "/var/log", "/etc/frr"]
    script = 'for place; do [ ! -w "$place" ] || echo "$place"; done'
    done = subprocess.run(
        [BOX, "--state", state, "--build", BUILD, "--net", "--", "sh", "-c", script, "sh", *places, *own],
        capture_output=True, text=True, check=True, timeout=DEADLINE_S)
    assert done.stdout.split("\n")[:-1] == own


def test_a_mounted_file_of_names_is_known_in_the_box_and_stays_as_it_is(machine, state):
    host = machine("""
        set -e
        mount -t tmpfs machine /mnt
        for file in hosts resolv.conf; do
            echo "# $file of a container" >/mnt/$file
            touch /etc/$file
            mount --bind /mnt/$file "$(readlink -f /etc/$file)"
        done
        echo ready
        exec sleep infinity
    """)
    read = "cat /etc/hosts /etc/resolv.conf"
    assert in_box(host, state, "sh", "-c", f"{read}; echo lost >/etc/hosts; rm /etc/resolv.conf") == (
        "# hosts of a container\n# resolv.conf of a container\n")
    assert host.run("sh", "-c", read).stdout == "# hosts of a container\n# resolv.conf of a container\n"


def test_devices_that_every_program_expects_work_and_no_disk_is_there(state):
    script = r"""
        set -e
        echo x >/dev/null
        [ $(head -c 100 /dev/zero | tr '\0' z | wc -c) = 100 ]
        [ $(head -c 100 /dev/urandom | wc -c) = 100 ]
        ! echo x 2>&- >/dev/full
        echo shared >/dev/shm/x
        echo piped | cat /dev/stdin
        /usr/bin/python3 -c 'import os, pty; print(os.ttyname(pty.openpty()[1]))'
        find /dev -type b
        ! mknod /tmp/disk b 254 0 2>/dev/null
        hostname another
    """
    name = subprocess.run(["hostname"], capture_output=True, text=True, check=True).stdout
    done = subprocess.run(
        [BOX, "--state", state, "--build", BUILD, "--net", "--", "sh", "-c", script],
        capture_output=True, text=True, timeout=DEADLINE_S)
    assert (done.stdout, done.returncode) == ("piped\n/dev/pts/0\n", 0), done.stderr
    assert subprocess.run(["hostname"], capture_output=True, text=True, check=True).stdout == name


def test_programs_of_a_box_are_not_led_to_the_olt_or_the_board_of_the_callers_shell(state):
    caller = {**os.environ, "OLT_STATE": "/elsewhere", "BOARDSIM_DIR": "/elsewhere/board", "OLT_BOARD": "/elsewhere/board.json"}
    done = subprocess.run([BOX, "--state", state, "--build", BUILD, "--net", "--", "env"], env=caller, capture_output=True,
                          text=True, timeout=DEADLINE_S, check=True)
    assert "/elsewhere" not in done.stdout
