// SPDX-License-Identifier: GPL-2.0-or-later
// The fan settings and the texts of their codes.
#include "diagd/monitors/fan/fan.hpp"

#include <gtest/gtest.h>

TEST(FanSettings, begin_automatic_at_35_degrees_with_nothing_written)
{
    fan_mode_set(0);
    fan_temperature_set(60);
    fan_master.state = 1;
    fan_master.current_speed = 2;
    diagd::reset_fan_master();
    EXPECT_EQ(fan_master.mode, 2);
    EXPECT_EQ(fan_master.speed, 5);
    EXPECT_EQ(fan_master.state, -1);
    EXPECT_EQ(fan_master.current_speed, -1);
    EXPECT_EQ(fan_master.open_temperature, 350);
    EXPECT_EQ(fan_master.reference_temperature, 350);
}

TEST(FanSettings, a_temperature_sets_threshold_and_reference_in_tenths)
{
    for (unsigned degrees : {20U, 35U, 40U, 80U}) {
        fan_master.reference_temperature = 777;
        EXPECT_EQ(fan_temperature_set(degrees), 0);
        EXPECT_EQ(fan_temperature_get(), static_cast<int>(degrees) * 10);
        EXPECT_EQ(fan_master.reference_temperature, static_cast<int>(degrees) * 10);
    }
}

TEST(FanSettings, the_reference_is_lifted_unless_the_operator_was_faster)
{
    fan_temperature_set(35);
    diagd::lift_reference(350, 400);
    EXPECT_EQ(fan_master.reference_temperature, 400);
    fan_temperature_set(60); // after the monitor has looked at the reference of 40.0
    diagd::lift_reference(400, 460);
    EXPECT_EQ(fan_master.reference_temperature, 600);
    EXPECT_EQ(fan_master.open_temperature, 600);
}

TEST(FanSettings, a_mode_is_kept_as_given)
{
    for (int mode : {0, 1, 2, 7}) {
        EXPECT_EQ(fan_mode_set(mode), 0);
        EXPECT_EQ(fan_mode_get(), mode);
    }
}

TEST(FanSettings, a_mode_that_is_neither_close_nor_auto_reads_open)
{
    EXPECT_STREQ(fan_mode_str_get(0), "close");
    EXPECT_STREQ(fan_mode_str_get(1), "open");
    EXPECT_STREQ(fan_mode_str_get(2), "auto");
    for (int mode : {-1, 3, 5, 100})
        EXPECT_STREQ(fan_mode_str_get(mode), "open");
}

TEST(FanSettings, a_speed_that_has_no_text_of_its_own_reads_low)
{
    EXPECT_STREQ(fan_speed_str_get(0), "low");
    EXPECT_STREQ(fan_speed_str_get(1), "medium");
    EXPECT_STREQ(fan_speed_str_get(2), "high");
    EXPECT_STREQ(fan_speed_str_get(5), "auto");
    for (int speed : {-1, 3, 4, 6})
        EXPECT_STREQ(fan_speed_str_get(speed), "low");
}
