# SPDX-License-Identifier: GPL-2.0-or-later
"""A local user outside the box's group: what he tries, run inside the box as user nobody.

    stranger.py attack      tries everything with what the programs of the box share; prints what succeeded, a line each
    stranger.py plant       puts his own objects where those of the box are going to be; prints what he put
"""
import ctypes
import errno
import os
import sys
from pathlib import Path

SEMAPHORE_KEYS = {"board": 0x102410, "alarm": 0x102411}
FILES = ["/dev/shm", "/var/lib/olt/sysrepo"]
STORE = "/dev/shm/tq_alarm_log"
IPC_CREAT, IPC_RMID, SETVAL, GETVAL, IPC_NOWAIT = 0o1000, 0, 16, 12, 0o4000
AS_STRANGER = ("setpriv", "--reuid", "nobody", "--regid", "nogroup", "--clear-groups", "--", "/usr/bin/python3", "-")

_libc = ctypes.CDLL(None, use_errno=True)


class Operation(ctypes.Structure):
    _fields_ = [("number", ctypes.c_ushort), ("change", ctypes.c_short), ("flags", ctypes.c_short)]


def stranger(olt, verb):
    """What he could do, a line each."""
    done = olt.exec(*AS_STRANGER, verb, input=Path(__file__).read_text())  # he may not be able to read it here
    assert done.returncode == 0, done.stderr
    return done.stdout.splitlines()


def everything_in(folder):
    """All that he can see there, and the folder itself."""
    yield Path(folder)
    for path, folders, files in os.walk(folder):
        yield from (Path(path, name) for name in [*folders, *files])


def attempts_on(path):
    flags = {"reads": os.O_RDONLY, "writes": os.O_WRONLY, "maps": os.O_RDWR}
    for what, flag in flags.items():
        if path.is_dir() and what != "reads":
            continue
        yield what, lambda flag=flag: os.close(os.open(path, flag | os.O_NONBLOCK))
    yield "cuts", lambda: os.truncate(path, 0)
    yield "removes", path.unlink
    yield "renames", lambda: path.rename(path.with_name("mine"))
    yield "opens to all", lambda: path.chmod(0o666)


def attack_files():
    for folder in FILES:
        for path in everything_in(folder):
            if path == Path("/dev/shm"):  # it is everybody's
                continue
            for what, attempt in attempts_on(path):
                try:
                    attempt()
                    print(what, path)
                except OSError:
                    pass


def attack_semaphores():
    for name, key in SEMAPHORE_KEYS.items():
        semaphore = _libc.semget(key, 0, 0)
        attempts = {
            "takes": lambda: _libc.semop(semaphore, ctypes.byref(Operation(0, -1, IPC_NOWAIT)), 1),
            "gives": lambda: _libc.semop(semaphore, ctypes.byref(Operation(0, 1, IPC_NOWAIT)), 1),
            "sets": lambda: _libc.semctl(semaphore, 0, SETVAL, 0),
            "reads": lambda: _libc.semctl(semaphore, 0, GETVAL),
            "removes": lambda: _libc.semctl(semaphore, 0, IPC_RMID),
        }
        for what, attempt in attempts.items():
            if attempt() >= 0:
                print(what, "semaphore", name)
            elif ctypes.get_errno() not in (errno.EACCES, errno.EPERM):
                print("sees no semaphore", name, os.strerror(ctypes.get_errno()))


def plant():
    for name, key in SEMAPHORE_KEYS.items():
        semaphore = _libc.semget(key, 1, IPC_CREAT | 0o666)
        if semaphore >= 0 and _libc.semctl(semaphore, 0, SETVAL, 0) == 0:
            print("semaphore", name)
    Path(STORE).mkdir()
    Path(STORE, "full").touch()
    print(STORE)


if __name__ == "__main__":
    if sys.argv[1] == "plant":
        plant()
    else:
        attack_files()
        attack_semaphores()
