# SPDX-License-Identifier: GPL-2.0-or-later
"""What a user of the box outside its group tries.

Each attack is a function on an OLT whose daemon runs; it fails with what the attacker achieved."""
from intruder import tries
from uevents import port_of


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


RUNNING = [the_process_is_out_of_reach, hot_plug_messages_cannot_be_forged]
BEFORE_START = []
