# SPDX-License-Identifier: GPL-2.0-or-later
"""What the harness of the documents takes for a command, for its output, and for the same output."""
import pytest
from documents import matches, steps

PAGE = r"""
Words, and a block without commands:

    one
    $$ two

Then:

    $ first | \
        second

    shown

    after a blank line
    $ cat <<'END' >file
    $ not a command
    END
    $ sleep 4; third
    $ sleep 3
    $ fourth

Words.

    $ fifth
"""


def test_commands_are_found_with_what_belongs_to_them():
    found = steps(PAGE)
    assert [step.command for step in found] == [
        "first | \\\n    second", "cat <<'END' >file\n$ not a command\nEND", "third", "fourth", "fifth"]
    assert [step.expected for step in found] == [["", "shown", "", "after a blank line"], [], [], [], []]
    assert [step.waits for step in found] == [False, False, True, True, False]
    assert found[0].line == 9


@pytest.mark.parametrize("shown, expected, same", [
    (["a", "b"], ["a", "b"], True),
    (["a", "b"], ["a"], False),
    (["a"], ["a", "b"], False),
    (["a.b"], ["axb"], False),
    (["axb"], ["a.b"], False),
    (["a   "], ["a"], True),
    (["a\r"], ["a"], True),
    ([" a"], ["a"], False),
    (["[2026/11/22 06:10:01] x"], ["[1999/01/01 00:00:00] x"], True),
    (["[later] x"], ["[1999/01/01 00:00:00] x"], False),
    (["a 12 b"], ["a ... b"], True),
    (["a 12 c"], ["a ... b"], False),
    (["a", "1", "2", "b"], ["a", "...", "b"], True),
    (["a", "b"], ["a", "...", "b"], True),
    (["a", "1", "c"], ["a", "...", "b"], False),
])
def test_output_is_the_same_but_for_what_varies(shown, expected, same):
    assert matches(shown, expected) == same
