# SPDX-License-Identifier: GPL-2.0-or-later
"""The limits by which check-modules judges are those that the page of dark ports tells."""
import re

from olt import PROJECT

GUIDE = PROJECT / "docs" / "guide"
NUMBER = r"-?\d+(?:\.\d+)?"


def told():
    """Kind: TX from, to, RX from, to, by the page's table."""
    rows = re.findall(rf"^\| ([\w+-]+)[^|]*\| ({NUMBER}) to ({NUMBER}) \| ({NUMBER}) to ({NUMBER})[ ,|]",
                      (GUIDE / "dark-port.md").read_text(), re.M)
    return [(kind, *map(float, numbers)) for kind, *numbers in rows]


def used():
    rows = re.findall(rf'"([\w+-]+)": \[({NUMBER}), ({NUMBER}), ({NUMBER}), ({NUMBER})\]', (GUIDE / "check-modules.jq").read_text())
    return {kind: tuple(map(float, numbers)) for kind, *numbers in rows}


def test_limits_are_those_of_the_table():
    limits = used()
    assert len(limits) == 11
    told_of = {kind: numbers for kind, *numbers in told() if kind != "GPON"}
    assert {kind: tuple(numbers) for kind, numbers in told_of.items()} == {
        kind: numbers for kind, numbers in limits.items() if kind != "GPON"}


def test_gpon_class_is_not_told_so_its_launch_power_may_be_of_either_and_its_receiver_is_the_weaker():
    classes = [numbers for kind, *numbers in told() if kind == "GPON"]
    assert len(classes) == 2
    lowest_tx, highest_tx = min(numbers[0] for numbers in classes), max(numbers[1] for numbers in classes)
    assert used()["GPON"] == (lowest_tx, highest_tx, *classes[0][2:])
