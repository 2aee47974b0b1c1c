# SPDX-License-Identifier: GPL-2.0-or-later
"""The short form of `tools/prove soak`."""
import pytest
from short_form import prove


@pytest.mark.slow
def test_a_busy_day_leaves_memory_descriptors_and_the_log_as_they_were():
    prove("soak")
