// SPDX-License-Identifier: GPL-2.0-or-later
// The line that sums up a start.
#include "diagd/core/start_report.hpp"

#include "tests/unit/platform/log_target.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <string>

using testing::AllOf;
using testing::HasSubstr;
using testing::Not;

extern "C" const char *tq_strerror(int code)
{
    return code == -2 ? "not found" : "something else";
}

namespace {

// A process starts once: each of these tests has one of its own, which prints what was logged, "PRIORITY
// text".
template <typename Start>
std::string lines_of(Start start)
{
    int ends[2];
    if (pipe(ends) != 0)
        return "no pipe";
    if (const pid_t child = fork(); child == 0) {
        const LogTarget log;
        start();
        std::string text;
        for (const auto &[priority, line] : log.lines)
            text +=
                std::to_string(priority) + line.substr(line.find("] ") + 1) + "\n"; // libfrr's id before it
        const ssize_t written = write(ends[1], text.data(), text.size());
        _exit(written == static_cast<ssize_t>(text.size()) ? 0 : 1);
    }
    close(ends[1]); // the child's is the last
    std::string text(100000, '\0');
    std::size_t size = 0;
    for (ssize_t got; (got = read(ends[0], text.data() + size, text.size() - size)) > 0;)
        size += static_cast<std::size_t>(got);
    close(ends[0]);
    return text.substr(0, size);
}

TEST(StartReport, a_start_with_everything_is_a_notice)
{
    EXPECT_EQ(lines_of([] { diagd::report_start(); }),
              std::to_string(LOG_NOTICE) + " started, nothing is missing\n");
}

TEST(StartReport, all_that_is_missing_is_one_warning_in_the_order_of_the_start)
{
    EXPECT_EQ(lines_of([] {
                  diagd::goes_without_if_failed("board records", -2);
                  diagd::goes_without_if_failed("PON mode", 0);
                  diagd::goes_without("usb_monitor", "No such file or directory");
                  diagd::report_start();
              }),
              std::to_string(LOG_WARNING) + " started without board records (not found), usb_monitor (No "
                                            "such file or directory); see diagd(8), "
                                            "Starting without\n");
}

TEST(StartReport, what_comes_later_has_a_line_of_its_own)
{
    EXPECT_THAT(lines_of([] {
                    diagd::report_start();
                    diagd::goes_without("usb_monitor", "Permission denied");
                }),
                HasSubstr("\n" + std::to_string(LOG_WARNING) +
                          " goes on without usb_monitor (Permission denied); see "));
}

TEST(StartReport, a_list_that_is_too_long_says_that_something_was_left_out)
{
    const std::string lines = lines_of([] {
        const std::string reason(300, 'x');
        for (const char *what : {"one", "two", "three", "four", "five"})
            diagd::goes_without(what, reason.c_str());
        diagd::goes_without("six", "short");
        diagd::report_start();
    });
    EXPECT_THAT(lines,
                AllOf(HasSubstr(" without one (xxx"), HasSubstr("), three (xxx"), Not(HasSubstr("four"))));
    EXPECT_THAT(lines, HasSubstr("xxx) ...; see diagd(8)"));
    EXPECT_EQ(lines.find("..."), lines.rfind("..."));
}

} // namespace
