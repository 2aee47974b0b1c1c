# SPDX-License-Identifier: GPL-2.0-or-later
"""The short form of `tools/prove faults`."""
import pytest
from short_form import prove


@pytest.mark.slow
def test_every_call_may_fail():
    prove("faults")
