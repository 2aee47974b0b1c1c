// SPDX-License-Identifier: GPL-2.0-or-later
// Well-formed UTF-8, by the table of the Unicode standard (3-7).
#include "base/utf8.hpp"

#include <gtest/gtest.h>

#include <string>

using namespace std::string_view_literals;

TEST(Utf8, has_sequences_of_one_to_four_bytes_up_to_the_bounds_of_the_table)
{
    EXPECT_EQ(base::utf8_length("a\xC3"sv), 1u);
    EXPECT_EQ(base::utf8_length("\0"sv), 1u);
    EXPECT_EQ(base::utf8_length("\x7F"), 1u);
    for (const auto text : {"\xC2\x80", "\xDF\xBF"})
        EXPECT_EQ(base::utf8_length(text), 2u) << text;
    for (const auto text : {"\xE0\xA0\x80", "\xE2\x80\x93", "\xED\x9F\xBF", "\xEE\x80\x80", "\xEF\xBF\xBF"})
        EXPECT_EQ(base::utf8_length(text), 3u) << text;
    for (const auto text : {"\xF0\x90\x80\x80", "\xF4\x8F\xBF\xBF"})
        EXPECT_EQ(base::utf8_length(text), 4u) << text;
}

TEST(Utf8, has_no_overlong_forms_no_surrogates_and_nothing_beyond_its_end)
{
    for (const auto text :
         {"\xC0\xAF", "\xC1\xBF", "\xE0\x9F\xBF", "\xF0\x8F\xBF\xBF", "\xED\xA0\x80", "\xED\xBF\xBF",
          "\xF4\x90\x80\x80", "\xF5\x80\x80\x80", "\xFF", "\xFE", "\x80", "\xBF"})
        EXPECT_EQ(base::utf8_length(text), 0u) << text;
}

TEST(Utf8, needs_every_byte_of_a_sequence)
{
    for (const auto text :
         {"\xC3", "\xC3x", "\xE2\x80", "\xE2\x80x", "\xE2x\x93", "\xF0\x90\x80", "\xF0\x90\x80\xC0"})
        EXPECT_EQ(base::utf8_length(text), 0u) << text;
}

TEST(Utf8, tells_a_sequence_that_was_cut_from_one_that_is_wrong)
{
    for (const auto text : {"\xC3", "\xE2", "\xE2\x80", "\xF0\x90\x80"})
        EXPECT_TRUE(base::utf8_is_cut(text)) << text;
    for (const auto text : {"a", "\xC3\xA9", "\xC3x", "\xE0\x80", "\xED\xA0", "\x80", "\xF5"})
        EXPECT_FALSE(base::utf8_is_cut(text)) << text;
}
