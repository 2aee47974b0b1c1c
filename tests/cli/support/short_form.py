# SPDX-License-Identifier: GPL-2.0-or-later
"""Short forms of what tools/prove does, as tests."""
import subprocess

from project import PROJECT

PROOFS = PROJECT / "tools" / "proofs"


def prove(name, *options):
    """Runs the short form of a proof and fails with all that it said when something did not hold."""
    done = subprocess.run([PROJECT / "tools" / "prove", name, "--short", "--no-build", *options], stdin=subprocess.DEVNULL,
                          stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True, errors="replace")
    assert done.returncode == 0, done.stdout
