# SPDX-License-Identifier: GPL-2.0-or-later
"""Real receivers of alarms in the box of an OLT: rsyslogd and snmptrapd."""
import contextlib
import json
import os
import re
import signal
import subprocess
from pathlib import Path

from olt import DEADLINE_S, PROJECT, wait_until

RECEIVERS = "/run/olt/deps/receivers"
MIBS = f"{PROJECT / 'tests' / 'cli' / 'mibs'}:{PROJECT / 'platform' / 'mibs'}"
# No configuration of the machine the tests run on.
SNMP = ["env", f"MIBDIRS={MIBS}", "MIBS=ALL", "SNMPCONFPATH=/nowhere", "SNMP_PERSISTENT_DIR=/run/snmp", "LC_ALL=C.UTF-8"]


class Receiver:
    """A program of the box that takes datagrams and writes what it got, a line each, to a file of the log folder."""

    def __init__(self, olt, name, command, ports):
        self.name = name
        self._olt = olt
        self._ports = ports
        self.path(name + ".out").write_text("")
        with open(self.path(name + ".err"), "ab") as errors:
            self._process = subprocess.Popen(olt.inside(*command), stdin=subprocess.DEVNULL, stdout=errors, stderr=errors)
        wait_until(self._is_listening, f"{name} listens")

    def path(self, file):
        return self._olt.state / "log" / file

    def _is_listening(self):
        assert self._process.poll() is None, self.path(self.name + ".err").read_text()
        table = "".join(Path(f"/proc/{self._olt.holder.pid}/net/{file}").read_text() for file in ("udp", "udp6"))
        return all(re.search(f":{port:04X} ", table) for port in self._ports)

    def lines(self):
        text = self.path(self.name + ".out").read_text(errors="surrogateescape")
        return text[: text.rfind("\n") + 1].splitlines()

    def wait_lines(self, count):
        return wait_until(lambda: len(lines := self.lines()) >= count and lines, f"{self.name} gets {count} messages")

    def stop(self):
        # nsenter is the parent of the program in the box.
        children = Path(f"/proc/{self._process.pid}/task/{self._process.pid}/children").read_text().split()
        for child in children:
            with contextlib.suppress(ProcessLookupError):
                os.kill(int(child), signal.SIGKILL)
        self._process.wait(DEADLINE_S)


# What a message says, as JSON; one file whatever the address it came to, which is told.
RSYSLOG = """
module(load="imudp")
global(workDirectory="/run")
template(name="json" type="list" option.jsonf="on") {{
{properties}
}}
{inputs}
"""
PROPERTIES = ["pri", "protocol-version", "hostname", "app-name", "procid", "msgid", "structured-data", "msg", "inputname",
              "rawmsg"]


class Rsyslog(Receiver):
    """servers: pairs of address and port to listen at."""

    def __init__(self, olt, servers, name="rsyslogd"):
        properties = [f'  property(outname="{p}" name="{p}" format="jsonf")' for p in PROPERTIES]
        properties.append('  property(outname="time" name="timereported" dateFormat="rfc3339" format="jsonf")')
        inputs = ['ruleset(name="file") { action(type="omfile" file="/var/log/%s.out" template="json") }' % name]
        inputs += [f'input(type="imudp" address="{address}" port="{port}" name="{address}" ruleset="file")'
                   for address, port in servers]
        configuration = olt.state / "log" / f"{name}.conf"
        configuration.write_text(RSYSLOG.format(properties="\n".join(properties), inputs="\n".join(inputs)))
        super().__init__(
            olt, name,
            [f"{RECEIVERS}/sbin/rsyslogd", "-n", "-f", f"/var/log/{name}.conf", "-i", f"/run/{name}.pid",
             "-M", f"{RECEIVERS}/lib/rsyslog"],
            [port for _, port in servers])

    def messages(self, count):
        """The first messages, waited for, each by property."""
        return [json.loads(line) for line in self.wait_lines(count)]


class Snmptrapd(Receiver):
    """ports: pairs of IPv4 and IPv6 loopback ports to listen at.  community: the only one that it takes."""

    FORMAT = r"%P\t%V\t%v\n"

    def __init__(self, olt, ports, community="public", name="snmptrapd"):
        (olt.state / "log" / f"{name}.conf").write_text(f"authCommunity log {community}\n")
        super().__init__(
            olt, name,
            [*SNMP, f"{RECEIVERS}/sbin/snmptrapd", "-f", "-Lf", f"/var/log/{name}.out", "-C", "-c", f"/var/log/{name}.conf",
             "-n", "-Oe", "-F", self.FORMAT, *[f"udp:127.0.0.1:{port}" for port in ports],
             *[f"udp6:[::1]:{port}" for port in ports]],
            ports)

    def lines(self):
        return [line for line in super().lines() if line.startswith("TRAP2")]

    def traps(self, count):
        """The first notifications, waited for: community, and the objects' values by name."""
        return [self._trap(line) for line in self.wait_lines(count)]

    @staticmethod
    def _trap(line):
        head, *pairs = line.split("\t")
        values = dict(pair.split(" = ", 1) for pair in pairs if pair)
        return re.search("community (.*)$", head)[1], values
