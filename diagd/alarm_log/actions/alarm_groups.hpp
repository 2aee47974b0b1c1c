// SPDX-License-Identifier: GPL-2.0-or-later
// The alarms and events that commands can name, in groups: the keywords of one command.
#pragma once

#include "diagd/alarm_log/catalogue.hpp"

#include <algorithm>
#include <array>
#include <cstddef>
#include <span>
#include <string_view>

namespace diagd {

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

} // namespace diagd
