// SPDX-License-Identifier: GPL-2.0-or-later
// Thresholds from the database's text and from an operator's words.
#include "diagd/alarm_log/thresholds/threshold_policy.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <random>
#include <string>

using namespace diagd;

namespace {

const std::string root = "<alarm-log xmlns=\"urn:norvale:yang:olt-alarm-log\">\n";

std::string element(const std::string &name, const std::string &alarm, const std::string &clear)
{
    return "    <" + name + ">\n      <alarm-threshold>" + alarm +
           "</alarm-threshold>\n      <clear-threshold>" + clear + "</clear-threshold>\n    </" + name +
           ">\n";
}

std::string document(const std::string &content)
{
    return root + "  <threshold>\n" + content + "  </threshold>\n</alarm-log>\n";
}

void expect(const BoardThresholds &found, std::array<float, 8> wanted)
{
    for (std::size_t i = 0; i < found.size(); ++i) {
        EXPECT_EQ(found[i].alarm, wanted[2 * i]) << i;
        EXPECT_EQ(found[i].clear, wanted[2 * i + 1]) << i;
    }
}

} // namespace

TEST(ThresholdXml, every_element_has_its_pair)
{
    expect(parse_board_thresholds(
               document(element("temp-high", "70", "65") + element("temp-low", "-5.5", "+1") +
                        element("cpu-usage-high", "90", "80.25") + element("mem-usage-high", ".5", "0"))),
           {70.0F, 65.0F, -5.5F, 1.0F, 90.0F, 80.25F, 0.5F, 0.0F});
}

TEST(ThresholdXml, elements_may_come_in_any_order)
{
    expect(
        parse_board_thresholds(document(element("mem-usage-high", "7", "6") + element("temp-low", "1", "2"))),
        {0, 0, 1, 2, 0, 0, 7, 6});
}

TEST(ThresholdXml, what_is_missing_is_zero)
{
    expect(parse_board_thresholds(""), {});
    expect(parse_board_thresholds(document("")), {});
    expect(parse_board_thresholds(document("    <temp-high>\n      <clear-threshold>65</clear-threshold>\n")),
           {0, 65, 0, 0, 0, 0, 0, 0});
}

TEST(ThresholdXml, an_empty_root_says_nothing_and_ends_the_text)
{
    const std::string empty = "<alarm-log xmlns=\"urn:norvale:yang:olt-alarm-log\"/>\n";
    expect(parse_board_thresholds(empty), {});
    expect(parse_board_thresholds(empty + document(element("temp-high", "70", "65"))), {});
}

TEST(ThresholdXml, nothing_counts_behind_the_end_of_the_thresholds)
{
    expect(parse_board_thresholds(document(element("temp-high", "70", "65")) +
                                  element("temp-high", "1", "2") + element("temp-low", "3", "4")),
           {70, 65, 0, 0, 0, 0, 0, 0});
}

TEST(ThresholdXml, a_threshold_before_any_name_is_that_of_temp_high)
{
    expect(parse_board_thresholds(
               "<alarm-threshold>70</alarm-threshold>\n<clear-threshold>65</clear-threshold>\n"),
           {70, 65, 0, 0, 0, 0, 0, 0});
}

TEST(ThresholdXml, empty_elements_and_blank_lines_do_not_derail_it)
{
    expect(parse_board_thresholds("\n\n" + root + "\n  <threshold>\n\n" + element("temp-high", "70", "65") +
                                  "\n" + element("temp-high", "", "61") + "\n\n" +
                                  element("cpu-usage-high", "9", "8")),
           {0, 61, 0, 0, 9, 8, 0, 0});
}

TEST(ThresholdXml, the_last_line_may_lack_its_end)
{
    expect(parse_board_thresholds("<cpu-usage-high>\n<alarm-threshold>42</alarm-threshold>"),
           {0, 0, 0, 0, 42, 0, 0, 0});
}

TEST(ThresholdXml, only_the_number_behind_the_first_tag_of_a_line_counts)
{
    expect(parse_board_thresholds("<temp-low><alarm-threshold>5</alarm-threshold>\n"), {});
    expect(parse_board_thresholds("x<alarm-threshold>5x</alarm-threshold>\n"), {5, 0, 0, 0, 0, 0, 0, 0});
    expect(parse_board_thresholds("<alarm-threshold>many</alarm-threshold>\n"), {});
}

TEST(ThresholdXml, any_text_whatever_is_read_to_its_end)
{
    const std::string pieces[] = {"<temp-high>",
                                  "<alarm-threshold>",
                                  "<clear-threshold>",
                                  "</threshold>",
                                  "\n",
                                  "<",
                                  ">",
                                  "1",
                                  "-",
                                  ".",
                                  "e",
                                  "nan",
                                  std::string(1, '\0'),
                                  "\xff",
                                  " "};
    std::mt19937 random{7};
    std::uniform_int_distribution<std::size_t> piece{0, std::size(pieces) - 1};
    for (int i = 0; i < 20000; ++i) {
        std::string text;
        for (int length = static_cast<int>(random() % 12); length > 0; --length)
            text += pieces[piece(random)];
        EXPECT_FALSE(std::isinf(parse_board_thresholds(text)[0].alarm)) << text;
    }
}

TEST(ThresholdWord, is_made_of_digits_one_point_one_minus_and_one_plus)
{
    for (const char *const word :
         {"", "0", "70", "1.5", "-12.5", "+3", "+-1", "-+1", "-", "+", ".", "1-", "1.-+", "5.", ".5", "007"})
        EXPECT_TRUE(is_threshold_word(word)) << word;
}

TEST(ThresholdWord, anything_else_is_wrong)
{
    for (const char *const word :
         {"1.2.3", "12a", "--1", "+1+", "1e3", "0x10", "nan", "inf", " 1", "1,5", "-1-", "..", "1\n", "\xb2"})
        EXPECT_FALSE(is_threshold_word(word)) << word;
}

TEST(ThresholdValue, is_as_much_of_the_word_as_is_a_number)
{
    EXPECT_EQ(threshold_value("-12.5"), -12.5F);
    EXPECT_EQ(threshold_value("+3"), 3.0F);
    EXPECT_EQ(threshold_value("5."), 5.0F);
    EXPECT_EQ(threshold_value("1-2"), 1.0F);
    for (const char *const word : {"", "+-1", "-+1", "-", "+", "."})
        EXPECT_EQ(threshold_value(word), 0.0F) << word;
}

TEST(ThresholdValue, is_a_float)
{
    EXPECT_EQ(threshold_value("3.1"), 3.1F);
    EXPECT_EQ(threshold_value("16777217"), 16777216.0F);
    EXPECT_TRUE(std::isinf(threshold_value(std::string(40, '9').c_str())));
}

TEST(Tenths, become_degrees)
{
    EXPECT_EQ(value_from_tenths(250), 25.0F);
    EXPECT_EQ(value_from_tenths(649), threshold_value("64.9"));
    EXPECT_EQ(value_from_tenths(0), 0.0F);
    EXPECT_EQ(value_from_tenths(-25), -2.5F);
    EXPECT_EQ(value_from_tenths(-10), -1.0F);
    EXPECT_EQ(value_from_tenths(-1280), -128.0F);
}

TEST(Tenths, lose_their_sign_between_zero_and_one_degree)
{
    EXPECT_EQ(value_from_tenths(-5), 0.5F);
    EXPECT_EQ(value_from_tenths(-1), 0.1F);
    EXPECT_EQ(value_from_tenths(-9), 0.9F);
    EXPECT_EQ(value_from_tenths(5), 0.5F);
}
