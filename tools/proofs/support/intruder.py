# SPDX-License-Identifier: GPL-2.0-or-later
"""A user of the box who is in none of its groups, and what he tries."""
import json

AS_NOBODY = ["setpriv", "--reuid=65534", "--regid=65534", "--clear-groups", "--"]

# Each try that succeeds is told; what the kernel refuses is not.  A try gives back what it got.
PREAMBLE = """
import ctypes, errno, fcntl, json, os, signal, socket, sys
libc = ctypes.CDLL(None, use_errno=True)
given = json.load(sys.stdin)
told = []
def attempt(what, call):
    try:
        got = call()
    except OSError:
        return None
    if isinstance(got, int) and got < 0:
        return None
    told.append(what)
    return got
def opened(path, how):
    os.close(os.open(path, how | os.O_NONBLOCK))
    return True
"""


def tries(olt, code, given=None):
    """Runs Python as user nobody in the box, on what is `given`; what it succeeded with."""
    done = olt.exec(*AS_NOBODY, "/usr/bin/python3", "-B", "-c", PREAMBLE + code + "\njson.dump(told, sys.stdout)",
                    input=json.dumps(given))
    assert done.returncode == 0, done.stderr
    return json.loads(done.stdout)
