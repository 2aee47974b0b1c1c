# SPDX-License-Identifier: GPL-2.0-or-later
"""For modules whose tests share an OLT with recorded calls, and whose faults end with the test."""

import pytest


@pytest.fixture(scope="module")
def olt(traced_olt):
    return traced_olt


@pytest.fixture(autouse=True)
def no_faults(olt):
    yield
    olt.faults()
