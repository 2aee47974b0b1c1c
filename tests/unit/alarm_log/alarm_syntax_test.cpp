// SPDX-License-Identifier: GPL-2.0-or-later
// The names that commands offer, against the catalogue, and the words and help joined from them.
#include "diagd/alarm_log/actions/alarm_syntax.hpp"

#include "tq_api.h"

#include <gtest/gtest.h>

#include <set>

using namespace diagd;

namespace {

struct Named {
    const KeywordGroup *group;
    std::uint32_t class_index;
    std::uint32_t group_index; // in the catalogue
};

const Named groups[] = {
    {&global_alarms, 0, 0}, {&onu_alarms, 0, 1}, {&pon_alarms, 0, 2}, {&routing_alarms, 0, 3},
    {&global_events, 1, 0}, {&onu_events, 1, 1}, {&pon_events, 1, 2}, {&routing_events, 1, 3},
};

} // namespace

TEST(AlarmGroups, name_every_entry_of_the_catalogue_once_in_its_class_and_group)
{
    std::set<int> found;
    for (const Named &named : groups) {
        EXPECT_EQ(named.group->class_word, tq_alarm_log_class[named.class_index]);
        for (const std::string_view name : named.group->names) {
            int matches = 0;
            for (const tq_alarm_info_t &entry : tq_alarm_log_info) {
                if (entry.name != name || entry.class_ != named.class_index)
                    continue;
                EXPECT_EQ(entry.group, named.group_index) << name;
                EXPECT_TRUE(found.insert(entry.id).second) << name;
                ++matches;
            }
            EXPECT_EQ(matches, 1) << name;
        }
    }
    EXPECT_EQ(found.size(), static_cast<std::size_t>(TQ_ALARM_COUNT));
}

TEST(AlarmGroups, only_the_onu_offline_timeout_is_two_things)
{
    std::set<std::string_view> names, twice;
    for (const Named &named : groups)
        for (const std::string_view name : named.group->names)
            if (!names.insert(name).second)
                twice.insert(name);
    EXPECT_EQ(names.size(), TQ_ALARM_COUNT - 1u);
    EXPECT_EQ(twice, std::set<std::string_view>{"onu-offline-timeout"});
    EXPECT_EQ(get_alarm_id_by_name("onu-offline-timeout"), 79);
}

TEST(AlarmGroups, the_board_alarms_with_thresholds_stand_first_and_can_be_left_out)
{
    const auto &all = global_alarms.names;
    const auto &rest = global_alarms_without_threshold.names;
    ASSERT_EQ(board_threshold_count, 4u);
    ASSERT_EQ(rest.size(), all.size() - 4);
    EXPECT_EQ(rest.front(), "fan");
    EXPECT_EQ(rest.back(), all.back());
    for (std::size_t i = 0; i < board_threshold_count; ++i)
        EXPECT_EQ(get_alarm_id_by_name(std::string{all[i]}.c_str()), static_cast<int>(102 + i));
}

TEST(AlarmGroups, names_and_their_fields_fit)
{
    for (const Named &named : groups)
        for (const std::string_view name : named.group->names)
            EXPECT_LT(name.size(), sizeof tq_alarm_info_t::name) << name;
}

TEST(AlarmSyntax, of_the_visible_form_has_the_switch_before_the_action)
{
    EXPECT_STREQ(switch_syntax<routing_alarms>,
                 "alarm-log alarm <dhcp-sn-illegal-server|dhcp-sn-over-rate-limit> <enable|disable> "
                 "<print|record|trap|remote|all>");
    EXPECT_STREQ(switch_help<routing_alarms>,
                 "Alarm log.\nConfiguration of alarms.\nSpecify dhcp-sn-illegal-server alarm.\n"
                 "Specify dhcp-sn-over-rate-limit alarm.\nEnable the action.\nDisable the action.\n"
                 "Print in the daemon's log.\nRecord in the alarm log.\nSend a trap.\n"
                 "Send to the remote log servers.\nAll four actions.\n");
}

TEST(AlarmSyntax, of_the_older_form_has_the_action_first)
{
    EXPECT_STREQ(old_switch_syntax<pon_events>,
                 "event <pon-register|pon-enable|pon-los-recovery|pon-psg-switch> "
                 "<print|record|trap|remote|all> <enable|disable>");
    EXPECT_STREQ(old_switch_help<pon_events>,
                 "Configuration of events.\nSpecify pon-register event.\nSpecify pon-enable event.\n"
                 "Specify pon-los-recovery event.\nSpecify pon-psg-switch event.\n"
                 "Print in the daemon's log.\nRecord in the alarm log.\nSend a trap.\n"
                 "Send to the remote log servers.\nAll four actions.\nEnable the action.\n"
                 "Disable the action.\n");
}

TEST(AlarmSyntax, of_the_level_form_has_all_eight_levels)
{
    EXPECT_STREQ(level_syntax<routing_events>,
                 "alarm-log event <ospf-adjacency-change|rip-adjacency-change|ospf6-adjacency-change|"
                 "ripng-adjacency-change> level <debug|info|notice|warning|major|critical|alert|emerg>");
}
