# SPDX-License-Identifier: GPL-2.0-or-later
"""A program of the box that knows sysrepo and nothing of ours: reads a value for ever, and after an error connects again.

    engine_client.py LIBRARY

Says "ready", and a line with each value that it has read."""
import ctypes
import os
import sys
import time

RUNNING = 1
PATH = b"/olt-alarm-log:alarm-log/flash/level"
TIMEOUT_MS = 2000
PAUSE_S = 0.005


def say(text):
    os.write(1, text.encode() + b"\n")


def check(code):
    if code != 0:
        raise OSError(f"sysrepo: {code}")


def read_for_ever(sysrepo, connection):
    check(sysrepo.sr_connect(0, ctypes.byref(connection)))
    session, value = ctypes.c_void_p(), ctypes.c_void_p()
    check(sysrepo.sr_session_start(connection, RUNNING, ctypes.byref(session)))
    while True:
        check(sysrepo.sr_get_item(session, PATH, TIMEOUT_MS, ctypes.byref(value)))
        sysrepo.sr_free_val(value)
        say("read".rjust(64))
        time.sleep(PAUSE_S)


def main():
    sysrepo = ctypes.CDLL(sys.argv[1])
    say("ready")
    while True:
        connection = ctypes.c_void_p()
        try:
            read_for_ever(sysrepo, connection)
        except OSError:
            if connection:
                sysrepo.sr_disconnect(connection)
        time.sleep(PAUSE_S)


main()
