// SPDX-License-Identifier: GPL-2.0-or-later
#include "shell/fan_reason.hpp"

#include <gtest/gtest.h>

using diagsh::fan_reason;
using diagsh::FanState;

TEST(FanReason, they_run_from_a_little_below_the_number_that_is_set)
{
    const std::string rule =
        "they run at 27.1 degrees and above (fan temperature is 35.0 degrees, less 7.9).\n";
    EXPECT_EQ(fan_reason({52.5, 35, "auto", "auto", "open", "medium"}),
              "They are told to run: the board has 52.5 degrees, " + rule +
                  "Their speed is medium by the temperature: medium above 50.0 degrees, high above 65.0 "
                  "degrees.\n");
    EXPECT_EQ(fan_reason({27.1, 35, "auto", "low", "open", "low"})
                  .find("They are told to run: the board has 27.1 degrees, " + rule),
              0U);
    EXPECT_EQ(fan_reason({27.0, 35, "auto", "low", "close", "low"})
                  .find("They are told to stand still: the board has 27.0 degrees, " + rule),
              0U);
}

TEST(FanReason, a_number_to_be_silent_up_to_sixty)
{
    EXPECT_EQ(fan_reason({60.0, 68, "auto", "low", "close", "low"})
                  .find("They are told to stand still: the board has 60.0 degrees, they run at 60.1 degrees "
                        "and above"),
              0U);
    EXPECT_EQ(
        fan_reason({53.0, 60, "auto", "low", "open", "low"})
            .find("They are told to run: the board has 53.0 degrees, they run at 52.1 degrees and above"),
        0U);
}

TEST(FanReason, after_heat_they_stop_earlier)
{
    const std::string line = fan_reason({30.0, 35, "auto", "low", "close", "low"});
    EXPECT_EQ(
        line.find(
            "They are told to stand still although the board has 30.0 degrees, they run at 27.1 degrees "
            "and above (fan temperature is 35.0 degrees, less 7.9): it was hotter, which makes them "
            "stop earlier, at 35.0 degrees at most (fan temperature forgets it),\n"
            "or the monitor has not looked since, which takes five seconds.\n"),
        0U);
}

TEST(FanReason, what_was_asked_for_goes_before_the_temperature)
{
    EXPECT_EQ(fan_reason({25, 35, "close", "high", "close", "high"}),
              "They are told to stand still because that was asked for (fan mode close).\n"
              "Their speed is high because that was asked for (fan speed high); fan speed auto ends that.\n");
}

TEST(FanReason, a_monitor_that_is_off_is_the_reason_whatever_the_board_has)
{
    FanState fans{60, 35, "auto", "auto", "close", "low", false};
    EXPECT_EQ(
        fan_reason(fans),
        "They are told to stand still although the board has 60.0 degrees, they run at 27.1 degrees and "
        "above (fan "
        "temperature is 35.0 degrees, less 7.9): the fan monitor is off (fan monitor in diagnose switches it "
        "on).\n"
        "Their speed is low, by the temperature it would be medium (medium above 50.0 degrees, high above "
        "65.0 degrees): the fan monitor is off (fan monitor in diagnose switches it on).\n");
    fans = {25, 35, "auto", "auto", "open", "low", false};
    EXPECT_EQ(fan_reason(fans).find(
                  "They are told to run although the board has 25.0 degrees, they run at 27.1 degrees "
                  "and above (fan temperature is 35.0 degrees, less 7.9): the fan monitor is off"),
              0U);
    fans = {25, 35, "open", "auto", "close", "low", false};
    EXPECT_EQ(
        fan_reason(fans).find(
            "They are told to stand still although fan mode open was asked for: the fan monitor is off"),
        0U);
}

TEST(FanReason, a_change_waits_for_the_next_look)
{
    EXPECT_EQ(
        fan_reason({36, 35, "auto", "auto", "close", "low"})
            .find(
                "They are told to stand still although the board has 36.0 degrees, they run at 27.1 degrees "
                "and "
                "above (fan temperature is 35.0 degrees, less 7.9): the monitor has not looked since, which "
                "takes five seconds.\n"),
        0U);
    EXPECT_EQ(fan_reason({25, 35, "open", "high", "close", "high"})
                  .find("They are told to stand still although fan mode open was asked for: the monitor has "
                        "not looked"),
              0U);
}
