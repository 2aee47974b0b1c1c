# SPDX-License-Identifier: GPL-2.0-or-later
"""Commands of the transceiver unit: which there are, in which order, where, and which there are not."""
import pytest
from calls import of
from vty import NO_MATCH

CONFIG, GPON, XGPON, DIAGNOSE = 4, 124, 125, 133
SHOW = "Show running system information"
SELECT = ("transceiver rssi-txdis <rssi|txdis>", ["Transceiver.", "RSSI and TXDIS information.", "RSSI.", "TXDIS."])
SHOW_SELECT = ("show transceiver rssi-txdis", [SHOW, "Transceiver.", "RSSI and TXDIS information."])
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
    return make_olt().start(trace=True)


@pytest.fixture(scope="module")
def installed(olt):
    """Node and arguments of what the daemon installs, in its order."""
    calls = of(olt.trace(), "frr_init|install_element")
    own = [call.op for call in calls].index("frr_init") + 1
    return [(int(call.values["node"]), call.values) for call in calls[own:]]


def test_the_commands_come_in_their_order_and_last_of_all(installed):
    # Those of the interface nodes and of the diagnostics node are known by their words.
    rows = [(node, values["str"]) for node, values in installed]
    expected = [
        (CONFIG, "show idprom interface <gigabitEthernet|gpon> <S/P> [<vendor|manufacture>]"),
        (CONFIG, "show idprom interface xgpon <S/P> [<vendor|manufacture>]"),
        (CONFIG, "show transceiver [json]"),
        (CONFIG, "show transceiver <detail|diagnosis>"),
        (GPON, "transceiver rssi-txdis <rssi|txdis>"),
        (XGPON, "transceiver rssi-txdis <rssi|txdis>"),
        (GPON, "show transceiver rssi-txdis"),
        (XGPON, "show transceiver rssi-txdis"),
        (DIAGNOSE, "[no] debug transceiver"),
    ]
    assert rows[-len(expected):] == expected


@pytest.mark.parametrize("words, help_lines", [SELECT, SHOW_SELECT])
def test_the_pin_commands_are_visible_and_one_element_in_both_interface_nodes(installed, words, help_lines):
    found = [(node, values) for node, values in installed if values["str"] == words]
    assert [node for node, _ in found] == [GPON, XGPON]
    assert found[0][1]["cmd"] == found[1][1]["cmd"]
    for _, values in found:
        assert values["doc"] == "".join(line + "\n" for line in help_lines)
        assert values["hidden"] == "0"


@pytest.mark.parametrize("node", ["gpon 0/1", "xgpon 0/1"])
def test_the_pin_commands_are_listed_in_the_interface_nodes(olt, node):
    listed = [" ".join(line.split()) for line in olt.run("list", node)[0].splitlines()]
    assert SELECT[0] in listed and SHOW_SELECT[0] in listed


@pytest.mark.parametrize("node", ["view", "enable", "config", "diagnose"])
@pytest.mark.parametrize("words", ["transceiver rssi-txdis rssi", "show transceiver rssi-txdis"])
def test_the_pin_commands_are_unknown_outside_the_interface_nodes(olt, node, words):
    assert olt.run(words, node)[1] == NO_MATCH


@pytest.mark.parametrize("node", NODES)
@pytest.mark.parametrize("words", RESERVED)
def test_reserved_words_are_unknown_in_every_node(olt, node, words):
    with olt.vty(node) as session:
        assert session.run(words)[1] == NO_MATCH


def test_reserved_commands_are_in_no_install_table(installed):
    words = {values["str"] for _, values in installed}
    assert not [word for word in words if "dom-supported" in word or "error-down" in word or "diagnosis threshold" in word]
