# SPDX-License-Identifier: GPL-2.0-or-later
"""Another process of the box that has one of its semaphores until a test is done with it."""
import contextlib
import subprocess

TAKE = """
import ctypes, sys
libc = ctypes.CDLL(None)
class Op(ctypes.Structure): _fields_ = [('n', ctypes.c_ushort), ('o', ctypes.c_short), ('f', ctypes.c_short)]
sem = libc.semget(int(sys.argv[1]), 1, 0)
assert libc.semop(sem, ctypes.byref(Op(0, -1, 0x1000)), 1) == 0
print('held', flush=True)
sys.stdin.read()
"""
BOARD, ALARM = 0x102410, 0x102411


@contextlib.contextmanager
def semaphore_held(olt, key):
    """While it lasts, or until the function it gives is called, the semaphore is somebody else's."""
    with subprocess.Popen(olt.inside("python3", "-c", TAKE, key), stdin=subprocess.PIPE, stdout=subprocess.PIPE,
                          text=True) as holder:
        try:
            assert holder.stdout.readline() == "held\n"
            yield holder.stdin.close  # it ends, and the kernel gives back what it held
        finally:
            holder.stdin.close()


def board_held(olt):
    return semaphore_held(olt, BOARD)


def alarms_held(olt):
    return semaphore_held(olt, ALARM)
