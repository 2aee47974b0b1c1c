// SPDX-License-Identifier: GPL-2.0-or-later
// Vendor texts of module memory, made fit for JSON.
#include "diagd/transceiver/decode/vendor_text.hpp"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

using namespace diagd;

namespace {

constexpr std::string_view replacement = "\xEF\xBF\xBD";

std::string text_of(std::string_view bytes)
{
    const std::vector<std::uint8_t> field(bytes.begin(), bytes.end());
    return vendor_text(field);
}

TEST(VendorText, keeps_the_padding)
{
    EXPECT_EQ(text_of("ACME OPTICS     "), "ACME OPTICS     ");
}

TEST(VendorText, ends_at_the_first_nul)
{
    EXPECT_EQ(text_of(std::string_view("AB\0CD", 5)), "AB");
    EXPECT_EQ(text_of(std::string_view("\0\0", 2)), "");
    EXPECT_EQ(text_of(""), "");
}

TEST(VendorText, keeps_control_characters_for_the_writer_to_escape)
{
    EXPECT_EQ(text_of("A\x01\n\x7F\"\\"), "A\x01\n\x7F\"\\");
}

TEST(VendorText, keeps_well_formed_utf8)
{
    EXPECT_EQ(text_of("\xC3\xA9 \xE2\x82\xAC \xF0\x9F\x98\x80"), "\xC3\xA9 \xE2\x82\xAC \xF0\x9F\x98\x80");
}

TEST(VendorText, replaces_each_byte_that_is_not_utf8)
{
    const std::string r(replacement);
    EXPECT_EQ(text_of("\xFF\xFF"), r + r); // erased memory
    EXPECT_EQ(text_of("\x80"
                      "A"),
              r + "A");                                    // continuation without a lead
    EXPECT_EQ(text_of("\xC0\x80"), r + r);                 // overlong NUL
    EXPECT_EQ(text_of("\xE0\x80\x80"), r + r + r);         // overlong
    EXPECT_EQ(text_of("\xED\xA0\x80"), r + r + r);         // surrogate
    EXPECT_EQ(text_of("\xF4\x90\x80\x80"), r + r + r + r); // beyond U+10FFFF
    EXPECT_EQ(text_of("\xF5\x80"), r + r);
    EXPECT_EQ(text_of("A\xE2\x82"), "A" + r + r); // cut by the end of the field
    EXPECT_EQ(text_of("\xC3"
                      "A"),
              r + "A");
}

} // namespace
