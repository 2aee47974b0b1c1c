// SPDX-License-Identifier: GPL-2.0-or-later
#include "diagd/alarm_log/records/debug_message.hpp"

#include <gtest/gtest.h>

using diagd::decode_debug_message;

TEST(DebugMessage, an_underscore_is_a_blank_and_an_escaped_one_an_underscore)
{
    EXPECT_EQ(decode_debug_message(R"(port\_down_now)"), "port_down now");
    EXPECT_EQ(decode_debug_message(R"(\__\_)"), "_ _");
}

TEST(DebugMessage, other_backslashes_are_themselves)
{
    EXPECT_EQ(decode_debug_message(R"(a\b\\_c\)"), R"(a\b\_c\)");
}

TEST(DebugMessage, conversions_are_text)
{
    EXPECT_EQ(decode_debug_message("%s%n"), "%s%n");
}

TEST(DebugMessage, is_cut_to_319_characters_after_decoding)
{
    EXPECT_EQ(decode_debug_message(std::string(400, 'x')), std::string(319, 'x'));
    std::string escaped;
    for (int i = 0; i < 319; ++i)
        escaped += R"(\_)";
    EXPECT_EQ(decode_debug_message(escaped), std::string(319, '_'));
}

TEST(DebugMessage, empty_stays_empty)
{
    EXPECT_EQ(decode_debug_message(""), "");
}
