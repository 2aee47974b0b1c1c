# SPDX-License-Identifier: GPL-2.0-or-later
"""The attacks of `tools/prove attack`, each as a test of its own."""
import attacks_local
import attacks_remote
import pytest


def _name(attack):
    return attack.__name__


@pytest.mark.parametrize("attack", [*attacks_local.RUNNING, *attacks_remote.RUNNING], ids=_name)
def test_a_running_daemon_stands(olt, attack):
    attack(olt)
