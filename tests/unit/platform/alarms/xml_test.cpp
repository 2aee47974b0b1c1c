// SPDX-License-Identifier: GPL-2.0-or-later
// The per-alarm configuration read from XML: the usual text, and every text that nobody should write.
#include "tq_api.h"
#include "tq_errno.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>

namespace {

using Records = std::array<tq_alarm_cfg_t, TQ_ALARM_COUNT>;

std::string in_root(const std::string &content)
{
    return "<alarm-log xmlns=\"urn:norvale:yang:olt-alarm-log\">" + content + "</alarm-log>\n";
}

std::string alarm(const std::string &id, const std::string &level, const std::string &action)
{
    return "<alarm><id>" + id + "</id><level>" + level + "</level><action>" + action + "</action></alarm>";
}

// The text lies at the end of memory of its own, so that a checker sees any look behind it.
Records read(const std::string &xml, int expected = TQ_OK)
{
    Records records{};
    const std::unique_ptr<char[]> text{new char[xml.size() + 1]};
    std::memcpy(text.get(), xml.c_str(), xml.size() + 1);
    EXPECT_EQ(parsing_alarm_list_xml_data(text.get(), records.data()), expected) << xml;
    return records;
}

bool is_empty(const tq_alarm_cfg_t &record)
{
    const tq_alarm_cfg_t nothing{};
    return std::memcmp(&record, &nothing, sizeof nothing) == 0;
}

} // namespace

TEST(AlarmXml, gives_each_alarm_its_level_and_switches)
{
    const Records records = read("<alarm-log xmlns=\"urn:norvale:yang:olt-alarm-log\">\n"
                                 "  <alarm>\n"
                                 "    <id>0</id>\n"
                                 "    <name>fan</name>\n"
                                 "    <desc>Fan state change</desc>\n"
                                 "    <type>equipment</type>\n"
                                 "    <class>alarm</class>\n"
                                 "    <level>critical</level>\n"
                                 "    <action>\n"
                                 "      <print>true</print>\n"
                                 "      <record>false</record>\n"
                                 "      <trap>true</trap>\n"
                                 "      <remote>false</remote>\n"
                                 "    </action>\n"
                                 "  </alarm>\n"
                                 "  <alarm>\n"
                                 "    <id>105</id>\n"
                                 "    <level>info</level>\n"
                                 "    <action>\n"
                                 "      <record>true</record>\n"
                                 "      <remote>true</remote>\n"
                                 "    </action>\n"
                                 "  </alarm>\n"
                                 "</alarm-log>\n");
    EXPECT_STREQ(records[0].level, "critical");
    EXPECT_EQ(records[0].print, 1u);
    EXPECT_EQ(records[0].record, 0u);
    EXPECT_EQ(records[0].trap, 1u);
    EXPECT_EQ(records[0].remote, 0u);
    EXPECT_STREQ(records[105].level, "info");
    EXPECT_EQ(records[105].print, 0u);
    EXPECT_EQ(records[105].record, 1u);
    EXPECT_EQ(records[105].trap, 0u);
    EXPECT_EQ(records[105].remote, 1u);
    for (std::size_t id = 1; id < 105; ++id)
        EXPECT_TRUE(is_empty(records[id])) << id;
}

TEST(AlarmXml, of_an_empty_database_gives_nothing)
{
    for (const tq_alarm_cfg_t &record : read("<alarm-log xmlns=\"urn:norvale:yang:olt-alarm-log\"/>\n"))
        EXPECT_TRUE(is_empty(record));
}

TEST(AlarmXml, what_an_alarm_does_not_say_is_empty_and_off)
{
    const Records records =
        read(in_root("<alarm><id>7</id></alarm><alarm><id>8</id><level/><action/></alarm>"));
    EXPECT_TRUE(is_empty(records[7]));
    EXPECT_TRUE(is_empty(records[8]));
}

TEST(AlarmXml, elements_may_come_in_any_order_and_on_one_line)
{
    const Records records =
        read(in_root("<alarm><action><trap>true</trap></action><level>major</level><id>9</id></alarm>"));
    EXPECT_STREQ(records[9].level, "major");
    EXPECT_EQ(records[9].trap, 1u);
}

TEST(AlarmXml, unknown_elements_are_passed_over_wherever_they_stand)
{
    const Records records = read(in_root(
        "<flash><level>debug</level></flash>"
        "<alarm><since a=\"1\"><id>3</id><level>debug</level><action><print>true</print></action></since>"
        "<id>4</id><level>alert</level>"
        "<action><mail>true</mail><x><print>true</print></x><remote>true</remote></action>"
        "<print>true</print><record>true</record></alarm>"
        "<!-- <alarm><id>5</id></alarm> -->"));
    EXPECT_TRUE(is_empty(records[3]));
    EXPECT_STREQ(records[4].level, "alert");
    EXPECT_EQ(records[4].print, 0u);
    EXPECT_EQ(records[4].record, 0u);
    EXPECT_EQ(records[4].remote, 1u);
}

TEST(AlarmXml, switches_count_in_the_action_alone)
{
    const Records records =
        read(in_root("<alarm><id>4</id><action><trap>true</trap></action>"
                     "<history><print>true</print><trap>false</trap></history></alarm>"
                     "<alarm><id>5</id><history><remote>true</remote></history></alarm>"));
    EXPECT_EQ(records[4].trap, 1u);
    EXPECT_EQ(records[4].print, 0u);
    EXPECT_TRUE(is_empty(records[5]));
}

TEST(AlarmXml, ids_that_are_none_are_passed_over)
{
    for (const std::string id :
         {"106", "65536", "65642", "-1", "", " ", "1x", "x", "4294967296", "0x1", "1.0"})
        for (const tq_alarm_cfg_t &record : read(in_root(alarm(id, "major", "<print>true</print>"))))
            EXPECT_TRUE(is_empty(record)) << id;
}

TEST(AlarmXml, a_level_longer_than_its_field_is_passed_over)
{
    const std::string longest(sizeof tq_alarm_cfg_t::level - 1, 'l');
    EXPECT_EQ(read(in_root(alarm("0", longest, "")))[0].level, longest);
    for (const std::size_t length :
         {std::size_t{16}, std::size_t{63}, std::size_t{64}, std::size_t{65}, std::size_t{70000}}) {
        const Records records = read(in_root(alarm("0", std::string(length, 'l'), "<trap>true</trap>")));
        EXPECT_STREQ(records[0].level, "") << length;
        EXPECT_EQ(records[0].trap, 1u) << length;
        EXPECT_TRUE(is_empty(records[1])) << length;
    }
}

TEST(AlarmXml, only_true_is_on)
{
    for (const std::string off : {"false", "", "1", "TRUE", "truetrue", " true", "true "}) {
        const Records records = read(in_root(alarm("2", "major", "<print>" + off + "</print>")));
        EXPECT_EQ(records[2].print, 0u) << off;
    }
}

TEST(AlarmXml, character_references_are_resolved)
{
    EXPECT_STREQ(read(in_root(alarm("2", "a&amp;b&lt;&#62;", "")))[2].level, "a&b<>");
}

TEST(AlarmXml, the_last_of_two_entries_of_one_id_counts)
{
    const Records records =
        read(in_root(alarm("2", "major", "<print>true</print>") + alarm("2", "info", "")));
    EXPECT_STREQ(records[2].level, "info");
    EXPECT_EQ(records[2].print, 0u);
}

TEST(AlarmXml, of_a_broken_text_the_alarms_before_the_break_count)
{
    const std::string whole = in_root(alarm("1", "major", "") + alarm("2", "info", ""));
    const std::size_t first_end = whole.find("</alarm>") + std::strlen("</alarm>");
    for (std::size_t length = 0; length < whole.size() - std::strlen("</alarm-log>\n") + 1; ++length) {
        const Records records = read(whole.substr(0, length), TQ_ERR_INVALID);
        EXPECT_STREQ(records[1].level, length >= first_end ? "major" : "") << length;
    }
}

TEST(AlarmXml, other_text_is_refused)
{
    for (const std::string text :
         {"", " ", "alarm", "<alarm-log>", "</alarm-log>", "<a><b></a></b>", "<a/><b/>",
          "<alarm-log>\x01</alarm-log>", "<alarm-log>&unknown;</alarm-log>"})
        for (const tq_alarm_cfg_t &record : read(text, TQ_ERR_INVALID))
            EXPECT_TRUE(is_empty(record));
}

TEST(AlarmXml, no_text_or_no_place_for_it_is_refused)
{
    Records records{};
    EXPECT_EQ(parsing_alarm_list_xml_data(nullptr, records.data()), TQ_ERR_INVALID);
    EXPECT_EQ(parsing_alarm_list_xml_data("<alarm-log/>", nullptr), TQ_ERR_INVALID);
}

// Bytes of a valid text changed at random: any result, but nothing outside of the records is touched.
TEST(AlarmXml, survives_damaged_text)
{
    std::string whole;
    for (int id = 0; id < TQ_ALARM_COUNT; ++id)
        whole += alarm(std::to_string(id), "critical", "<print>true</print><remote>false</remote>");
    whole = in_root(whole);
    std::srand(1);
    for (int round = 0; round < 2000; ++round) {
        std::string damaged = whole.substr(0, 300);
        for (int n = 0; n < 4; ++n)
            damaged[static_cast<std::size_t>(std::rand()) % damaged.size()] = static_cast<char>(std::rand());
        const struct {
            Records records;
            std::array<unsigned char, 64> guard;
        } memory{};
        auto copy = memory;
        parsing_alarm_list_xml_data(damaged.c_str(), copy.records.data());
        ASSERT_EQ(copy.guard, memory.guard);
        for (const tq_alarm_cfg_t &record : copy.records)
            ASSERT_LT(strnlen(record.level, sizeof record.level), sizeof record.level);
    }
}
