// SPDX-License-Identifier: GPL-2.0-or-later
// The alarms that have thresholds, where their thresholds are, and how they read.
#pragma once

#include "diagd/alarm_log/thresholds/threshold_policy.hpp"
#include "diagd/board/interface.hpp"
#include "diagd/core/state.hpp"
#include "diagd/core/text.hpp"

#include "tq_database.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdio>
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

// Index of a word in a list that it is known to be in.
[[nodiscard]] constexpr std::size_t index_of(std::string_view word, std::span<const std::string_view> names)
{
    return static_cast<std::size_t>(std::ranges::find(names, word) - names.begin());
}

// The board alarms' thresholds in the database.
struct StoredThresholds {
    using Getter = int (*)(tq_database_t *, void *text, int *length);
    using Deleter = int (*)(tq_database_t *); // pending until the changes are applied

    Getter get_alarm;
    Getter get_clear;
    Deleter delete_alarm;
    Deleter delete_clear;
};

inline constexpr std::size_t threshold_text_size = 32; // of what a getter fills

// In the order of board_alarms.
inline constexpr auto stored_thresholds = std::to_array<StoredThresholds>({
    {db_olt_alarm_log_get_temp_high_alarm_threshold, db_olt_alarm_log_get_temp_high_clear_threshold,
     db_olt_alarm_log_del_temp_high_alarm_threshold, db_olt_alarm_log_del_temp_high_clear_threshold},
    {db_olt_alarm_log_get_temp_low_alarm_threshold, db_olt_alarm_log_get_temp_low_clear_threshold,
     db_olt_alarm_log_del_temp_low_alarm_threshold, db_olt_alarm_log_del_temp_low_clear_threshold},
    {db_olt_alarm_log_get_cpu_usage_high_alarm_threshold, db_olt_alarm_log_get_cpu_usage_high_clear_threshold,
     db_olt_alarm_log_del_cpu_usage_high_alarm_threshold,
     db_olt_alarm_log_del_cpu_usage_high_clear_threshold},
    {db_olt_alarm_log_get_mem_usage_high_alarm_threshold, db_olt_alarm_log_get_mem_usage_high_clear_threshold,
     db_olt_alarm_log_del_mem_usage_high_alarm_threshold,
     db_olt_alarm_log_del_mem_usage_high_clear_threshold},
});
static_assert(stored_thresholds.size() == board_alarms.size());

// Of all ports of a kind, GPON or XG-PON; entry 0 is port 1.  The commands change them in memory, the running
// configuration keeps them.
[[nodiscard]] inline auto &thresholds_of(PortKind kind) noexcept
{
    return diagm.pon_thresholds[pon_index(kind)];
}

// A threshold with two decimals, cut to the width of a threshold's text.
class ThresholdText {
public:
    explicit ThresholdText(float threshold) noexcept
    {
        char whole[64]; // of any float
        std::snprintf(whole, sizeof whole, "%.2f", static_cast<double>(threshold));
        copy_text(text_, whole);
    }
    [[nodiscard]] const char *c_str() const noexcept { return text_; }

private:
    char text_[32];
};

// Its whole part; the nearest number that there is for one beyond all of them, 0 for what is no number.
[[nodiscard]] inline std::int64_t whole_threshold(float threshold) noexcept
{
    constexpr float limit = 0x1p62F; // both signs of it fit the result
    if (std::isnan(threshold))
        return 0;
    return static_cast<std::int64_t>(std::clamp(threshold, -limit, limit));
}

// The threshold monitor: every three seconds it compares the board's and the optical modules' values with
// their thresholds, on the main thread.  Started once, before the event loop runs; every alarm begins in the
// unknown state, the optical part switched on.
void start_threshold_monitor();

} // namespace diagd
