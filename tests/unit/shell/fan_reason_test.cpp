// SPDX-License-Identifier: GPL-2.0-or-later
#include "shell/fan_reason.hpp"

#include <gtest/gtest.h>

using diagsh::fan_reason;
using diagsh::FanState;

TEST(FanReason, running_above_the_limit)
{
    EXPECT_EQ(
        fan_reason({52.5, 35, "auto", "auto", "open", "medium"}),
        "They run: the board has 52.5 degrees, they open at 35.0 degrees (fan temperature).\n"
        "Their speed is medium by the temperature: medium above 50.0 degrees, high above 65.0 degrees.\n");
}

TEST(FanReason, running_below_the_limit_after_a_peak)
{
    EXPECT_EQ(fan_reason({33.0, 35, "auto", "auto", "open", "low"})
                  .find("They run: the board has 33.0 degrees, they open at 35.0 degrees (fan temperature). "
                        "It was warmer "
                        "before, and is cooled to 7.9 degrees below that (fan temperature forgets it),\nor "
                        "the monitor has not looked since the start.\n"),
              0U);
}

TEST(FanReason, what_was_asked_for_goes_before_the_temperature)
{
    EXPECT_EQ(fan_reason({25, 35, "close", "high", "close", "high"}),
              "They stand still because that was asked for (fan mode close).\n"
              "Their speed is high because that was asked for (fan speed high); fan speed auto ends that.\n");
}

TEST(FanReason, a_monitor_that_is_off_is_the_reason_whatever_the_board_has)
{
    FanState fans{60, 35, "auto", "auto", "close", "low", false};
    EXPECT_EQ(
        fan_reason(fans),
        "They stand still although the board has 60.0 degrees, they open at 35.0 degrees (fan "
        "temperature): the fan monitor is off (fan monitor in diagnose switches it on).\n"
        "Their speed is low, by the temperature it would be medium (medium above 50.0 degrees, high above "
        "65.0 degrees): the fan monitor is off (fan monitor in diagnose switches it on).\n");
    fans = {25, 35, "auto", "auto", "open", "low", false};
    EXPECT_EQ(
        fan_reason(fans).find(
            "They run although the board has 25.0 degrees, they open at 35.0 degrees (fan temperature): the "
            "fan monitor is off"),
        0U);
    fans = {25, 35, "open", "auto", "close", "low", false};
    EXPECT_EQ(fan_reason(fans).find(
                  "They stand still although fan mode open was asked for: the fan monitor is off"),
              0U);
}

TEST(FanReason, a_change_waits_for_the_next_look)
{
    EXPECT_EQ(
        fan_reason({36, 35, "auto", "auto", "close", "low"})
            .find("They stand still although the board has 36.0 degrees, they open at 35.0 degrees (fan "
                  "temperature): the monitor has not looked since, which takes five seconds.\n"),
        0U);
    EXPECT_EQ(fan_reason({25, 35, "open", "high", "close", "high"})
                  .find("They stand still although fan mode open was asked for: the monitor has not looked"),
              0U);
}
