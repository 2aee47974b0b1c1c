// SPDX-License-Identifier: GPL-2.0-or-later
#include "shell/line_editor.hpp"

#include <gtest/gtest.h>

using diagsh::common_start;
using diagsh::in_columns;

TEST(InColumns, rows_hold_as_many_as_the_terminal)
{
    EXPECT_EQ(in_columns({"one", "three", "four"}, 12), "one    three\nfour\n");
    EXPECT_EQ(in_columns({"longer than this", "b"}, 5), "longer than this\nb\n");
    EXPECT_EQ(in_columns({}, 80), "");
}

TEST(CommonStart, is_what_all_begin_with)
{
    EXPECT_EQ(common_start({"pon-temp-high", "pon-temp-low", "pon-txpower-low"}), "pon-t");
    EXPECT_EQ(common_start({"fan"}), "fan");
    EXPECT_EQ(common_start({"a", "b"}), "");
    EXPECT_EQ(common_start({}), "");
}
