// SPDX-License-Identifier: GPL-2.0-or-later
// Words and help of the commands on one alarm, joined at compile time from the groups of names: libfrr wants
// both as C strings that live as long as the process.
#pragma once

#include "diagd/alarm_log/actions/alarm_groups.hpp"
#include "diagd/alarm_log/actions/level_words.hpp"

#include <algorithm>
#include <array>
#include <string>

#define ACTION_WORDS "<print|record|trap|remote|all>"
#define ACTION_STR                                                                                           \
    "Print in the daemon's log.\n"                                                                           \
    "Record in the alarm log.\n"                                                                             \
    "Send a trap.\n"                                                                                         \
    "Send to the remote log servers.\n"                                                                      \
    "All four actions.\n"
#define SWITCH_WORDS "<enable|disable>"
#define SWITCH_STR                                                                                           \
    "Enable the action.\n"                                                                                   \
    "Disable the action.\n"

namespace diagd {

// The text that `make` returns, as a C string in static storage.
template <auto make>
inline constexpr auto static_text = [] {
    std::array<char, make().size() + 1> text{};
    std::ranges::copy(make(), text.begin());
    return text;
}();

// "<a|b|c>"
constexpr std::string choice_of(const KeywordGroup &group)
{
    std::string words = "<";
    for (const std::string_view name : group.names)
        words.append(name).append("|");
    words.back() = '>';
    return words;
}

// Help of the class word and a line for each name.
constexpr std::string help_of(const KeywordGroup &group)
{
    const std::string class_word{group.class_word};
    std::string help = "Configuration of " + class_word + "s.\n";
    for (const std::string_view name : group.names)
        help.append("Specify ").append(name).append(" " + class_word + ".\n");
    return help;
}

// "alarm <fan|...>"
constexpr std::string words_of(const KeywordGroup &group)
{
    return std::string{group.class_word} + " " + choice_of(group);
}

template <const KeywordGroup &group>
constexpr std::string make_action_words()
{
    return "alarm-log " + words_of(group) + " " SWITCH_WORDS " " ACTION_WORDS;
}

template <const KeywordGroup &group>
constexpr std::string make_action_help()
{
    return "Alarm log.\n" + help_of(group) + SWITCH_STR ACTION_STR;
}

template <const KeywordGroup &group>
constexpr std::string make_old_action_words()
{
    return words_of(group) + " " ACTION_WORDS " " SWITCH_WORDS;
}

template <const KeywordGroup &group>
constexpr std::string make_old_action_help()
{
    return help_of(group) + ACTION_STR SWITCH_STR;
}

template <const KeywordGroup &group>
constexpr std::string make_level_words()
{
    return "alarm-log " + words_of(group) + " level " LEVEL_WORDS;
}

template <const KeywordGroup &group>
constexpr std::string make_level_help()
{
    return "Alarm log.\n" + help_of(group) + LEVEL_STR;
}

// alarm-log alarm <fan|...> <enable|disable> <action>
template <const KeywordGroup &group>
inline constexpr const char *action_words = static_text<make_action_words<group>>.data();
template <const KeywordGroup &group>
inline constexpr const char *action_help = static_text<make_action_help<group>>.data();

// alarm <fan|...> <action> <enable|disable>
template <const KeywordGroup &group>
inline constexpr const char *old_action_words = static_text<make_old_action_words<group>>.data();
template <const KeywordGroup &group>
inline constexpr const char *old_action_help = static_text<make_old_action_help<group>>.data();

// alarm-log alarm <fan|...> level <level>
template <const KeywordGroup &group>
inline constexpr const char *level_words = static_text<make_level_words<group>>.data();
template <const KeywordGroup &group>
inline constexpr const char *level_help = static_text<make_level_help<group>>.data();

} // namespace diagd
