# SPDX-License-Identifier: GPL-2.0-or-later
"""An OLT for a benchmark, with a module in each PON cage."""
import contextlib
import shutil
import subprocess
import sys
from pathlib import Path

PROJECT = Path(__file__).resolve().parents[1]
PORTS = range(1, 9)
sys.path.insert(0, str(PROJECT / "tests" / "cli" / "support"))
sys.dont_write_bytecode = True

from olt import BOX, BUILD, OLT, Olt  # noqa: E402


@contextlib.contextmanager
def running_olt(name, **how):
    """The OLT, its daemon started as Olt.start() does; nothing is left of it at the end."""
    states = PROJECT / "build" / f"{name}-state"
    shutil.rmtree(states, ignore_errors=True)
    try:
        subprocess.run([BOX, "--state", states / "template", "--build", BUILD, "--net", "--", OLT, "files"], check=True)
        olt = Olt(states / "olt", template=states / "template" / "database")
        try:
            for port in PORTS:
                olt.boardctl("plug", "gpon", port, PROJECT / "sim" / "modules" / "combo-1490-1577.json")
            yield olt.start(**how)
        finally:
            olt.close()
    finally:
        shutil.rmtree(states, ignore_errors=True)
