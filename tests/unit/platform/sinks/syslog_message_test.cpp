// SPDX-License-Identifier: GPL-2.0-or-later
// The exact text of syslog messages.
#include "platform/sinks/syslog_message.hpp"

#include "tests/unit/platform/sinks/sample_time.hpp"
#include "tq_api.h"

#include <cstring>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

using testing::EndsWith;
using testing::HasSubstr;
using testing::StartsWith;

namespace {

constexpr std::uint16_t fan = 0;
constexpr std::uint16_t power1 = 77;
constexpr const char *mark = "\xEF\xBB\xBF";

// 2026-11-21 11:12:13.000123, an hour east of Greenwich.
tq::Alarm alarm(std::uint16_t id, std::uint8_t level, const char *message)
{
    return {id, level, sample_time(3600), message, 123};
}

std::string text(const tq::Alarm &of)
{
    return tq::syslog_message(of, {"olt", "diagd", 4711});
}

// What follows the structured data.
std::string part(const char *message)
{
    const std::string whole = text(alarm(fan, 1, message));
    return whole.substr(whole.find("\"]") + 2);
}

} // namespace

TEST(SyslogMessage, carries_every_field_in_its_place)
{
    tq::Alarm one = alarm(fan, 4, "Open!");
    one.request.pon = 3;
    one.request.onu = 17;
    EXPECT_EQ(text(one), "<187>1 2026-11-21T11:12:13.000123+01:00 olt diagd 4711 fan "
                         "[alarm@32473 id=\"0\" name=\"fan\" class=\"alarm\" pon=\"3\" onu=\"17\"] Open!");
}

TEST(SyslogMessage, an_event_is_called_so)
{
    int event = 0;
    while (tq_alarm_log_info[event].class_ != 1)
        ++event;
    EXPECT_THAT(text(alarm(static_cast<std::uint16_t>(event), 1, "x")), HasSubstr(" class=\"event\" "));
}

TEST(SyslogMessage, levels_become_falling_severities_of_facility_local7)
{
    // 23 * 8 + severity
    const char *priorities[] = {"<191>1 ", "<190>1 ", "<189>1 ", "<188>1 ",
                                "<187>1 ", "<186>1 ", "<185>1 ", "<184>1 "};
    for (std::uint8_t level = 0; level < 8; ++level)
        EXPECT_THAT(text(alarm(fan, level, "x")), StartsWith(priorities[level]));
}

TEST(SyslogMessage, an_alarm_that_the_catalogue_does_not_have_has_no_name)
{
    EXPECT_EQ(text(alarm(512, 1, "by hand")), "<190>1 2026-11-21T11:12:13.000123+01:00 olt diagd 4711 - "
                                              "[alarm@32473 id=\"512\" pon=\"0\" onu=\"0\"] by hand");
}

TEST(SyslogMessage, no_text_ends_with_the_structured_data)
{
    EXPECT_THAT(text(alarm(fan, 1, "")), EndsWith(" onu=\"0\"]"));
}

TEST(SyslogMessage, quotes_backslashes_and_brackets_of_values_are_escaped)
{
    const tq_alarm_info_t before = tq_alarm_log_info[fan];
    std::strcpy(tq_alarm_log_info[fan].name, "a\"b\\c]d[e");
    EXPECT_THAT(text(alarm(fan, 1, "x")), HasSubstr(" name=\"a\\\"b\\\\c\\]d[e\" "));
    tq_alarm_log_info[fan] = before;
}

TEST(SyslogMessage, the_text_itself_is_not_escaped)
{
    EXPECT_EQ(part("\"a\" \\ ] %s"), " \"a\" \\ ] %s");
}

TEST(SyslogMessage, offsets_from_utc_are_hours_and_minutes_of_either_sign)
{
    const std::pair<long, const char *> offsets[] = {
        {0, "+00:00"}, {19800, "+05:30"}, {-12600, "-03:30"}, {50400, "+14:00"}, {-1800, "-00:30"}};
    for (const auto &[seconds, expected] : offsets) {
        tq::Alarm one = alarm(fan, 1, "x");
        one.time.tm_gmtoff = seconds;
        EXPECT_THAT(text(one), HasSubstr(std::string("T11:12:13.000123") + expected + ' '));
    }
}

TEST(SyslogMessage, a_leap_second_is_the_second_before)
{
    tq::Alarm one = alarm(fan, 1, "x");
    one.time.tm_sec = 60;
    EXPECT_THAT(text(one), HasSubstr("T11:12:59.000123"));
}

TEST(SyslogMessage, header_fields_hold_printable_ascii_of_limited_length)
{
    EXPECT_THAT(tq::syslog_message(alarm(fan, 1, "x"), {"", "", 1}), HasSubstr("+01:00 - - 1 fan ["));
    EXPECT_THAT(tq::syslog_message(alarm(fan, 1, "x"), {"my olt\n", "d\xC3\xA4", 1}),
                HasSubstr("+01:00 my_olt_ d__ 1 fan ["));
    EXPECT_THAT(tq::syslog_message(alarm(fan, 1, "x"), {std::string(300, 'h'), std::string(300, 'p'), 1}),
                HasSubstr(' ' + std::string(255, 'h') + ' ' + std::string(48, 'p') + " 1 "));
}

TEST(SyslogMessage, ascii_goes_without_byte_order_mark)
{
    EXPECT_EQ(part("plain"), " plain");
}

TEST(SyslogMessage, utf8_beyond_ascii_is_marked)
{
    EXPECT_EQ(part("L\xC3\xBC\x66ter \xE2\x82\xAC"),
              std::string(" ") + mark + "L\xC3\xBC\x66ter \xE2\x82\xAC");
}

TEST(SyslogMessage, what_is_no_utf8_goes_as_it_is_and_unmarked)
{
    for (const char *bytes : {"\xE4\x6F", "a\xFFz", "\xC0\x80z", "\xED\xA0\x80z", "\xF5\x80\x80\x80z"})
        EXPECT_EQ(part(bytes), std::string(" ") + bytes);
}

TEST(SyslogMessage, half_a_character_at_the_end_is_left_out)
{
    for (const char *half : {"\xC3", "\xE2\x82", "\xF0\x9F\x98"})
        EXPECT_EQ(part((std::string("\xC3\xA4") + half).c_str()), std::string(" ") + mark + "\xC3\xA4");
}

TEST(SyslogMessage, control_characters_become_blanks)
{
    EXPECT_EQ(part("a\nb\tc\x01"
                   "d\x7F"),
              " a b c d ");
}

TEST(SyslogMessage, the_longest_of_everything_fits_2048_bytes)
{
    for (const char *unit : {"x", "\xE2\x82\xAC", "\xFF"}) {
        std::string message;
        while (message.size() < 1020)
            message += unit;
        const std::string whole = tq::syslog_message(
            alarm(power1, 1, message.c_str()), {std::string(300, 'h'), std::string(300, 'p'), 2147483647});
        EXPECT_LE(whole.size(), 2048u);
        EXPECT_THAT(whole, EndsWith(message));
    }
}

TEST(SyslogMessage, a_text_beyond_that_is_cut_at_a_character)
{
    std::string message;
    while (message.size() < 3000)
        message += "\xE2\x82\xAC";
    const std::string whole = text(alarm(fan, 1, message.c_str()));
    EXPECT_LE(whole.size(), 2048u);
    EXPECT_GT(whole.size(), 2045u - 3);
    EXPECT_THAT(whole, EndsWith("\xE2\x82\xAC"));
    EXPECT_EQ(text(alarm(fan, 1, std::string(3000, 'x').c_str())).size(), 2048u);
}
