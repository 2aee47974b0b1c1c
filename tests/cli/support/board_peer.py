# SPDX-License-Identifier: GPL-2.0-or-later
"""Another process of the box that takes and gives the board semaphore in a loop, as other software of the board does.

    board_peer.py LIBRARIES    LIBRARIES is the folder of the platform libraries

Prints "ready" when it begins.  For each line of its input it prints how often it has had the board by then; it ends
when the input closes.
"""
import ctypes
import os
import sys
import time

BOARD_KEY = 0x102410
HELD_S, FREE_S = 0.004, 0.001  # a kill at a random moment mostly meets it with the board


def main() -> None:
    api = ctypes.CDLL(f"{sys.argv[1]}/libtqapi.so", mode=ctypes.RTLD_GLOBAL)
    semaphore = ctypes.c_int(-1)
    if api.semaphore_create(ctypes.byref(semaphore), BOARD_KEY, 1) != 0:
        raise SystemExit("semaphore_create failed")
    os.write(1, b"ready\n")
    os.set_blocking(0, False)
    count = 0
    while True:
        if api.semaphore_p(semaphore) != 0:
            raise SystemExit("semaphore_p failed")
        time.sleep(HELD_S)
        if api.semaphore_v(semaphore) != 0:
            raise SystemExit("semaphore_v failed")
        count += 1
        try:
            if os.read(0, 1) == b"":
                return
            os.write(1, b"%d\n" % count)
        except BlockingIOError:
            time.sleep(FREE_S)


main()
