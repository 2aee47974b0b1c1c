# SPDX-License-Identifier: GPL-2.0-or-later
"""Commands of the transceiver unit that there are not: in a node, or at all."""
import pytest
from vty import NO_MATCH

NODES = ("view", "enable", "config", "diagnose", "gpon 0/1", "xgpon 0/1")
# What nobody can type.
RESERVED = [
    "show interface transceiver dom-supported-list",
    "transceiver diagnosis threshold tx-power default",
    "transceiver diagnosis threshold tx-power low-alarm -8.5",
    "transceiver diagnosis threshold tx-power high-alarm 7",
    "no transceiver diagnosis threshold tx-power",
    "transceiver diagnosis threshold rx-power default",
    "transceiver diagnosis threshold rx-power low-alarm -28",
    "transceiver diagnosis threshold rx-power high-alarm -7",
    "no transceiver diagnosis threshold rx-power",
    "transceiver power low trigger error-down",
]


@pytest.fixture(scope="module")
def olt(make_olt):
    return make_olt().start()


@pytest.mark.parametrize("node", ["view", "enable", "config", "diagnose"])
@pytest.mark.parametrize("words", ["transceiver rssi-txdis rssi", "show transceiver rssi-txdis"])
def test_the_pin_commands_are_unknown_outside_the_interface_nodes(olt, node, words):
    assert olt.run(words, node)[1] == NO_MATCH


@pytest.mark.parametrize("node", NODES)
@pytest.mark.parametrize("words", RESERVED)
def test_reserved_words_are_unknown_in_every_node(olt, node, words):
    with olt.vty(node) as session:
        assert session.run(words)[1] == NO_MATCH
