// SPDX-License-Identifier: GPL-2.0-or-later
// Ids of alarms cut to their width.
#include "diagd/alarm_log/catalogue.hpp"

#include <gtest/gtest.h>

using namespace diagd;

static int looked_up;

extern "C" int get_alarm_id_by_name(const char *)
{
    return looked_up;
}

TEST(AlarmId, is_what_the_low_16_bits_say)
{
    EXPECT_EQ(alarm_id_in(0), 0);
    EXPECT_EQ(alarm_id_in(105), 105);
    EXPECT_EQ(alarm_id_in(0x10005), 5);
    EXPECT_EQ(alarm_id_in(0x10000), 0);
    EXPECT_EQ(alarm_id_in(0x7FFF0069), 105);
    for (const int none : {106, -1, -2, 255, 256, 261, 0xFFFF, 0x1006A})
        EXPECT_EQ(alarm_id_in(none), std::nullopt) << none;
}

TEST(AlarmId, of_the_name_form_is_what_the_low_8_bits_say)
{
    EXPECT_EQ(short_alarm_id_in(5), 5);
    EXPECT_EQ(short_alarm_id_in(261), 5);
    EXPECT_EQ(short_alarm_id_in(0x10005), 5);
    EXPECT_EQ(short_alarm_id_in(256 + 105), 105);
    for (const int none : {106, -1, 255, 256 + 106, 0x1FF})
        EXPECT_EQ(short_alarm_id_in(none), std::nullopt) << none;
}

TEST(AlarmId, typed_as_a_number_is_decimal_and_cut_to_16_bits)
{
    EXPECT_EQ(typed_alarm_id("0"), 0);
    EXPECT_EQ(typed_alarm_id("105"), 105);
    EXPECT_EQ(typed_alarm_id("010"), 10);
    EXPECT_EQ(typed_alarm_id("65536"), 0);
    EXPECT_EQ(typed_alarm_id("65641"), 105);
    for (const char *none : {"106", "65535", "65642", "4294967295"})
        EXPECT_EQ(typed_alarm_id(none), std::nullopt) << none;
}

TEST(AlarmId, of_an_unknown_name_is_said_on_standard_error)
{
    looked_up = -1;
    testing::internal::CaptureStderr();
    EXPECT_EQ(find_alarm("no-such"), std::nullopt);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "wrong alarm id form no-such\n");

    looked_up = 0x10005;
    testing::internal::CaptureStderr();
    EXPECT_EQ(find_alarm("port-loopback"), 5);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}
