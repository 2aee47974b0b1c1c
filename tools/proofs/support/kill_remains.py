# SPDX-License-Identifier: GPL-2.0-or-later
"""What a killed daemon leaves behind in its box."""
import re
from collections import Counter

FOLDERS = ("/etc/frr", "/run/frr", "/run/olt", "/dev/shm", "/var/lib/olt/sysrepo", "/media/config", "/var/tmp/frr")
IPC = {"semaphores": "/proc/sysvipc/sem", "shared memory": "/proc/sysvipc/shm", "queues": "/proc/sysvipc/msg"}
# Names that tell one process, session or moment from another: there may be as many as before, under other numbers.
NUMBER = re.compile(r"\d+|(?<=diagd\.conf\.)\w{6}\b")


def remains(olt):
    """Names of files, with how many have them, and what the kernel keeps of System V's."""
    listing = olt.exec("find", *FOLDERS, "-xdev", "(", "-path", "/run/olt/build", "-o", "-path", "/run/olt/deps", ")", "-prune",
                       "-o", "-print").stdout
    counted = Counter()
    for path in listing.splitlines():
        counted[NUMBER.sub("N", path)] += 1
    for what, table in IPC.items():
        counted[what] = len(olt.exec("cat", table, check=True).stdout.splitlines()) - 1
    return counted


def descriptors(olt):
    """What the daemon's descriptors lead to, by count, once sessions that ended are closed."""
    return Counter(NUMBER.sub("N", target) for target in olt.settled_fds().values())


def more(before, after):
    """What there is more of: name, before, after."""
    return [(name, before[name], count) for name, count in after.items() if count > before[name]]
