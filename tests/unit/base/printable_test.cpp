// SPDX-License-Identifier: GPL-2.0-or-later
#include "base/printable.hpp"

#include <gtest/gtest.h>

using base::printable;
using base::printable_json;
using namespace std::string_literals;
using namespace std::string_view_literals;

TEST(Printable, text_without_controls_stays_as_it_is)
{
    for (const char *text :
         {"", "fan 1 stopped", "a\tb", " ~", "M\xC3\xBCller", "\xE2\x82\xAC", "\xF0\x9F\x94\x94"})
        EXPECT_EQ(printable(text), text);
}

TEST(Printable, every_control_of_c0_but_the_tab_is_a_question_mark)
{
    for (int code = 0; code < 0x20; ++code) {
        const std::string text = "a"s + static_cast<char>(code) + "b";
        EXPECT_EQ(printable(text), code == '\t' ? "a\tb" : "a?b") << code;
    }
    EXPECT_EQ(printable("a\x7F"), "a?");
}

TEST(Printable, a_control_of_c1_in_utf8_is_one_question_mark)
{
    for (int code = 0x80; code < 0xA0; ++code)
        EXPECT_EQ(printable("x\xC2"s + static_cast<char>(code) + "y"), "x?y") << code;
    EXPECT_EQ(printable("\xC2\xA0\xC3\x9B"), "\xC2\xA0\xC3\x9B"); // no-break space, U with circumflex
}

TEST(Printable, bytes_inside_a_character_are_not_looked_at)
{
    EXPECT_EQ(printable("\xE2\x9B\x94\xF0\x9F\x94\x9B"), "\xE2\x9B\x94\xF0\x9F\x94\x9B");
}

TEST(Printable, what_is_no_utf8_goes_byte_by_byte)
{
    EXPECT_EQ(printable("x\x9B[31m"), "x?[31m");
    EXPECT_EQ(printable("x\x80\x9F\xA0\xE9\xFE"), "x??\xA0\xE9\xFE");
    EXPECT_EQ(printable("x\xFF\xFB\x01"), "x?\xFB?");
    EXPECT_EQ(printable("\xE2\x9B"), "\xE2?"); // cut off
    EXPECT_EQ(printable("\xC2"), "\xC2");
    EXPECT_EQ(printable("\xED\xA0\x80"), "\xED\xA0?"); // a surrogate
}

TEST(Printable, a_text_may_hold_zero_bytes)
{
    EXPECT_EQ(printable("a\0b"sv), "a?b");
}

TEST(PrintableJson, a_document_without_controls_stays_as_it_is)
{
    const char *const document = "{\n  \"name\":\"M\xC3\xBCller\\u001b\\\\ \xE2\x82\xAC\",\n\t\"n\":1\n}";
    EXPECT_EQ(printable_json(document), document);
}

TEST(PrintableJson, del_and_the_controls_of_c1_are_escaped)
{
    EXPECT_EQ(printable_json("\"a\x7F\""), "\"a\\u007f\"");
    EXPECT_EQ(printable_json("\"\xC2\x80\xC2\x9B\xC2\x9F\""), "\"\\u0080\\u009b\\u009f\"");
    EXPECT_EQ(printable_json("\"\xC2\xA0\""), "\"\xC2\xA0\"");
}

TEST(PrintableJson, bytes_that_are_no_utf8_become_replacement_characters)
{
    EXPECT_EQ(printable_json("\"a\x9B\xFF\xC3\""), "\"a\xEF\xBF\xBD\xEF\xBF\xBD\xEF\xBF\xBD\"");
}
