// SPDX-License-Identifier: GPL-2.0-or-later
// Lines of the call trace, and faults by operation, count, thread and change of the table.
#include "platform/trace/tq_trace.hpp"
#include "tests/unit/platform/trace/trace_files.hpp"

#include <chrono>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sstream>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>
#include <vector>

using trace_files::write_faults;

namespace {

std::string last_line()
{
    const auto lines = trace_files::lines();
    return lines.empty() ? "" : lines.back();
}

// Without sequence number and time.
std::string last_event()
{
    return trace_files::event(last_line());
}

int call(const char *op, int result = 0)
{
    return tq::traced(op, [&] { return result; });
}

class Trace : public testing::Test {
protected:
    void SetUp() override { write_faults(""); }
};
class Faults : public Trace {};

} // namespace

TEST_F(Trace, a_line_has_number_time_thread_operation_arguments_and_result)
{
    const std::uint8_t value = 1;
    tq::traced(
        "misc_cpld_i2c_read_byte", [] { return 0; }, tq::arg("h", 7), tq::hex("reg", std::uint8_t{5}),
        tq::out("val", &value));
    EXPECT_THAT(last_line(),
                testing::MatchesRegex("[0-9]{6} [0-9]+ main misc_cpld_i2c_read_byte h=7 reg=0x05 "
                                      "val=0x01 -> 0"));
}

TEST_F(Trace, numbers_rise_by_one)
{
    call("a");
    const long first = std::stol(last_line());
    call("b");
    EXPECT_EQ(std::stol(last_line()), first + 1);
}

TEST_F(Trace, numbers_go_on_in_another_process)
{
    call("a");
    const long first = std::stol(last_line());
    const pid_t child = fork();
    if (child == 0) {
        call("b");
        _exit(0);
    }
    ASSERT_EQ(waitpid(child, nullptr, 0), child);
    call("c");
    EXPECT_EQ(last_event(), "main c -> 0");
    EXPECT_EQ(std::stol(last_line()), first + 2);
}

TEST_F(Trace, a_thread_is_shown_by_its_name)
{
    std::thread([] {
        prctl(PR_SET_NAME, "fan_monitor");
        call("semaphore_p");
    }).join();
    EXPECT_EQ(last_event(), "fan_monitor semaphore_p -> 0");
}

TEST_F(Trace, text_is_quoted_and_stays_on_one_line)
{
    tq::traced(
        "pal_system", [] { return 0; }, tq::arg("line", "echo \"a\\b\"\r\n\x01\x7f\x1f~"));
    EXPECT_EQ(last_event(), "main pal_system line=\"echo \\\"a\\\\b\\\"\\r\\n\\x01\\x7f\\x1f~\" -> 0");
}

TEST_F(Trace, a_null_text_and_a_null_result_are_shown)
{
    const void *result = tq::traced(
        "f", []() -> const void * { return nullptr; }, tq::arg("t", static_cast<const char *>(nullptr)));
    EXPECT_EQ(result, nullptr);
    EXPECT_EQ(last_event(), "main f t=NULL -> NULL");
}

TEST_F(Trace, a_value_stored_by_the_call_is_not_shown_when_the_call_failed)
{
    const std::uint16_t value = 9;
    tq::traced(
        "f", [] { return -1; }, tq::out("v", &value));
    EXPECT_EQ(last_event(), "main f -> -1");
}

TEST_F(Trace, the_result_survives_arguments_that_are_too_long)
{
    const std::string text(100'000, 'x');
    tq::traced(
        "f", [] { return 12; }, tq::arg("t", text.c_str()));
    EXPECT_TRUE(last_event().ends_with("xxx... -> 12"));
}

TEST_F(Trace, errno_of_the_call_is_kept)
{
    errno = 0;
    tq::traced("f", [] {
        errno = EDOM;
        return -1;
    });
    EXPECT_EQ(errno, EDOM);
}

TEST_F(Trace, lines_of_many_threads_never_mix)
{
    const std::size_t before = trace_files::lines().size();
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t)
        threads.emplace_back([] {
            for (int i = 0; i < 200; ++i)
                tq::traced(
                    "op", [] { return 0; }, tq::arg("text", "some text that makes the line long"));
        });
    for (auto &thread : threads)
        thread.join();
    const auto lines = trace_files::lines();
    ASSERT_EQ(lines.size(), before + 800);
    for (std::size_t i = before; i < lines.size(); ++i)
        EXPECT_TRUE(lines[i].ends_with("op text=\"some text that makes the line long\" -> 0")) << lines[i];
}

TEST_F(Faults, a_call_that_is_to_fail_is_not_made)
{
    write_faults("open_it ret=-1 errno=6\n");
    bool made = false;
    errno = 0;
    const int result = tq::traced("open_it", [&] {
        made = true;
        return 3;
    });
    EXPECT_EQ(result, -1);
    EXPECT_EQ(errno, ENXIO);
    EXPECT_FALSE(made);
    EXPECT_EQ(last_event(), "main open_it -> -1");
    EXPECT_EQ(call("close_it"), 0);
}

TEST_F(Faults, the_nth_call_fails_once_unless_a_count_is_given)
{
    write_faults("f nth=2 ret=-5\ng nth=2 count=2 ret=-6\nh nth=2 count=0 ret=-7\n");
    EXPECT_EQ(call("f"), 0);
    EXPECT_EQ(call("f"), -5);
    EXPECT_EQ(call("f"), 0);
    for (int expected : {0, -6, -6, 0})
        EXPECT_EQ(call("g"), expected);
    for (int expected : {0, -7, -7, -7})
        EXPECT_EQ(call("h"), expected);
}

TEST_F(Faults, a_positive_result_can_be_forced)
{
    write_faults("setter ret=5");
    EXPECT_EQ(call("setter"), 5);
}

TEST_F(Faults, only_the_named_thread_fails_and_only_its_calls_count)
{
    write_faults("f thread=usb_monitor nth=2 ret=-1\n");
    EXPECT_EQ(call("f"), 0);
    EXPECT_EQ(call("f"), 0);
    std::thread([] {
        prctl(PR_SET_NAME, "usb_monitor");
        EXPECT_EQ(call("f"), 0);
        EXPECT_EQ(call("f"), -1);
    }).join();
}

TEST_F(Faults, a_line_that_stays_keeps_its_count_and_a_new_line_begins_anew)
{
    write_faults("f nth=3 ret=-1\n");
    call("f");
    call("f");
    write_faults("# comment\nother ret=-1\nf nth=3 ret=-1\n");
    EXPECT_EQ(call("f"), -1);
    write_faults("f nth=2 ret=-1\n");
    EXPECT_EQ(call("f"), 0);
    EXPECT_EQ(call("f"), -1);
}

TEST_F(Faults, a_line_that_comes_to_stand_twice_begins_anew_the_second_time)
{
    write_faults("f nth=2 ret=-1\n");
    EXPECT_EQ(call("f"), 0);
    write_faults("f nth=2 ret=-1\nf nth=2 ret=-1\n");
    EXPECT_EQ(call("f"), -1) << "the first line's second call";
    EXPECT_EQ(call("f"), -1) << "the second line's";
    EXPECT_EQ(call("f"), 0);
}

TEST_F(Faults, a_pointer_function_returns_null)
{
    write_faults("get ret=0 errno=71\n");
    int object = 0;
    errno = 0;
    EXPECT_EQ(tq::traced("get", [&] { return &object; }), nullptr);
    EXPECT_EQ(errno, EPROTO);
}

TEST_F(Faults, a_delay_without_a_result_only_delays)
{
    write_faults("f delay_ms=30\n");
    const auto begin = std::chrono::steady_clock::now();
    EXPECT_EQ(call("f", 4), 4);
    EXPECT_GE(std::chrono::steady_clock::now() - begin, std::chrono::milliseconds(30));
}

TEST_F(Faults, of_two_lines_the_longer_delay_and_the_first_result_hold)
{
    write_faults("f delay_ms=30 ret=-1\nf delay_ms=1 ret=-2\n");
    const auto begin = std::chrono::steady_clock::now();
    EXPECT_EQ(call("f"), -1);
    EXPECT_GE(std::chrono::steady_clock::now() - begin, std::chrono::milliseconds(30));
}

TEST_F(Faults, lines_that_cannot_be_read_are_passed_over)
{
    write_faults("f ret=abc\nf nth\n\n   \nf colour=red ret=-1\ng ret=-2");
    EXPECT_EQ(call("f"), 0);
    EXPECT_EQ(call("g"), -2);
}
