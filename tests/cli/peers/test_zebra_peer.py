# SPDX-License-Identifier: GPL-2.0-or-later
"""The daemon beside the distribution's own zebra, which knows nothing of the daemon's route type."""

import os
import subprocess

from olt import OLT, wait_until
from vty import Vty, takes_commands


def test_the_distributions_zebra_takes_the_daemon_as_a_client_and_both_live_on(fresh_olt):
    with open(fresh_olt.state / "log" / "zebra-console", "wb") as console:
        zebra = subprocess.Popen(
            fresh_olt.inside(OLT, "zebra"), stdin=subprocess.DEVNULL, stdout=console, stderr=subprocess.STDOUT
        )
    try:
        socket = fresh_olt.state / "run" / "zebra.vty"
        wait_until(lambda: zebra.poll() is not None or takes_commands(socket), "zebra's vty")

        def clients():
            with Vty(str(socket), "enable") as session:
                return session.run("show zebra client summary")[0]

        # libfrr's client looks for zebra again after up to ten seconds
        wait_until(lambda: "system" in clients(), "the daemon among zebra's clients")
        assert zebra.poll() is None
        assert fresh_olt.run("show diag monitor", "diagnose")[1] == 0
    finally:
        zebra.kill()
        zebra.wait()


def test_zebra_works_in_a_network_of_its_own(fresh_olt):
    zebra = subprocess.Popen(fresh_olt.inside(OLT, "zebra"), stdin=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
    try:
        pid_file = fresh_olt.state / "run" / "zebra.pid"
        wait_until(lambda: pid_file.exists() and pid_file.read_text().strip(), "zebra's pid file")
        network = fresh_olt.exec("readlink", f"/proc/{pid_file.read_text().strip()}/ns/net").stdout
        assert network
        assert network != fresh_olt.exec("readlink", "/proc/self/ns/net").stdout
        assert network != os.readlink("/proc/self/ns/net") + "\n"
    finally:
        zebra.kill()
        zebra.wait()
