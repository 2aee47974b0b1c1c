# SPDX-License-Identifier: GPL-2.0-or-later
"""What a user of the box outside its group tries while the daemon runs, and before it starts.

Each attack is a function on a box of its own; it fails with what the attacker achieved."""
import pwd

from intruder import tries
from uevents import port_of
from vty import SUCCESS

KEYS = {"board": 0x102410, "alarm": 0x102411}
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
    # Shared memory is everybody's folder, with the sticky bit.
    return tries(olt, CHANGE, {"files": files, "private": hidden, "sockets": sockets,
                               "folders": [path for path in paths(olt, "d", folders) if path != "/dev/shm"]})


def files_and_sockets_are_the_daemons_own(olt):
    """Configuration, logs, flash and run folder: nothing can be changed or added, no socket connected to, and the
    configuration, which has the password, cannot be read."""
    told = _own(olt, ["/etc/frr", "/etc/olt", "/media", "/run/frr", "/var/log", "/var/tmp/frr"], ["/etc/frr"])
    assert not told, told


def shared_memory_and_the_database_are_the_groups_alone(olt):
    """The alarm store, the database and its engine's state can be neither opened, locked, cut short, renamed nor added to."""
    told = _own(olt, ["/dev/shm", "/var/lib/olt"], ["/dev/shm", "/var/lib/olt"])
    assert not told, told


SEMAPHORE = """
class Operation(ctypes.Structure):
    _fields_ = [("number", ctypes.c_ushort), ("operation", ctypes.c_short), ("flags", ctypes.c_short)]
NOWAIT, UNDO = 0o4000, 0x1000
RMID, GETVAL, SETVAL = 0, 12, 16
for name, (key, identifier) in given.items():
    for mode in 0o200, 0o400, 0o600:
        attempt(f"get {name} with {mode:o}", lambda: libc.semget(key, 1, mode))
    take = Operation(0, -1, NOWAIT)
    attempt(f"take {name}", lambda: libc.semop(identifier, ctypes.byref(take), 1) == 0 or -1)
    give = Operation(0, 1, NOWAIT)
    attempt(f"give {name}", lambda: libc.semop(identifier, ctypes.byref(give), 1) == 0 or -1)
    await_zero = Operation(0, 0, NOWAIT)
    attempt(f"look at {name}", lambda: libc.semop(identifier, ctypes.byref(await_zero), 1) == 0 or -1)
    attempt(f"value of {name}", lambda: libc.semctl(identifier, 0, GETVAL, 0))
    attempt(f"set {name}", lambda: libc.semctl(identifier, 0, SETVAL, 0))
    attempt(f"remove {name}", lambda: libc.semctl(identifier, 0, RMID, 0))
"""


def semaphores(olt):
    """Of each of the box's semaphores its number and its owner."""
    rows = [line.split() for line in olt.exec("cat", "/proc/sysvipc/sem").stdout.splitlines()[1:]]
    by_key = {int(row[0]): {"id": int(row[1]), "owner": int(row[4])} for row in rows}
    return {name: by_key[key] for name, key in KEYS.items()}


def semaphores_are_the_groups_alone(olt):
    """Neither semaphore can be taken, given, looked at, set or removed, by its key or by its number."""
    told = tries(olt, SEMAPHORE, {name: (KEYS[name], found["id"]) for name, found in semaphores(olt).items()})
    assert not told, told
    assert olt.sem_value("board") in (0, 1) and olt.sem_value("alarm") in (0, 1)


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


def _answers_and_files_alarms(olt):
    """The daemon is whole: its vty, its board, its alarm store."""
    text, status = olt.run("show version")
    assert status == SUCCESS and text, (text, status)
    assert olt.run("alarm-log debug send id 77 message still_there") == ("", SUCCESS)
    text, status = olt.run("show alarm-log")
    assert status == SUCCESS and "still there" in text, (text, status)
    assert olt.run("show fan", "diagnose")[1] == SUCCESS


PLANT = """
GET, CREATE = 0o1000, 0o1000
for name, key in given["keys"].items():
    attempt("plant the semaphore " + name, lambda: libc.semget(key, 1, CREATE | 0o666))  # of value 0: held for ever
store = "/dev/shm/tq_alarm_log"
how = given["store"]
if how == "file":
    attempt("plant the store", lambda: os.close(os.open(store, os.O_CREAT | os.O_WRONLY, 0o666)) or os.truncate(store, 819464) or True)
elif how == "link":
    attempt("plant the store", lambda: os.symlink("/etc/passwd", store) or True)
elif how == "folder":
    attempt("plant the store", lambda: os.mkdir(store) or True)
elif how == "pipe":
    attempt("plant the store", lambda: os.mkfifo(store, 0o666) or True)
"""


def _planted(olt, store):
    """The daemon starts in spite of what was planted, and has objects of its own."""
    told = tries(olt, PLANT, {"keys": KEYS, "store": store})
    assert len(told) == len(KEYS) + 1, told  # else nothing is tried here
    olt.start()
    _answers_and_files_alarms(olt)
    for name, found in semaphores(olt).items():
        assert found["owner"] in (0, pwd.getpwnam("daemon").pw_uid), (name, found)
    assert "root:x:0:0" in olt.exec("cat", "/etc/passwd").stdout
    log = olt.log()
    for word in ("semaphore", "tq_alarm_log"):
        assert word in log, f"nothing about a planted {word}: {log}"
    shared_memory_and_the_database_are_the_groups_alone(olt)


def what_was_planted_as_a_file_before_the_start_is_replaced(olt):
    """Semaphores and an alarm store of a stranger's are removed, which the log says, and others made."""
    _planted(olt, "file")


def what_was_planted_as_a_link_before_the_start_is_replaced(olt):
    """A link in the store's place leads nobody to write where it points."""
    _planted(olt, "link")


def what_was_planted_as_a_pipe_before_the_start_is_replaced(olt):
    """A pipe in the store's place does not hold up the start."""
    _planted(olt, "pipe")


def what_was_planted_as_a_folder_before_the_start_is_replaced(olt):
    """A folder in the store's place is told of, and the daemon works."""
    _planted(olt, "folder")


RUNNING = [files_and_sockets_are_the_daemons_own, shared_memory_and_the_database_are_the_groups_alone,
           semaphores_are_the_groups_alone, the_process_is_out_of_reach, no_program_lends_its_rights,
           hot_plug_messages_cannot_be_forged]
BEFORE_START = [what_was_planted_as_a_file_before_the_start_is_replaced, what_was_planted_as_a_link_before_the_start_is_replaced,
                what_was_planted_as_a_pipe_before_the_start_is_replaced, what_was_planted_as_a_folder_before_the_start_is_replaced]
