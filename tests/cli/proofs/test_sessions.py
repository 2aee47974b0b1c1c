# SPDX-License-Identifier: GPL-2.0-or-later
"""The short form of `tools/prove sessions`."""
import pytest
from project import IS_TSAN
from short_form import prove


@pytest.mark.skipif(IS_TSAN, reason="memory and times would be the sanitizer's")
@pytest.mark.slow
def test_no_session_makes_the_daemon_grow_or_another_wait():
    prove("sessions")
