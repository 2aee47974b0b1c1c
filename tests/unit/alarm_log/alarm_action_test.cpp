// SPDX-License-Identifier: GPL-2.0-or-later
// Which switches of the database an action word changes, in which order, and what of a failure is told.
#include "diagd/alarm_log/actions/alarm_action.hpp"

#include "tq_api.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstring>
#include <map>
#include <string>
#include <vector>

using namespace diagd;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

std::vector<std::string> calls;
std::map<std::string, int> codes; // of the switches that fail

int set(const std::string &name, std::uint16_t id, const void *value, int size, int apply)
{
    calls.push_back(name + " " + std::to_string(id) + "=" +
                    std::to_string(*static_cast<const std::uint8_t *>(value)) + " size " +
                    std::to_string(size) + " apply " + std::to_string(apply));
    return codes[name];
}

class AlarmAction : public testing::Test {
protected:
    void SetUp() override
    {
        calls.clear();
        codes.clear();
    }
};

} // namespace

tq_database_t g_diagd_db;

#define SWITCH(name)                                                                                         \
    int db_olt_alarm_log_set_action_##name(std::uint16_t id, tq_database_t *db, const void *value, int size, \
                                           int apply)                                                        \
    {                                                                                                        \
        EXPECT_EQ(db, &g_diagd_db);                                                                          \
        return set(#name, id, value, size, apply);                                                           \
    }                                                                                                        \
    int db_olt_alarm_log_get_action_##name(std::uint16_t, tq_database_t *, void *, int *)                    \
    {                                                                                                        \
        return -1;                                                                                           \
    }
SWITCH(print)
SWITCH(record)
SWITCH(trap)
SWITCH(remote)

namespace {

int list_code;           // of the list of all alarms
const char *list_text;   // as the database gives it, null for none
const char *parsed_text; // what was read of it

} // namespace

int db_olt_alarm_log_show_xml_alarm_id(tq_database_t *, char **xml)
{
    *xml = list_text != nullptr ? strdup(list_text) : nullptr;
    return list_code;
}

int parsing_alarm_list_xml_data(const char *xml, tq_alarm_cfg_t records[TQ_ALARM_COUNT])
{
    parsed_text = xml != nullptr ? list_text : nullptr;
    records[TQ_ALARM_COUNT - 1].trap = 1;
    return 0;
}

TEST_F(AlarmAction, a_word_changes_its_own_switch)
{
    for (const std::string word : {"print", "record", "trap", "remote"}) {
        calls.clear();
        EXPECT_EQ(switch_now(7, word, true).code, 0);
        EXPECT_EQ(switch_pending(105, word, false), 0);
        EXPECT_THAT(calls, ElementsAre(word + " 7=1 size 1 apply 1", word + " 105=0 size 1 apply 0"));
    }
}

TEST_F(AlarmAction, all_changes_the_four_in_their_order)
{
    EXPECT_EQ(switch_now(0, "all", true).code, 0);
    EXPECT_THAT(calls, ElementsAre("print 0=1 size 1 apply 1", "record 0=1 size 1 apply 1",
                                   "trap 0=1 size 1 apply 1", "remote 0=1 size 1 apply 1"));
    calls.clear();
    EXPECT_EQ(switch_pending(0, "all", false), 0);
    EXPECT_THAT(calls, ElementsAre("print 0=0 size 1 apply 0", "record 0=0 size 1 apply 0",
                                   "trap 0=0 size 1 apply 0", "remote 0=0 size 1 apply 0"));
}

TEST_F(AlarmAction, another_word_changes_nothing_and_is_no_failure)
{
    codes = {{"print", -1}, {"record", -1}, {"trap", -1}, {"remote", -1}};
    for (const char *word : {"", "prin", "prints", "mail", "ALL"}) {
        EXPECT_EQ(switch_now(0, word, true).code, 0) << word;
        EXPECT_EQ(switch_pending(0, word, true), 0) << word;
    }
    EXPECT_THAT(calls, IsEmpty());
}

TEST_F(AlarmAction, at_once_the_first_failure_ends_it_and_is_named)
{
    const char *const words[] = {"print", "record", "trap", "remote"};
    for (std::size_t i = 0; i < std::size(words); ++i) {
        calls.clear();
        codes = {{words[i], -3}};
        const ActionResult result = switch_now(0, "all", true);
        EXPECT_EQ(result.code, -3);
        EXPECT_EQ(result.failed, words[i]);
        EXPECT_EQ(calls.size(), i + 1);
    }
}

TEST_F(AlarmAction, pending_only_the_last_of_four_decides_and_none_is_left_out)
{
    codes = {{"print", -1}, {"record", -2}, {"trap", -3}};
    EXPECT_EQ(switch_pending(0, "all", true), 0);
    EXPECT_EQ(calls.size(), 4u);
    codes = {{"remote", -4}};
    EXPECT_EQ(switch_pending(0, "all", true), -4);
}

TEST_F(AlarmAction, pending_a_single_failure_is_its_own_code)
{
    codes = {{"record", -5}};
    EXPECT_EQ(switch_pending(0, "record", true), -5);
    EXPECT_EQ(switch_pending(0, "trap", true), 0);
}

TEST_F(AlarmAction, a_default_is_the_bit_of_its_action_and_that_of_print_for_all_four)
{
    tq_alarm_info_t entry{};
    for (std::uint32_t bits = 0; bits < 32; ++bits) {
        entry.default_actions = bits;
        EXPECT_EQ(default_of(entry, "print"), (bits & 1) != 0);
        EXPECT_EQ(default_of(entry, "record"), (bits & 2) != 0);
        EXPECT_EQ(default_of(entry, "trap"), (bits & 4) != 0);
        EXPECT_EQ(default_of(entry, "remote"), (bits & 8) != 0);
        EXPECT_EQ(default_of(entry, "all"), (bits & 1) != 0);
    }
}

TEST_F(AlarmAction, the_configuration_of_all_alarms_is_read_from_one_text)
{
    list_code = 0;
    list_text = "<alarm-log/>";
    parsed_text = nullptr;
    const std::optional<AlarmConfiguration> configuration = read_alarm_configuration();
    ASSERT_TRUE(configuration);
    EXPECT_EQ(parsed_text, list_text);
    EXPECT_EQ(configuration->front().trap, 0u);
    EXPECT_EQ(configuration->back().trap, 1u);
}

TEST_F(AlarmAction, a_list_that_cannot_be_read_is_no_configuration)
{
    list_code = -1;
    list_text = nullptr;
    parsed_text = nullptr;
    EXPECT_FALSE(read_alarm_configuration());
    EXPECT_EQ(parsed_text, nullptr);
}

TEST_F(AlarmAction, every_action_names_its_own_field_of_the_configuration)
{
    const tq_alarm_cfg_t configured{.level = "", .print = 1, .record = 2, .trap = 3, .remote = 4};
    std::map<std::string_view, std::uint32_t> values;
    for (const ActionSwitch &one : action_switches)
        values[one.word] = configured.*one.configured;
    EXPECT_EQ(values, (std::map<std::string_view, std::uint32_t>{
                          {"print", 1}, {"record", 2}, {"trap", 3}, {"remote", 4}}));
}
