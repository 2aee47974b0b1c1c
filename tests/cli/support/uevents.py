# SPDX-License-Identifier: GPL-2.0-or-later
"""The kernel's hot-plug messages, sent by a test."""

import socket
from pathlib import Path

from vty import in_namespace

KOBJECT_UEVENT = 15


def port_of(olt):
    """The port that the daemon's socket is bound to: its process id as the box counts."""
    status = Path(f"/proc/{olt.pid}/status").read_text()
    return int(status.split("NSpid:")[1].split("\n")[0].split()[-1])


def send(olt, *messages):
    """Sends to the daemon's port, one datagram each, as the kernel does."""
    port = port_of(olt)

    def deliver():
        with socket.socket(socket.AF_NETLINK, socket.SOCK_DGRAM, KOBJECT_UEVENT) as sender:
            for message in messages:
                sender.sendto(message if isinstance(message, bytes) else message.encode() + b"\0", (port, 0))

    in_namespace(f"/proc/{olt.holder.pid}/ns/net", deliver)
