# SPDX-License-Identifier: GPL-2.0-or-later
"""decode-module judges the module of the port that was asked for, and no other."""
import os
import subprocess

import pytest
from olt import BUILD, PROJECT


@pytest.fixture(scope="module")
def decode(make_olt):
    """A function that runs the script for words; returns its output and status."""
    olt = make_olt()
    olt.populate()
    olt.start()
    environment = {**os.environ, "OLT_STATE": str(olt.state), "PATH": f"{BUILD / 'bin'}:{os.environ['PATH']}"}

    def run(*words):
        done = subprocess.run([PROJECT / "docs" / "guide" / "decode-module", *words], env=environment, stdin=subprocess.DEVNULL,
                              stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True, check=False)
        return done.stdout, done.returncode

    return run


@pytest.mark.parametrize("words", [(), ("gpon",), ("gpon", "9"), ("gpon", "0"), ("ge", "x"), ("ge", "-1"), ("xe", "1")])
def test_a_port_that_no_board_has_shows_the_usage(decode, words):
    shown, status = decode(*words)
    assert (shown, status) == ("decode-module <gpon|ge> PORT        status as of optics decode: 0 good, 1 doubtful, 2 not to be read\n", 2)


def test_an_empty_cage_is_no_module(decode):
    assert decode("gpon", "7") == ("no module answers in gpon 7\n", 2)


def test_a_module_is_decoded(decode):
    shown, status = decode("gpon", "1")
    assert status == 0 and "RX power" in shown
