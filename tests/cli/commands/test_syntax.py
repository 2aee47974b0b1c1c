# SPDX-License-Identifier: GPL-2.0-or-later
"""The reader of command syntax, by which the tests type every command."""
import pytest
from syntax import examples, pattern, tokens, typed


def bounds(placeholder):
    return placeholder[1:-1].split("-") if placeholder[0] == "(" else [placeholder.lower()]


@pytest.mark.parametrize("syntax, lines", [
    ("show fan [json]", ["show fan", "show fan json"]),
    ("[no] fan monitor", ["fan monitor", "no fan monitor"]),
    ("fan temperature (20-80)", ["fan temperature 20", "fan temperature 80"]),
    ("pon led <on|off> [(1-8)]", ["pon led on", "pon led off 1", "pon led on 8"]),
    ("show log [level <low|high>]", ["show log", "show log level low", "show log level high"]),
    ("phy read ID [<ieee|clause45 DEVAD>]", ["phy read id", "phy read id ieee", "phy read id clause45 devad"]),
    ("tree [{all|user WORD}]", ["tree", "tree all", "tree user word", "tree all user word"]),
    ("i2c (0-3)$bus read WORD...", ["i2c 0 read word", "i2c 3 read word"]),
    ("no length ![(0-9)]", ["no length", "no length 0", "no length 9"]),
    ("to <fd <(0-1)|name WORD>|out>[form <a|b>]", ["to fd 0", "to fd 1 form a", "to fd name word form b", "to out"]),
    ("go <S/P|A.B.C.D|X:X::X:X|X:X:X:X:X:X/M>", ["go s/p", "go a.b.c.d", "go x:x::x:x", "go x:x:x:x:x:x/m"]),
])
def test_every_alternative_and_bound_is_typed_at_least_once(syntax, lines):
    assert [typed(line) for line in examples(syntax, bounds)] == lines


def test_a_word_of_mixed_case_is_a_keyword():
    assert [kind for kind, _ in tokens("XFRR_start_configuration A1 KEY_HEX")] == ["word", "placeholder", "placeholder"]


@pytest.mark.parametrize("syntax", ["a <b|c", "a b>", "a & b", "[a|b"])
def test_what_is_no_syntax_is_refused(syntax):
    with pytest.raises(AssertionError):
        examples(syntax, bounds)


@pytest.mark.parametrize("syntax, fits, fails", [
    ("show fan [json]", ["show fan", "show fan json"], ["show", "show fan x", "show fan json json", "show fanjson"]),
    ("a <b|c d> (1-8)", ["a b 3", "a c d 3"], ["a 3", "a b", "a c 3", "a b c d 3"]),
    ("[no] debug", ["debug", "no debug"], ["no", "nodebug"]),
    ("x WORD [<y A.B.C.D|z>]", ["x 1", "x 1 z", "x 1 y 10.0.0.1"], ["x", "x 1 y", "x 1 z z"]),
])
def test_a_pattern_fits_the_lines_of_its_syntax_only(syntax, fits, fails):
    assert [line for line in fits + fails if pattern(syntax).fullmatch(line)] == fits
