// SPDX-License-Identifier: GPL-2.0-or-later
// The alarms that have thresholds.
#pragma once

#include "diagd/alarm_log/thresholds/threshold_judge.hpp"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

namespace diagd {

struct ThresholdAlarm {
    std::uint16_t id; // in the catalogue
    const char *name;
    const char *unit; // of value and thresholds
    Direction direction;
};

// Of the board; their thresholds are in the database, in this order.
inline constexpr auto board_alarms = std::to_array<ThresholdAlarm>({
#define TQ_BOARD_THRESHOLD(id, ID, name, description, type, direction, unit)                                 \
    {id, name, unit, Direction::direction},
#include "tq_alarms.def"
});

// Of each PON port.
inline constexpr auto pon_alarms_with_threshold = std::to_array<ThresholdAlarm>({
#define TQ_PON_THRESHOLD(id, ID, name, description, type, direction, unit, older_name)                       \
    {id, name, unit, Direction::direction},
#include "tq_alarms.def"
});

// The same alarms in older commands.
inline constexpr auto pon_optical_names = std::to_array<std::string_view>({
#define TQ_PON_THRESHOLD(id, ID, name, description, type, direction, unit, older_name) older_name,
#include "tq_alarms.def"
});

template <std::size_t count>
[[nodiscard]] constexpr std::array<std::string_view, count>
names_of(const std::array<ThresholdAlarm, count> &alarms)
{
    std::array<std::string_view, count> names;
    std::ranges::transform(alarms, names.begin(), &ThresholdAlarm::name);
    return names;
}
inline constexpr auto board_alarm_names = names_of(board_alarms);
inline constexpr auto pon_alarm_names_with_threshold = names_of(pon_alarms_with_threshold);

// Place of a word in a list that it is known to be in.
[[nodiscard]] constexpr std::size_t place_of(std::string_view word, std::span<const std::string_view> names)
{
    return static_cast<std::size_t>(std::ranges::find(names, word) - names.begin());
}

} // namespace diagd
