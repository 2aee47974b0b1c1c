// SPDX-License-Identifier: GPL-2.0-or-later
#include "shell/layout.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using diagsh::columns_in;
using diagsh::columns_of;
using diagsh::fold;
using diagsh::fold_line;
using diagsh::label_columns;
using testing::ElementsAre;

TEST(Columns, counts_characters_and_not_bytes)
{
    EXPECT_EQ(columns_of("1310 nm \xE2\x80\x93 SC"), 12U); // an en dash
    EXPECT_EQ(columns_of("\xFF\xFE"), 2U);
    EXPECT_EQ(columns_in("a\xE2\x80\x93"
                         "bc",
                         1, 2),
              "\xE2\x80\x93"
              "b");
    EXPECT_EQ(columns_in("abc", 5, 2), "");
}

TEST(FoldLine, breaks_at_blanks_and_indents_what_follows)
{
    EXPECT_THAT(fold_line("one two three four", 9, 2), ElementsAre("one two", "  three", "  four"));
}

TEST(FoldLine, breaks_a_word_that_is_too_long)
{
    EXPECT_THAT(fold_line("abcdefghij", 4, 0), ElementsAre("abcd", "efgh", "ij"));
}

TEST(FoldLine, leaves_what_fits)
{
    EXPECT_THAT(fold_line("four", 4, 2), ElementsAre("four"));
    EXPECT_THAT(fold_line("", 4, 2), ElementsAre(""));
}

TEST(Fold, table_is_shown_in_parts_with_its_first_column_again)
{
    EXPECT_THAT(fold({"Port      Temperature  Voltage    Current",
                      "--------  -----------  ---------  -------", "GPON 0/1  38.02        3.31       14.59"},
                     33),
                ElementsAre("Port      Temperature  Voltage", "--------  -----------  ---------",
                            "GPON 0/1  38.02        3.31", "Port      Current", "--------  -------",
                            "GPON 0/1  14.59"));
}

TEST(Fold, table_without_a_common_gap_is_folded_by_lines)
{
    EXPECT_THAT(fold({"aaaa bbbb cccc", "dd eeee ffff g"}, 10),
                ElementsAre("aaaa bbbb", "    cccc", "dd eeee", "    ffff g"));
}

TEST(Fold, blocks_between_blank_lines_are_laid_out_alone)
{
    EXPECT_THAT(fold({"short", "", "one long line of text"}, 10),
                ElementsAre("short", "", "one long", "    line", "    of", "    text"));
}

TEST(LabelColumns, are_those_of_the_first_column_of_each_table_that_is_too_wide)
{
    const std::vector<std::string> lines = {
        "a legend that says what is in the table below it, in more than 33 columns",
        "",
        "Port      Temperature  Voltage    Current",
        "GPON 0/1  38.02        3.31       14.59",
        "",
        "short  one",
        "1      2"};
    EXPECT_THAT(label_columns(lines, 33), ElementsAre(0, 0, 10, 10, 0, 0, 0));
    EXPECT_THAT(label_columns(lines, 20),
                ElementsAre(0, 0, 0, 0, 0, 0, 0)); // it would be half of what is shown
    EXPECT_THAT(label_columns({}, 20), ElementsAre());
}
