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
inline constexpr std::array<ThresholdAlarm, 4> board_alarms{{
    {102, "temp-high", ".C", Direction::high},
    {103, "temp-low", ".C", Direction::low},
    {104, "cpu-usage-high", "%", Direction::high},
    {105, "mem-usage-high", "%", Direction::high},
}};
inline constexpr std::size_t temp_high_alarm = 0;

// Of each PON port.
inline constexpr std::array<ThresholdAlarm, 8> pon_alarms_with_threshold{{
    {9, "pon-txpower-high", "dBm", Direction::high},
    {10, "pon-txpower-low", "dBm", Direction::low},
    {11, "pon-txbias-high", "mA", Direction::high},
    {12, "pon-txbias-low", "mA", Direction::low},
    {13, "pon-vcc-high", "V", Direction::high},
    {14, "pon-vcc-low", "V", Direction::low},
    {15, "pon-temp-high", ".C", Direction::high},
    {16, "pon-temp-low", ".C", Direction::low},
}};

// The same alarms in older commands.
inline constexpr std::array<std::string_view, pon_alarms_with_threshold.size()> pon_optical_names{
    "tx_power_high", "tx_power_low", "tx_bias_high", "tx_bias_low",
    "vcc_high",      "vcc_low",      "temp_high",    "temp_low",
};

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
