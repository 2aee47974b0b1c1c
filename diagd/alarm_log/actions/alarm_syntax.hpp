// SPDX-License-Identifier: GPL-2.0-or-later
// Syntax and help of the commands on one alarm: its class and name, an action, a switch or a level.
#pragma once

#include "diagd/alarm_log/actions/alarm_action.hpp"
#include "diagd/alarm_log/catalogue.hpp"
#include "diagd/alarm_log/syntax.hpp"

#include <algorithm>
#include <array>
#include <cstddef>

#define SWITCH_SYNTAX "<enable|disable>"
#define SWITCH_HELP                                                                                          \
    "Enable the action.\n"                                                                                   \
    "Disable the action.\n"

namespace diagd {

// The alarms and events that one command can name.
struct KeywordGroup {
    std::string_view class_word; // "alarm" or "event"
    std::span<const std::string_view> names;
};

// The names of a class and a group of the catalogue in the order of their ids, those that no bulk command
// takes along first.
template <AlarmClass class_, AlarmGroup group>
inline constexpr auto keywords = [] {
    constexpr auto is_wanted = [](const AlarmRow &row) { return row.class_ == class_ && row.group == group; };
    std::array<std::string_view, std::ranges::count_if(alarm_rows, is_wanted)> names;
    std::size_t count = 0;
    for (const bool is_bulk : {false, true})
        for (const AlarmRow &row : alarm_rows)
            if (is_wanted(row) && row.is_bulk == is_bulk)
                names[count++] = row.name;
    return names;
}();

template <AlarmGroup group>
inline constexpr KeywordGroup alarms_of{"alarm", keywords<AlarmClass::alarm, group>};
template <AlarmGroup group>
inline constexpr KeywordGroup events_of{"event", keywords<AlarmClass::event, group>};

inline constexpr auto &global_alarms = alarms_of<AlarmGroup::global>;
inline constexpr auto &pon_alarms = alarms_of<AlarmGroup::pon>;
inline constexpr auto &onu_alarms = alarms_of<AlarmGroup::onu>;
inline constexpr auto &routing_alarms = alarms_of<AlarmGroup::route>;
inline constexpr auto &global_events = events_of<AlarmGroup::global>;
inline constexpr auto &pon_events = events_of<AlarmGroup::pon>;
inline constexpr auto &onu_events = events_of<AlarmGroup::onu>;
inline constexpr auto &routing_events = events_of<AlarmGroup::route>;

// The board's threshold alarms, first of the global ones, have a level of their own in no command, and their
// older commands take the thresholds along.
inline constexpr std::size_t board_threshold_count =
    std::ranges::count(alarm_rows, false, &AlarmRow::is_bulk);
inline constexpr KeywordGroup global_alarms_without_threshold{
    "alarm", std::span{global_alarms.names}.subspan(board_threshold_count)};

// "<print|...|all>"
constexpr JoinedText action_syntax()
{
    std::array<std::string_view, action_switches.size() + 1> keywords;
    std::ranges::transform(action_switches, keywords.begin(), &ActionSwitch::word);
    keywords.back() = all_actions;
    return choice_of(keywords);
}

constexpr JoinedText action_help()
{
    JoinedText help;
    for (const ActionSwitch &one : action_switches)
        help.append(one.help);
    return help.append("All four actions.\n");
}

// "alarm <fan|...>"
constexpr JoinedText syntax_of(const KeywordGroup &group)
{
    return JoinedText{group.class_word} + " " + choice_of(group.names);
}

// Help of the class word and a line for each name.
constexpr JoinedText help_of(const KeywordGroup &group)
{
    return "Configuration of " + JoinedText{group.class_word} + "s.\n" +
           help_of_choice(group.names, group.class_word);
}

// alarm-log alarm <fan|...> <enable|disable> <action>
template <const KeywordGroup &group>
inline constexpr const char *switch_syntax =
    static_text<[] { return "alarm-log " + syntax_of(group) + " " SWITCH_SYNTAX " " + action_syntax(); }>;
template <const KeywordGroup &group>
inline constexpr const char *switch_help =
    static_text<[] { return "Alarm log.\n" + help_of(group) + SWITCH_HELP + action_help(); }>;

// alarm <fan|...> <action> <enable|disable>
template <const KeywordGroup &group>
inline constexpr const char *old_switch_syntax =
    static_text<[] { return syntax_of(group) + " " + action_syntax() + " " SWITCH_SYNTAX; }>;
template <const KeywordGroup &group>
inline constexpr const char *old_switch_help =
    static_text<[] { return help_of(group) + action_help() + SWITCH_HELP; }>;

// alarm-log alarm <fan|...> level <level>
template <const KeywordGroup &group>
inline constexpr const char *level_syntax =
    static_text<[] { return "alarm-log " + syntax_of(group) + " level " LEVEL_SYNTAX; }>;
template <const KeywordGroup &group>
inline constexpr const char *level_help =
    static_text<[] { return "Alarm log.\n" + help_of(group) + LEVEL_HELP; }>;

} // namespace diagd
