// SPDX-License-Identifier: GPL-2.0-or-later
// The board alarms' thresholds in the database.
#pragma once

#include "diagd/alarm_log/thresholds/threshold_alarms.hpp"

#include "tq_database.h"

namespace diagd {

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

} // namespace diagd
