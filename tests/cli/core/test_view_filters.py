# SPDX-License-Identifier: GPL-2.0-or-later
"""Regular expressions of operators: what would cost the daemon its memory or its time is refused with the reason."""
import pytest
from vty import SUCCESS, WARNING

LONG = "longer than 256 characters"
NESTED = "groups nested more than 8 deep"
ELEMENTS = "more than 512 elements with its repetitions written out"
CHOICES = "more than 12 elements that match one of several (. [] | ? {}) beside * or +"
BACK = "back-references are not supported"

REFUSED = [
    ("a" * 257, LONG),
    ("(" * 9 + "a" + ")" * 9, NESTED),
    ("(((a{99}){99}){99})", ELEMENTS),
    ("a{32767}", ELEMENTS),
    ("a{4294967297}", ELEMENTS),
    ("((((((((a+)+)+)+)+)+)+)+)+", ELEMENTS),
    ("a++++++++++", ELEMENTS),
    ("(a|b)*a(a|b){20}c", CHOICES),
    ("[ab]+a[ab]{20}", CHOICES),
    ("[^]x]*a[[:alpha:]]{20}", CHOICES),
    (r"x{1,}" + r"\w" * 13, CHOICES),
    (r"(.*)\1", BACK),
]
TAKEN = [
    "Monitor",
    "a" * 256,
    "(" * 8 + "a" + ")" * 8,
    r"^ *[0-9]+\.[0-9]+\.[0-9]+\.[0-9]+/[0-9]+ .*(up|down)$",
    "([0-9a-f]{2}:){5}[0-9a-f]{2}",
    "[]a]{3}[^]]",
    "show|no|clear|save|alarm|fan|usb|power|system|pon|gpon|xgpon|sfp|debug|interface",
]


def lines_with(text, word):
    return [line for line in text.splitlines() if word in line]


@pytest.mark.parametrize("line", ["find {}", "show diag monitor | include {}"])
@pytest.mark.parametrize("expression, reason", REFUSED, ids=range(len(REFUSED)))
def test_an_expression_that_would_take_too_much_is_refused_with_the_reason(olt, line, expression, reason):
    text, status = olt.run(line.format(expression), "diagnose")
    assert text.splitlines()[0] == f"% Regular expression refused: {reason}" and status == WARNING
    assert not lines_with(text, ": Enable")


@pytest.mark.parametrize("line", ["find {}", "show diag monitor | include {}"])
@pytest.mark.parametrize("expression", TAKEN, ids=range(len(TAKEN)))
def test_an_expression_as_operators_write_them_is_taken(olt, line, expression):
    text, status = olt.run(line.format(expression), "diagnose")
    assert status == SUCCESS and "refused" not in text


def test_a_session_filters_again_after_a_refusal(olt):
    with olt.vty("diagnose") as session:
        assert session.run("show diag monitor | include (((a{99}){99}){99})")[1] == WARNING
        text, status = session.run("show diag monitor | include FAN")
        assert status == SUCCESS and len(text.splitlines()) == 1 and "FAN Monitor" in text
        assert len(session.run("show diag monitor")[0].splitlines()) == 4


def test_an_expression_that_cannot_be_read_is_still_told_of_as_such(olt):
    assert "Unmatched" in olt.run("show diag monitor | include (a", "diagnose")[0]
    assert olt.run("find (a")[0] == "% Unbalanced parentheses\n"
