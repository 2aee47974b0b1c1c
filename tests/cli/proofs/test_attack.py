# SPDX-License-Identifier: GPL-2.0-or-later
"""The attacks of `tools/prove attack`, each as a test of its own."""
import re

import attacks_local
import attacks_remote
import fuzz_targets
import pytest
from project import PROJECT

ATTACKS = [*attacks_local.RUNNING, *attacks_remote.RUNNING, *attacks_local.BEFORE_START]


def _name(attack):
    return attack.__name__


@pytest.mark.parametrize("attack", [*attacks_local.RUNNING, *attacks_remote.RUNNING], ids=_name)
def test_a_running_daemon_stands(olt, attack):
    attack(olt)


@pytest.mark.parametrize("attack", attacks_local.BEFORE_START, ids=_name)
def test_a_daemon_starts_in_spite_of_what_is_planted(cold_olt, attack):
    attack(cold_olt)


def shown_by():
    """What the table of docs/security.md names as shown by something."""
    table = (PROJECT / "docs" / "security.md").read_text().split("## What required lines")[0].split("## Who reaches what")[1]
    rows = [line.rstrip(" |") for line in table.splitlines() if line.startswith("|")]
    return {name for line in rows for name in re.findall(r"`([^`]+)`", line.rpartition(" | ")[2])}


def test_whatever_the_page_says_to_show_something_is_there():
    sources = [path.read_text() for path in (PROJECT / "tests").rglob("test_*.py")]
    known = {attack.__name__ for attack in ATTACKS} | set(fuzz_targets.names()) | {"fuzz"}
    known |= {path.name for path in (PROJECT / "tests").rglob("test_*.py")}
    known |= {name for source in sources for name in re.findall(r"^def (test_\w+)", source, re.M)}
    assert len(shown_by()) > 20 and shown_by() <= known, shown_by() - known


def test_every_attack_and_every_target_stands_on_the_page():
    page = (PROJECT / "docs" / "security.md").read_text()
    kin = {attack.__name__ for attack in attacks_local.BEFORE_START[1:]}  # named by the first
    wanted = {attack.__name__ for attack in ATTACKS} - kin
    missing = [name for name in sorted(wanted | set(fuzz_targets.names())) if f"`{name}`" not in page]
    assert not missing
