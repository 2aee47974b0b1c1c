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
                        "the fan monitor "
                        "is off or has not looked since the start.\n"),
              0U);
}

TEST(FanReason, what_was_asked_for_goes_before_the_temperature)
{
    EXPECT_EQ(fan_reason({25, 35, "close", "high", "close", "high"}),
              "They are close because that was asked for (fan mode close).\n"
              "Their speed is high because that was asked for (fan speed high); fan speed auto ends that.\n");
}
