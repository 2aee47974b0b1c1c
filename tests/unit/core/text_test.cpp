// SPDX-License-Identifier: GPL-2.0-or-later
#include "diagd/core/text.hpp"

#include <gtest/gtest.h>

#include <string>

TEST(FieldText, ends_at_the_terminator_or_at_the_end_of_the_field)
{
    const char terminated[8] = {'a', 'b', '\0', 'c', 'd', 'e', 'f', 'g'};
    const char full[4] = {'f', 'u', 'l', 'l'};
    EXPECT_EQ(diagd::field_text(terminated), "ab");
    EXPECT_EQ(diagd::field_text(full), "full");
}

TEST(FillField, uses_the_whole_field_and_clears_what_is_left)
{
    char field[8];
    diagd::fill_field(field, "critical");
    EXPECT_EQ((std::string{field, 8}), "critical");
    diagd::fill_field(field, "info");
    EXPECT_EQ((std::string{field, 8}), (std::string{"info\0\0\0\0", 8}));
}

TEST(CopyText, always_terminates)
{
    char buffer[5] = {'x', 'x', 'x', 'x', 'x'};
    diagd::copy_text(buffer, "warning");
    EXPECT_STREQ(buffer, "warn");
    diagd::copy_text(buffer, "");
    EXPECT_STREQ(buffer, "");
}
