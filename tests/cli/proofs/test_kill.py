# SPDX-License-Identifier: GPL-2.0-or-later
"""The short form of `tools/prove kill`."""
import pytest
from short_form import prove


@pytest.mark.slow
def test_a_daemon_killed_at_any_moment_loses_nothing_that_was_acknowledged():
    prove("kill")
