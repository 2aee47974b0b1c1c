# SPDX-License-Identifier: GPL-2.0-or-later
"""What the tests wait with, and what an OLT says at its end."""
import pytest
from olt import wait_until


def test_waiting_gives_what_the_condition_gave():
    values = iter([None, 0, "", "at last", "never asked for"])
    assert wait_until(lambda: next(values), "a value") == "at last"


def test_waiting_for_what_does_not_come_fails_and_says_for_what():
    with pytest.raises(AssertionError, match="the sun within 0.05 s"):
        wait_until(lambda: False, "the sun", timeout=0.05)


def test_a_condition_is_asked_at_least_once():
    assert wait_until(lambda: True, "at once", timeout=0)


@pytest.mark.parametrize("report", ["==1==ERROR: AddressSanitizer: heap-use-after-free", "x.cpp:3:1: runtime error: overflow",
                                    "WARNING: ThreadSanitizer: data race"])
def test_what_a_sanitizer_found_fails_the_test_at_the_end(cold_olt, report):
    cold_olt.stderr_path.write_text(f"before\n{report}\nafter\n")
    with pytest.raises(AssertionError, match="Sanitizer|runtime error"):
        cold_olt.close()
    cold_olt.stderr_path.unlink()


def test_an_unknown_call_in_the_fault_table_is_an_error(cold_olt):
    cold_olt.faults("misc_cpld_i2c_open ret=-1", "nanosleep ret=0")
    with pytest.raises(AssertionError, match="no call is named"):
        cold_olt.faults("misc_cpld_opened ret=-1")


def test_a_command_that_boardctl_refuses_fails_and_one_that_must_be_refused_may_not_work(cold_olt):
    with pytest.raises(AssertionError, match="boardctl"):
        cold_olt.boardctl("no-such-verb")
    assert "error" in cold_olt.boardctl_refused("no-such-verb")
    with pytest.raises(AssertionError, match="did not refuse"):
        cold_olt.boardctl_refused("channel", "show")
