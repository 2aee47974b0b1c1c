# SPDX-License-Identifier: GPL-2.0-or-later
"""The daemon's calls that can fail, and how each fails: those of the platform's libraries that have a result, and those
of libfrr and libc that the tests' shim records."""
import re
import subprocess

from calls import traced_operations
from project import BUILD, PROJECT

EIO = 5
UNREACHABLE = -4
UNREACHABLE_TEXT = "Database not reachable"

# A result of these is no more than a value, or they only look something up in the process itself.
NO_FAILURE = {"cmd_parase_parameters", "get_level_num_by_string", "tq_strerror", "db_debug_get", "db_debug_flag_return",
              "sysrepo_debug_func_return", "misc_cpld_debug_get", "misc_cpld_debug_set", "misc_i2c_debug_get",
              "misc_i2c_debug_set", "misc_phy_debug_get", "misc_phy_debug_set"}
# libfrr's and libc's: what failing is.
OF_THE_SHIM = {"setenv": -1, "open": -1, "ioctl": -1, "fopen": 0, "opendir": 0, "fflush": -1, "fchmod": -1, "fsync": -1,
               "fclose": -1, "seteuid": -1, "system": -1, "popen": 0, "pclose": -1, "setmntent": 0, "pthread_create": -1,
               "pthread_detach": -1, "socket": -1, "setsockopt": -1, "bind": -1, "recvmsg": -1, "zclient_send_message": -1}
# A call that gives something back and fails has not given it back: the process keeps it, so a new one follows.
GIVES_BACK = {"semaphore_v", "misc_cpld_i2c_close", "misc_cpld_channel_select_end", "db_apply_unlock", "fclose", "pclose",
              "db_disconnect_free_with_vty", "db_discard_changes", "seteuid"}


def _exports():
    """Names and results of the platform's functions."""
    text = (PROJECT / "tests/unit/platform/abi/abi.txt").read_text()
    prototypes = re.search(r"^prototypes\n(.*?)^\S", text, re.M | re.S)[1]
    return {name: result for result, name in re.findall(r"^  (.*?[ *])(\w+) \(", prototypes, re.M)}


def _imports():
    """What the daemon calls of others."""
    done = subprocess.run(["nm", "-D", "--undefined-only", BUILD / "bin" / "diagd"], capture_output=True, text=True, check=True)
    return set(re.findall(r" U (\w+)", done.stdout))


def platform_calls():
    """The platform's calls that can fail and that the daemon makes."""
    imports = _imports()
    return {name for name, result in _exports().items()
            if result.strip() != "void" and name in imports and name not in NO_FAILURE}


def all_calls():
    return platform_calls() | (set(OF_THE_SHIM) & traced_operations())


def failure(op):
    """What a failing call gives: its result and errno."""
    if op in OF_THE_SHIM:
        return OF_THE_SHIM[op], EIO
    if _exports()[op].strip().endswith("*"):
        return 0, EIO
    if op.startswith("db_"):
        return UNREACHABLE, EIO
    return -1, EIO
