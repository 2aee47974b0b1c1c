# SPDX-License-Identifier: GPL-2.0-or-later
"""Processor and memory usage, from proc files of the tests' own."""
import ctypes
import os
import select
import threading

import pytest
from calls import in_order, of
from olt import wait_until
from proc_files import bound, busy, meminfo, stat_line
from traced_fixtures import olt  # noqa: F401


def cpu(percent):
    return f'{{\n  "cpuUsage":"{percent}%"\n}}\r\n', 0


def memory(percent):
    return f'{{\n  "memoryUsage":"{percent}%"\n}}\r\n', 0


def calls_during(olt, command):
    """The platform's and libc's calls of the command alone, and its text."""
    mark = len(olt.trace())
    text, rc = olt.run(command)
    assert rc == 0
    commands = [call for call in olt.trace()[mark:] if call.thread == "main"]
    return text, of(commands, "fopen|nanosleep|system_cmd|fclose")


# --- processors


@pytest.mark.parametrize("total, idle, percent", [
    (1000, 953, 4),  # 4.7
    (869, 4, 99),  # 99.6
    (2000, 1999, 0),  # 0.1
    (1000, 1000, 0),
    (1000, 0, 100),
    (1000, 921, 7),  # 7.9
])
def test_the_processors_busy_share_is_cut_to_a_whole_percentage(olt, total, idle, percent):
    with busy(olt, total, idle):
        assert olt.run("show sys cpu-usage json") == cpu(percent)


def test_counters_that_stand_still_are_no_idle_time(olt):
    with bound(olt, "/proc/stat", stat_line(1000, 500)):
        assert olt.run("show sys cpu-usage json") == cpu(100)


@pytest.mark.parametrize("content", ["", "\n", "cpu  1 2 3\n", "intr 1 2 3 4 5 6 7 8\n", "cpu\n"])
def test_what_is_no_line_of_counters_shows_as_nothing(olt, content):
    with bound(olt, "/proc/stat", content):
        assert olt.run("show sys cpu-usage json") == cpu(0)


@pytest.mark.parametrize("counters", range(4, 8))
def test_later_counters_may_be_missing(olt, counters):
    with bound(olt, "/proc/stat", "cpu " + " ".join(["7"] * counters) + "\n"):
        assert olt.run("show sys cpu-usage json") == cpu(100)


def test_counters_that_cannot_be_opened_show_as_nothing(olt):
    with bound(olt, "/proc/stat", stat_line(1000, 500), mode=0):
        _, calls = calls_during(olt, "show sys cpu-usage json")
        assert [call.op for call in calls] == ["fopen"]
        assert olt.run("show sys cpu-usage json") == cpu(0)


def after_close(file, act):
    """A thread that acts once a reader of the file has closed it."""
    libc = ctypes.CDLL(None, use_errno=True)
    close_nowrite, watcher = 0x10, libc.inotify_init()
    assert watcher >= 0 and libc.inotify_add_watch(watcher, str(file).encode(), close_nowrite) >= 0

    def wait():
        select.select([watcher], [], [], 10)
        act()
        os.close(watcher)

    thread = threading.Thread(target=wait)
    thread.start()
    return thread


def test_counters_that_cannot_be_opened_again_show_as_nothing(olt):
    """They are taken away between the two samples; a test that was too slow for that tries again."""
    with bound(olt, "/proc/stat", stat_line(1000, 500)) as file:

        def second_open_fails():
            file.chmod(0o644)
            thread = after_close(file, lambda: file.chmod(0))
            text, calls = calls_during(olt, "show sys cpu-usage json")
            thread.join()
            if text == cpu(100)[0]:
                return False
            assert text == cpu(0)[0]
            return [call.op for call in calls] == ["fopen", "fclose", "nanosleep", "fopen"]

        wait_until(second_open_fails, "the second sample fails")


def test_two_samples_are_50_ms_apart(olt):
    text, calls = calls_during(olt, "show sys cpu-usage json")
    assert [str(call).split(" -> ")[0] for call in calls] == [
        'fopen path="/proc/stat" mode="re"', "fclose ", "nanosleep ms=50",
        'fopen path="/proc/stat" mode="re"', "fclose "]
    assert text.startswith('{\n  "cpuUsage":"')


def test_the_processors_are_sampled_before_their_statistics_are_shown(olt):
    with busy(olt, 1000, 921):
        text, calls = calls_during(olt, "show sys cpu-usage")
    in_order(calls, r'fopen path="/proc/stat"', "nanosleep", r'fopen path="/proc/stat"',
             r'system_cmd line="mpstat -P ALL 3 1"')
    assert calls[-1].op == "system_cmd"
    assert text.endswith("\r\nCurrent CPU Usage:     7%\r\n")
    statistics = text.removesuffix("\r\nCurrent CPU Usage:     7%\r\n")
    assert "%usr" in statistics and "Average:" in statistics and "\r" not in statistics


def test_without_statistics_the_usage_is_shown(olt):
    olt.exec("mount", "--bind", "/dev/null", "/usr/bin/mpstat", check=True)
    try:
        text, rc = olt.run("show sys cpu-usage")
    finally:
        olt.exec("umount", "/usr/bin/mpstat", check=True)
    assert rc == 0 and "mpstat" in text
    assert "\r\nCurrent CPU Usage:     " in text and text.endswith("%\r\n")


# --- memory


def test_free_memory_is_what_counts_not_available_memory(olt):
    with bound(olt, "/proc/meminfo", meminfo(1000, 250, "MemAvailable:   900 kB")):
        assert olt.run("show sys mem json") == memory(75)


@pytest.mark.parametrize("total, free, percent", [(1000, 0, 100), (1000, 1000, 0), (3, 1, 66), (24684096, 21367144, 13)])
def test_the_used_share_is_cut_to_a_whole_percentage(olt, total, free, percent):
    with bound(olt, "/proc/meminfo", meminfo(total, free)):
        assert olt.run("show sys mem json") == memory(percent)


def test_ten_characters_of_a_number_count(olt):
    with bound(olt, "/proc/meminfo", meminfo("200000000000", "1000000000")):
        assert olt.run("show sys mem json") == memory(50)


def test_a_single_line_leaves_nothing_free(olt):
    before = olt.stdout().count("Row is out of the file range")
    with bound(olt, "/proc/meminfo", "MemTotal:       1000 kB\n"):
        assert olt.run("show sys mem json") == memory(100)
    assert olt.stdout().count("Row is out of the file range") == before + 1


def test_an_empty_file_shows_as_nothing(olt):
    before = olt.stdout().count("Row is out of the file range")
    with bound(olt, "/proc/meminfo", ""):
        assert olt.run("show sys mem json") == memory(0)
    assert olt.stdout().count("Row is out of the file range") == before + 2


def test_a_total_of_nothing_shows_as_nothing(olt):
    for free in (0, 100):
        with bound(olt, "/proc/meminfo", meminfo(0, free)):
            assert olt.run("show sys mem json") == memory(0)


def test_memory_figures_that_cannot_be_opened_are_said_twice_and_show_as_nothing(olt):
    before = olt.stderr().count("open fail\n: Permission denied\n")
    with bound(olt, "/proc/meminfo", meminfo(1000, 250), mode=0):
        assert olt.run("show sys mem json") == memory(0)
        text, rc = olt.run("show sys mem")
    assert olt.stderr().count("open fail\n: Permission denied\n") == before + 4
    assert text.startswith("\r\nCurrent Memory Usage:   0%\r\n\r\n") and rc == 0


def test_memory_usage_comes_before_the_kernels_figures(olt):
    content = meminfo(1000, 580, "MemAvailable:   900 kB", "Buffers:          1 kB")
    with bound(olt, "/proc/meminfo", content):
        text, calls = calls_during(olt, "show sys mem")
    assert text == "\r\nCurrent Memory Usage:   42%\r\n\r\n" + content
    assert [call.op for call in calls] == ["fopen", "fclose", "fopen", "fclose", "system_cmd"]
    assert calls[-1].values["line"] == "cat /proc/meminfo"
