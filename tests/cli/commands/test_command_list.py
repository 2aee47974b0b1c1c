# SPDX-License-Identifier: GPL-2.0-or-later
"""The daemon has the commands of the list, all of them, in their order, and no others."""
from collections import Counter

import pytest
from calls import of
from command_list import COMMANDS, CONFIG, DIAGNOSE, GPON, OWN_NODES, XGPON


@pytest.fixture(scope="module")
def own_calls(make_olt):
    """What the daemon installs itself; libfrr's own come before."""
    calls = make_olt().start(trace=True).trace()
    frame = [call.op for call in calls].index("frr_init")
    return [call.values | {"op": call.op} for call in of(calls[frame + 1 :], "install_node|install_element")]


@pytest.fixture(scope="module")
def elements(own_calls):
    return [values for values in own_calls if values["op"] == "install_element"]


def as_listed(values):
    return int(values["node"]), " ".join(values["str"].split()), values["hidden"] == "1"


def test_the_daemon_installs_the_listed_commands_and_no_others(elements):
    installed = Counter(map(as_listed, elements))
    listed = Counter(COMMANDS)
    assert (sorted(listed - installed), sorted(installed - listed)) == ([], [])


def test_the_commands_come_in_the_order_of_the_list(elements):
    assert [as_listed(values) for values in elements] == COMMANDS


def test_one_command_in_two_nodes_is_one_element(elements):
    """115 elements that are offered and 25 hidden ones are installed 150 times."""
    hidden = {values["cmd"]: values["hidden"] == "1" for values in elements}
    assert Counter(hidden.values()) == {False: 115, True: 25}
    assert Counter(int(values["node"]) for values in elements) == {CONFIG: 91, DIAGNOSE: 41, GPON: 9, XGPON: 9}


def test_the_nodes_are_those_of_the_list(own_calls):
    nodes = [(int(values["node"]), values["name"]) for values in own_calls if values["op"] == "install_node"]
    assert nodes == OWN_NODES
