#!/usr/bin/python3
# SPDX-License-Identifier: GPL-2.0-or-later
"""Says in words which source file includes what its layer may not.

usage: check_layers.py [TREE]        exit status 1 when there is anything to say

Includes are rooted at the top of the tree; the C headers of platform/include go by their bare names.

The layers:
  - base: needs nothing but the standard and the operating system, and may be included from anywhere.
  - module_files: memories of modules and their dumps; needs base alone, and is for the simulator and the tools.
  - optics: what memories mean, pure; its program reads dumps besides.
  - diagd: what stands at its top includes units.hpp, core, board and the platform's C API; a unit includes its
    own headers, core, board, the C API, and of other units only the headers listed in EXPORTS; board includes
    itself, core and the C API, core itself and the C API.
  - libfrr comes into the daemon through core/frr.hpp only; sysrepo only into files that are free of libfrr,
    because each brings a libyang of its own.
  - Pure files (decoding, policies, parsers) reach nothing but the standard library.
  - The platform never includes what is built on it: the daemon, the simulator, the shell.  Within libtqapi sinks
    stand on alarms, and both on system; within libtqdatabase api stands on engine, and both on model, and sysrepo's
    headers come into engine only.
  - The simulator and the shell never include the daemon, nor each other.
"""
import re
import sys
from pathlib import Path

INCLUDE = re.compile(r'^\s*#\s*include\s*([<"])([^">]+)[">]')
SOURCES = ("base", "diagd", "module_files", "optics", "platform", "sim", "shell")
PURE = re.compile(r"(^|/)decode/|^optics/[^/]+$|_(policy|parser)\.[ch]pp$")
LIBFRR_IN_C = {"vty.h"}  # as libfrr's own files name it
FRR_DOOR = "diagd/core/frr.hpp"
C_API = "platform/include/"

# Rooms of the platform of which the lower knows nothing of the higher, the highest first.
PLATFORM_ORDERS = (
    ("platform/sinks", "platform/alarms", "platform/system"),
    ("platform/database/api", "platform/database/engine", "platform/database/model"),
)
SYSREPO_HOME = "platform/database/engine/"  # in the platform, its headers come in here only

# What units of the daemon offer each other.
EXPORTS = {
    "diagd/alarm_log/alarm_log_cli.hpp",
    "diagd/monitors/reset_button/system_reset.hpp",
    "diagd/peers/peers.hpp",
    "diagd/system_cli/usage_samplers.hpp",
    "diagd/transceiver/memory/pon_optics.hpp",
    "diagd/transceiver/optical_cmd.hpp",
}

# Headers of the operating system; a name without a dot is the C++ library's.
SYSTEM_FOLDERS = ("sys/", "linux/", "net/", "netinet/", "arpa/", "asm/", "sanitizer/")
SYSTEM = {
    "assert.h", "dirent.h", "dlfcn.h", "errno.h", "fcntl.h", "grp.h", "limits.h", "malloc.h", "math.h", "mntent.h",
    "netdb.h", "poll.h", "pthread.h", "pwd.h", "sched.h", "signal.h", "spawn.h", "stdarg.h", "stdbool.h", "stddef.h", "stdint.h",
    "stdio.h", "stdio_ext.h", "stdlib.h", "string.h", "termios.h", "time.h", "ucontext.h", "unistd.h",
}


def is_standard(name):
    return "." not in name


def is_system(name):
    return is_standard(name) or name in SYSTEM or name.startswith(SYSTEM_FOLDERS)


class Tree:
    def __init__(self, root):
        self.root = root
        self.includes = {}  # file: [(line number, quoted, name)]
        for area in SOURCES:
            for path in sorted((root / area).rglob("*")):
                if path.suffix in (".c", ".cpp", ".h", ".hpp", ".def"):
                    self.add(path)

    def add(self, path):
        file = path.relative_to(self.root).as_posix()
        found = self.includes[file] = []
        for number, line in enumerate(path.read_text().splitlines(), 1):
            if match := INCLUDE.match(line):
                found.append((number, match[1] == '"', match[2]))

    def header(self, name):
        """The header of the tree that the name means, or None."""
        return next((file for file in (name, C_API + name) if file in self.includes), None)

    def reaches(self, file, wanted, seen=None):
        """Angle include of `file`, direct or through the tree's headers, for which wanted(name) holds."""
        seen = seen if seen is not None else set()
        if file in seen:
            return None
        seen.add(file)
        for _, quoted, name in self.includes[file]:
            if not quoted:
                if wanted(name):
                    return name
            elif header := self.header(name):
                if below := self.reaches(header, wanted, seen):
                    return below
        return None


def home(file):
    """Unit or library of a file: its first two folders, one for what stands at the top of an area."""
    parts = file.split("/")
    return "/".join(parts[:2]) if len(parts) > 2 else parts[0]


def refused_in_platform(file, header):
    """Why a file of the platform may not include this header of the platform, or None."""
    for order in PLATFORM_ORDERS:
        own, other = (next((i for i, room in enumerate(order) if one.startswith(room + "/")), None)
                      for one in (file, header))
        if own is not None and other is not None and other < own:
            return f"{order[own]} knows nothing of {order[other]}"
    return None


def refused(file, header):
    """Why `file` may not include `header`, or None."""
    if reason := refused_in_platform(file, header):
        return reason
    area, own, other = file.split("/")[0], home(file), home(header)
    if own == other or other == "base":
        return None
    if own == "base":
        return "base needs nothing of its surroundings"
    if own == "module_files":
        return "module_files needs nothing but base"
    if other == "module_files" and (area == "sim" or own == "optics/program"):
        return None
    if area == "optics":
        return None if own == "optics/program" and other == "optics" else "optics needs nothing but base"
    if area == "diagd":
        if other in ("diagd/core", "platform/include"):
            return None
        if own == "diagd/core":
            return "core includes nothing but itself and the platform's C API"
        if other == "diagd/board":
            return None
        if own == "diagd/board":
            return "board includes nothing but itself, core and the platform's C API"
        if own == "diagd":
            return "what stands above the units includes units.hpp, core, board and the platform's C API"
        if other == "diagd":
            return "includes go down only: a unit knows nothing of what stands above it"
        if other.startswith("diagd/"):
            if header in EXPORTS:
                return None
            return "a unit reaches another unit only through the headers that EXPORTS of tools/check_layers.py lists"
        return "the daemon sees of the platform only its C API in platform/include"
    if own == "platform/include":
        return "the C API stands on its own"
    if header.split("/")[0] in (area, "platform"):
        return None
    return f"{area} never includes {header.split('/')[0]}"


def check(tree):
    for file, includes in tree.includes.items():
        for number, quoted, name in includes:
            if quoted:
                header = tree.header(name)
                if header is None and name not in LIBFRR_IN_C:
                    yield f"{file}:{number}: \"{name}\" is no header of the tree"
                elif header and (reason := refused(file, header)):
                    yield f"{file}:{number}: \"{name}\": {reason}"
            elif file.startswith("diagd/") and file != FRR_DOOR and not is_system(name) and name != "sysrepo.h":
                yield f"{file}:{number}: <{name}>: libfrr comes into the daemon only through \"{FRR_DOOR}\""
            elif file.startswith("platform/") and not file.startswith(SYSREPO_HOME) and name == "sysrepo.h":
                yield f"{file}:{number}: <{name}>: sysrepo comes into the platform only in {SYSREPO_HOME}"

        if PURE.search(file) and (name := tree.reaches(file, lambda name: not is_standard(name))):
            yield f"{file}: is pure, but reaches <{name}>: it may use the standard library only"
        if file.startswith("diagd/") and tree.reaches(file, lambda name: name == "sysrepo.h"):
            if tree.reaches(file, lambda name: name == "zebra.h"):
                yield f"{file}: reaches sysrepo and libfrr, which bring headers of different libyangs"


def main():
    root = Path(sys.argv[1]) if len(sys.argv) > 1 else Path(__file__).resolve().parent.parent
    found = list(check(Tree(root)))
    print("\n".join(found) if found else "every include stays in its layer")
    return 1 if found else 0


if __name__ == "__main__":
    sys.exit(main())
