// SPDX-License-Identifier: GPL-2.0-or-later
#include "diagd/system_cli/clock_parser.hpp"

#include <gtest/gtest.h>

using namespace diagd;

namespace {

std::string running(std::string_view uptime)
{
    const auto time = parse_uptime(uptime);
    return time ? running_time_text(*time) : "nothing";
}

} // namespace

TEST(ClockParser, the_running_time_is_what_stands_before_the_first_point)
{
    EXPECT_EQ(running("93784.55 1.0\n"), "1 Days 2 Hours 3 Minutes 4 Seconds");
    EXPECT_EQ(running("0.99 0.00\n"), "0 Days 0 Hours 0 Minutes 0 Seconds");
    EXPECT_EQ(running("59.00 1.0"), "0 Days 0 Hours 0 Minutes 59 Seconds");
    EXPECT_EQ(running("86399"), "0 Days 23 Hours 59 Minutes 59 Seconds");
    EXPECT_EQ(running("86400.0"), "1 Days 0 Hours 0 Minutes 0 Seconds");
    EXPECT_EQ(running("31622400.0"), "366 Days 0 Hours 0 Minutes 0 Seconds");
}

TEST(ClockParser, the_parts_are_told_apart)
{
    const auto time = parse_uptime("93784.55 1.0\n");
    ASSERT_TRUE(time);
    EXPECT_EQ(time->seconds, 4u);
    EXPECT_EQ(time->minutes, 3u);
    EXPECT_EQ(time->hours, 2u);
    EXPECT_EQ(time->days, 1u);
}

TEST(ClockParser, what_is_no_number_is_no_running_time)
{
    for (const char *text : {"", "\n", ".5", "up 5 days", "-5.0", "99999999999999999999999.0"})
        EXPECT_EQ(running(text), "nothing") << text;
}

TEST(ClockParser, a_calendar_time_has_its_line_feed)
{
    std::tm time{};
    time.tm_year = 124;
    time.tm_mon = 2;
    time.tm_mday = 5;
    time.tm_wday = 2;
    time.tm_hour = 7;
    time.tm_min = 8;
    time.tm_sec = 9;
    EXPECT_EQ(calendar_text(time), "Tue Mar  5 07:08:09 2024\n");
}

TEST(ClockParser, a_year_that_has_no_place_gives_no_text)
{
    std::tm time{};
    time.tm_year = 2'000'000'000;
    EXPECT_EQ(calendar_text(time), "");
}

TEST(ClockParser, the_date_is_padded_and_the_time_is_not)
{
    EXPECT_EQ(set_clock_line({2024, 3, 5, 7, 8, 9}), "date -s '20240305 7:8:9' >> /dev/null");
    EXPECT_EQ(set_clock_line({2099, 12, 31, 23, 59, 59}), "date -s '20991231 23:59:59' >> /dev/null");
    EXPECT_EQ(set_clock_line({2000, 1, 1, 0, 0, 0}), "date -s '20000101 0:0:0' >> /dev/null");
}
