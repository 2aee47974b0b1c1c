// SPDX-License-Identifier: GPL-2.0-or-later
#include "diagd/board/slot_port.hpp"

#include <gtest/gtest.h>

#include <climits>

TEST(SlotPort, reads_slot_and_port)
{
    const diagd::SlotPort position = diagd::parse_slot_port("0/3");
    EXPECT_EQ(position.slot, 0);
    EXPECT_EQ(position.port, 3);
    EXPECT_EQ(diagd::parse_slot_port("12/34").slot, 12);
}

TEST(SlotPort, a_number_that_does_not_fit_names_no_port)
{
    EXPECT_EQ(diagd::parse_slot_port("0/99999999999999999999").port, INT_MAX);
    EXPECT_EQ(diagd::parse_slot_port("99999999999/1").slot, INT_MAX);
}

TEST(SlotPort, other_text_leaves_zeroes)
{
    for (const char *text : {"", "/", "x/y", "gpon"}) {
        EXPECT_EQ(diagd::parse_slot_port(text).slot, 0) << text;
        EXPECT_EQ(diagd::parse_slot_port(text).port, 0) << text;
    }
}
