// SPDX-License-Identifier: GPL-2.0-or-later
#include "shell/alarm_actions.hpp"

#include <gtest/gtest.h>

#include <string>

using diagsh::count_enabled;

namespace {

// Rows of each width that a type has: the longest ones move what stands behind them.
const std::string table = "id   name                      description                    level      type     "
                          "  class    print    record   "
                          "trap     remote  \r\n"
                          "0    fan                       Fan state change               major      device   "
                          "  alarm    enable   enable   "
                          "disable  enable  \r\n"
                          "1    download-file-failed      File download failed           major      system   "
                          "  alarm    enable   enable   "
                          "enable   disable \r\n"
                          "6    pon-deregister            PON deregistered               major      "
                          "communication alarm    enable   enable   "
                          "enable   disable \r\n"
                          "102  temp-high                 Board temperature high         major      "
                          "environment alarm    disable  disable  "
                          "enable   enable  \r\n";

} // namespace

TEST(AlarmActions, counts_rows_of_every_width)
{
    EXPECT_EQ(count_enabled(table, "print"), 3U);
    EXPECT_EQ(count_enabled(table, "record"), 3U);
    EXPECT_EQ(count_enabled(table, "trap"), 3U);
    EXPECT_EQ(count_enabled(table, "remote"), 2U);
}

TEST(AlarmActions, a_row_without_a_level_counts_too)
{
    EXPECT_EQ(count_enabled("id name level type class print record trap remote\n"
                            "7 pon-los  communication alarm enable enable enable disable\n",
                            "trap"),
              1U);
}

TEST(AlarmActions, what_is_no_table_has_none)
{
    EXPECT_EQ(count_enabled("", "trap"), 0U);
    EXPECT_EQ(count_enabled("fan enable enable enable enable\n", "trap"), 0U);
    EXPECT_EQ(count_enabled(table, "flash"), 0U);
}
