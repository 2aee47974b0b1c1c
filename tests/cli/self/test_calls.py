# SPDX-License-Identifier: GPL-2.0-or-later
"""The reader of call traces, on which every "was called" and "was never called" of the other tests rests."""
import pytest
from calls import Call, in_order, of, read_trace, require_traced

TRACE = '''000001 1000 main raise reason="a b" -> ok
000002 1001 fan_monitor misc_cpld_i2c_open bus=0 -> 3
000003 1002 main cli_log id=77 text="10 % \\"x\\" \\\\ \\r\\n\\x1b" -> 0
000004 1003 main lower -> ok
'''


@pytest.fixture
def trace(tmp_path):
    path = tmp_path / "trace"
    path.write_text(TRACE, "latin-1", newline="")
    return path


def call(op):
    return Call(0, "main", op, "", "0")


def test_a_line_is_time_thread_operation_arguments_and_result(trace):
    first, second, _, last = read_trace(trace)
    assert first == Call(1000, "main", "raise", 'reason="a b"', "ok")
    assert (second.thread, second.values, second.result) == ("fan_monitor", {"bus": "0"}, "3")
    assert (last.op, last.arguments) == ("lower", "")


def test_quoted_values_are_what_they_were(trace):
    assert read_trace(trace)[2].values == {"id": "77", "text": '10 % "x" \\ \r\n\x1b'}


def test_a_part_of_a_trace_is_read_from_and_to_its_bytes(trace):
    lines = TRACE.splitlines(keepends=True)
    begin, end = len(lines[0]), len("".join(lines[:3]))
    assert [found.op for found in read_trace(trace, begin, end)] == ["misc_cpld_i2c_open", "cli_log"]
    assert [found.op for found in read_trace(trace, begin, only=" main ")] == ["cli_log", "lower"]


def test_a_part_that_begins_within_a_line_begins_with_the_next_one(trace):
    begin = TRACE.index("misc_cpld_i2c_open")
    assert [found.op for found in read_trace(trace, begin)] == ["cli_log", "lower"]


def test_a_last_line_that_is_being_written_is_left_for_later(trace):
    with open(trace, "a") as file:
        file.write("000005 1004 main lo")
    assert [found.op for found in read_trace(trace)] == ["raise", "misc_cpld_i2c_open", "cli_log", "lower"]


@pytest.mark.parametrize("line", ["000005 1004 main lower", "lower -> ok", "000005 now main lower -> ok", ""])
def test_any_other_line_that_is_none_is_an_error(trace, line):
    with open(trace, "a") as file:
        file.write(line + "\n")
    with pytest.raises(AssertionError, match="a line of the trace that is none"):
        read_trace(trace)


def test_a_control_byte_in_a_value_does_not_end_its_line(tmp_path):
    (tmp_path / "trace").write_bytes(b'000001 1000 main cli_log text="\x85\x0c\x1c\xe9" -> 0\n')
    (found,) = read_trace(tmp_path / "trace")
    assert found.values["text"] == "\x85\x0c\x1c\xe9"


def test_calls_of_operations_are_those_whose_whole_name_fits(trace):
    assert [found.op for found in of(read_trace(trace), "raise|lower")] == ["raise", "lower"]
    assert of(read_trace(trace), "semaphore_p") == []
    assert of([call("misc_cpld_i2c_open_twice")], "misc_cpld_i2c_open") == []


@pytest.mark.parametrize("pattern", ["misc_cpld_opened", "raise|no_such_call", "semaphore_[xy]", ""])
def test_a_name_that_no_library_and_no_shim_has_is_an_error(pattern):
    with pytest.raises(AssertionError, match="no call is named"):
        require_traced(pattern)


@pytest.mark.parametrize("pattern", ["semaphore_[pv]", "misc_cpld_.*|raise", "(raise|lower)", "install_element", "nanosleep"])
def test_names_of_the_libraries_and_of_the_shim_are_known(pattern):
    require_traced(pattern)


def test_calls_in_order_need_one_call_for_each_pattern():
    calls = [call("raise"), call("open"), call("lower")]
    assert in_order(calls, "raise", "lower") == [calls[0], calls[2]]
    for patterns in (["lower", "raise"], ["raise", "raise"], ["open", "lower", "lower"]):
        with pytest.raises(AssertionError, match="no call"):
            in_order(calls, *patterns)
