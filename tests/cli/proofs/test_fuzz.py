# SPDX-License-Identifier: GPL-2.0-or-later
"""The short form of `tools/prove fuzz`, and the form of its seeds."""
import fuzz_seeds
import fuzz_targets
import pytest
from short_form import prove


@pytest.mark.slow
@pytest.mark.timeout(600)  # the targets are built
def test_nonsense_from_every_side_is_minded_nowhere():
    prove("fuzz")


def test_every_target_has_seeds_and_every_seed_a_target():
    with_seeds = {path.stem for path in fuzz_seeds.FOLDER.iterdir()} | set(fuzz_seeds.FILES)
    assert with_seeds == set(fuzz_targets.names())


@pytest.mark.parametrize("data", [b"", b"plain text", b" blanks ", b"hex 00", b"# no comment", b"a\nb\tc\\d\\n", bytes(range(256))])
def test_an_input_that_is_written_down_is_read_back(data):
    line = fuzz_seeds.encoded(data)
    assert "\n" not in line and not line.startswith("# ") and fuzz_seeds.decoded(line) == data
