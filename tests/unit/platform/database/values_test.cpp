// SPDX-License-Identifier: GPL-2.0-or-later
#include "platform/database/model/settings.hpp"
#include "platform/database/model/value.hpp"
#include "platform/database/model/xml.hpp"
#include "tq_errno.h"

#include <gtest/gtest.h>

#include <array>
#include <optional>
#include <set>
#include <string>

using namespace tq::db;

TEST(Settings, every_value_has_a_path_of_its_own)
{
    std::set<std::string> paths;
    for (Slot slot = 0; slot < slot_count; ++slot)
        paths.insert(path_of(slot).data());
    EXPECT_EQ(paths.size(), slot_count);
}

TEST(Settings, paths_name_the_alarm_by_its_id)
{
    EXPECT_STREQ(path_of(slot_of(Field::action_trap, 105)).data(),
                 "/olt-alarm-log:alarm-log/alarm[id='105']/action/trap");
    EXPECT_STREQ(path_of(slot_of(Field::server_ipv4_addr)).data(),
                 "/olt-alarm-log:alarm-log/remote-server-ipv4/ipv4-addr");
}

TEST(Settings, a_server_a_threshold_and_an_alarm_are_objects)
{
    const auto expect_object = [](Slot slot, Slot first, Slot last) {
        EXPECT_EQ(object_of(slot).first, first);
        EXPECT_EQ(object_of(slot).last, last);
    };
    expect_object(slot_of(Field::server_ipv4_addr), slot_of(Field::server_ipv4_enable),
                  slot_of(Field::server_ipv4_port) + 1);
    expect_object(slot_of(Field::temp_low_clear), slot_of(Field::temp_low_alarm),
                  slot_of(Field::temp_low_clear) + 1);
    expect_object(slot_of(Field::flash_level), slot_of(Field::flash_level), slot_of(Field::flash_level) + 1);
    expect_object(slot_of(Field::action_trap, 7), slot_of(Field::alarm_name, 7),
                  slot_of(Field::action_remote, 7) + 1);
}

TEST(Value, a_text_ends_at_its_width_or_its_nul)
{
    EXPECT_EQ(to_text(Kind::text, "critical", 8), "critical");
    EXPECT_EQ(to_text(Kind::text, "critical", 4), "crit");
    EXPECT_EQ(to_text(Kind::text, "major\0rubbish", 16), "major");
    EXPECT_EQ(to_text(Kind::text, "major", -1), std::nullopt);
}

TEST(Value, the_width_of_a_switch_says_nothing)
{
    const std::uint8_t on = 1, off = 0;
    for (const int width : {1, 16, -1, 0}) {
        EXPECT_EQ(to_text(Kind::flag, &on, width), "true");
        EXPECT_EQ(to_text(Kind::flag, &off, width), "false");
    }
}

TEST(Value, numbers_have_the_width_of_their_kind)
{
    const std::uint16_t port = 65535;
    const std::int32_t seconds = -86400;
    EXPECT_EQ(to_text(Kind::u16, &port, 2), "65535");
    EXPECT_EQ(to_text(Kind::i32, &seconds, 4), "-86400");
    EXPECT_EQ(to_text(Kind::i32, nullptr, 4), std::nullopt);
}

TEST(Value, a_text_that_does_not_fit_with_its_nul_is_refused)
{
    char buffer[8];
    int len = 5;
    EXPECT_EQ(to_caller(Kind::text, "major", buffer, &len), TQ_ERR_INVALID);
    len = 6;
    EXPECT_EQ(to_caller(Kind::text, "major", buffer, &len), TQ_OK);
    EXPECT_STREQ(buffer, "major");
    EXPECT_EQ(len, 5);
}

TEST(Value, a_switch_is_one_byte_whatever_the_length_says)
{
    std::uint8_t flags[2] = {9, 9};
    EXPECT_EQ(to_caller(Kind::flag, "true", flags, nullptr), TQ_OK);
    EXPECT_EQ(flags[0], 1);
    EXPECT_EQ(flags[1], 9);
    int len = 0;
    EXPECT_EQ(to_caller(Kind::flag, "false", flags, &len), TQ_OK);
    EXPECT_EQ(flags[0], 0);
    EXPECT_EQ(len, 1);
}

TEST(Value, a_port_needs_two_bytes)
{
    std::uint16_t port = 0;
    int len = 1;
    EXPECT_EQ(to_caller(Kind::u16, "514", &port, &len), TQ_ERR_INVALID);
    len = 2;
    EXPECT_EQ(to_caller(Kind::u16, "514", &port, &len), TQ_OK);
    EXPECT_EQ(port, 514);
    EXPECT_EQ(to_caller(Kind::u16, "514", nullptr, &len), TQ_ERR_INVALID);
}

class Xml : public testing::Test {
protected:
    std::array<std::optional<std::string>, slot_count> values;
};

TEST_F(Xml, nothing_set_is_one_empty_element)
{
    EXPECT_EQ(xml_of_thresholds(values), "<alarm-log xmlns=\"urn:norvale:yang:olt-alarm-log\"/>\n");
    EXPECT_EQ(xml_of_alarms(values), "<alarm-log xmlns=\"urn:norvale:yang:olt-alarm-log\"/>\n");
}

TEST_F(Xml, thresholds_stand_in_their_alarms_one_element_a_line)
{
    values[slot_of(Field::temp_high_alarm)] = "70";
    values[slot_of(Field::temp_high_clear)] = "65";
    values[slot_of(Field::mem_usage_high_clear)] = "80.5";
    EXPECT_EQ(xml_of_thresholds(values), "<alarm-log xmlns=\"urn:norvale:yang:olt-alarm-log\">\n"
                                         "  <threshold>\n"
                                         "    <temp-high>\n"
                                         "      <alarm-threshold>70</alarm-threshold>\n"
                                         "      <clear-threshold>65</clear-threshold>\n"
                                         "    </temp-high>\n"
                                         "    <mem-usage-high>\n"
                                         "      <clear-threshold>80.5</clear-threshold>\n"
                                         "    </mem-usage-high>\n"
                                         "  </threshold>\n"
                                         "</alarm-log>\n");
}

TEST_F(Xml, alarms_are_listed_by_ascending_id_with_what_is_set)
{
    values[slot_of(Field::alarm_name, 105)] = "a<b>&c";
    values[slot_of(Field::alarm_level, 2)] = "major";
    values[slot_of(Field::action_record, 2)] = "true";
    values[slot_of(Field::action_remote, 2)] = "false";
    EXPECT_EQ(xml_of_alarms(values), "<alarm-log xmlns=\"urn:norvale:yang:olt-alarm-log\">\n"
                                     "  <alarm>\n"
                                     "    <id>2</id>\n"
                                     "    <level>major</level>\n"
                                     "    <action>\n"
                                     "      <record>true</record>\n"
                                     "      <remote>false</remote>\n"
                                     "    </action>\n"
                                     "  </alarm>\n"
                                     "  <alarm>\n"
                                     "    <id>105</id>\n"
                                     "    <name>a&lt;b&gt;&amp;c</name>\n"
                                     "  </alarm>\n"
                                     "</alarm-log>\n");
}
