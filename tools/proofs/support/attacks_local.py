# SPDX-License-Identifier: GPL-2.0-or-later
"""What a user of the box outside its group tries.

Each attack is a function on an OLT whose daemon runs; it fails with what the attacker achieved."""
from intruder import tries
from uevents import port_of

# A required line opens this one to everybody; docs/security.md tells what a box does about it.
OPEN_BY_REQUIREMENT = "/media/config/var/alarm_log.log"

CHANGE = """
for path in given["files"]:
    attempt(f"write {path}", lambda: opened(path, os.O_WRONLY))
    attempt(f"truncate {path}", lambda: os.truncate(path, 0) or True)
    attempt(f"chmod {path}", lambda: os.chmod(path, 0o777) or True)
    attempt(f"link {path}", lambda: os.link(path, "/tmp/linked") or True)
    attempt(f"unlink {path}", lambda: os.unlink(path) or True)
for path in given["private"]:
    attempt(f"read {path}", lambda: opened(path, os.O_RDONLY))
    attempt(f"lock {path}", lambda: fcntl.flock(os.open(path, os.O_RDONLY | os.O_NONBLOCK), fcntl.LOCK_EX | fcntl.LOCK_NB) or True)
for path in given["sockets"]:
    for kind in socket.SOCK_STREAM, socket.SOCK_SEQPACKET, socket.SOCK_DGRAM:
        attempt(f"connect {path}", lambda: socket.socket(socket.AF_UNIX, kind).connect(path) or True)
for folder in given["folders"]:
    attempt(f"make a file in {folder}", lambda: opened(folder + "/planted", os.O_CREAT | os.O_WRONLY))
    attempt(f"make a folder in {folder}", lambda: os.mkdir(folder + "/planted.d") or True)
"""


def paths(olt, kind, folders):
    found = olt.exec("find", *folders, "-xdev", "-type", kind, "!", "-path", OPEN_BY_REQUIREMENT)
    return found.stdout.splitlines()


def _own(olt, folders, private):
    """What a stranger could do to files, sockets and folders; those below `private` he may not even read."""
    files, sockets = paths(olt, "f", folders), paths(olt, "s", folders)
    hidden = [path for path in files if path.startswith(tuple(private))]
    assert hidden, files
    return tries(olt, CHANGE, {"files": files, "private": hidden, "sockets": sockets,
                               "folders": paths(olt, "d", folders)})


def files_and_sockets_are_the_daemons_own(olt):
    """Configuration, logs, flash and run folder: nothing can be changed or added, no socket connected to, and the
    configuration, which has the password, cannot be read."""
    told = _own(olt, ["/etc/frr", "/etc/olt", "/media", "/run/frr", "/var/log", "/var/tmp/frr"], ["/etc/frr"])
    assert not told, told


PROCESS = """
pid = given
attempt("end it", lambda: os.kill(pid, signal.SIGTERM) or True)
attempt("stop it", lambda: os.kill(pid, signal.SIGSTOP) or True)
for name in "mem", "environ", "maps", "auxv", "stack", "syscall", "fdinfo", "fd", "cwd", "root", "map_files":
    path = f"/proc/{pid}/{name}"
    attempt(name, lambda: os.listdir(path) if name in ("fd", "fdinfo", "map_files") else os.readlink(path)
            if name in ("cwd", "root") else opened(path, os.O_RDONLY) and open(path, "rb").read(1) and True or -1)
ATTACH = 16
attempt("attach", lambda: libc.ptrace(ATTACH, pid, 0, 0))
attempt("priority", lambda: os.setpriority(os.PRIO_PROCESS, pid, 19) or True)
attempt("limits", lambda: __import__("resource").prlimit(pid, 7, (1, 1)) and True)
"""


def the_process_is_out_of_reach(olt):
    """The daemon gets no signal, and its memory, environment, descriptors and limits cannot be had."""
    told = tries(olt, PROCESS, port_of(olt))
    assert not told, told


def no_program_lends_its_rights(olt):
    """None of ours is setuid or setgid, so that whoever starts one has it run as himself."""
    programs = olt.exec("find", "/run/olt/build/bin", "/run/olt/build/lib", "-type", "f").stdout.splitlines()
    assert len(programs) > 5, programs
    assert olt.exec("find", *programs, "-perm", "/6000").stdout == ""


HOTPLUG = """
peer = socket.socket(socket.AF_NETLINK, socket.SOCK_DGRAM, 15)
message = b"add@/devices/usb1/1-1\\0ACTION=add\\0SUBSYSTEM=usb\\0"
attempt("send it to the daemon", lambda: peer.sendto(message, (given, 0)))
attempt("send it to all who listen", lambda: peer.sendto(message, (0, 1)))
attempt("send it to the daemon and all", lambda: peer.sendto(message, (given, 1)))
"""
USB_LED = "6"


def hot_plug_messages_cannot_be_forged(olt):
    """The kernel refuses a message that claims a USB stick, and the LED stays dark."""
    before = olt.boardctl("reg", "get", USB_LED)
    told = tries(olt, HOTPLUG, port_of(olt))
    assert not told, told
    assert olt.boardctl("reg", "get", USB_LED) == before


RUNNING = [files_and_sockets_are_the_daemons_own, the_process_is_out_of_reach, no_program_lends_its_rights,
           hot_plug_messages_cannot_be_forged]
BEFORE_START = []
