// SPDX-License-Identifier: GPL-2.0-or-later
// What threshold alarms say.
#pragma once

#include "diagd/alarm_log/thresholds/threshold_alarms.hpp"

namespace diagd {

struct PonPort {
    const char *type; // "GPON" or "XGPON"
    unsigned number;  // 1 to 8
};

// Files the report, unless there is nothing to report, with the alarm's actions.
void report_board_alarm(const ThresholdAlarm &alarm, Report report, float value, float threshold);
void report_pon_alarm(const ThresholdAlarm &alarm, const PonPort &port, Report report, float value,
                      float threshold);

} // namespace diagd
