# SPDX-License-Identifier: GPL-2.0-or-later
"""Log servers that take everything and look at nothing, so that no alarm fails for want of one."""
import socket

from vty import in_namespace

ADDRESSES = {"192.0.2.9": "127.0.0.1", "2001:db8::9": "::1"}
PORTS = (1, 514, 65535)  # those that lines of the tests name


def reachable(line):
    """The line with these servers' addresses in the place of the tests' examples."""
    for example, here in ADDRESSES.items():
        line = line.replace(example, here)
    return line


def silent_servers(olt):
    """Sockets in the box's network; they work as long as they are kept."""
    def bind(family, address, port):
        server = socket.socket(family, socket.SOCK_DGRAM)
        server.bind((address, port))
        return server

    def bind_all():
        return [bind(socket.AF_INET6 if ":" in address else socket.AF_INET, address, port)
                for address in ADDRESSES.values() for port in PORTS]

    return in_namespace(f"/proc/{olt.holder.pid}/ns/net", bind_all)
