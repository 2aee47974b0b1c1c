// SPDX-License-Identifier: GPL-2.0-or-later
// Records of threshold alarms.  An action that fails is the alarm library's to report.
#include "diagd/alarm_log/thresholds/threshold_report.hpp"

#include "diagd/core/state.hpp"

#include "tq_api.h"

namespace diagd {

void report_board_alarm(const ThresholdAlarm &alarm, Report report, float value, float threshold)
{
    tq_alarm_req_t request{};
    request.alarm_id = alarm.id;
    switch (report) {
    case Report::nothing:
        break;
    case Report::is_above:
        cli_log(&g_diagd_db, &request, "%.2f %s is above threshold %.2f %s", value, alarm.unit, threshold,
                alarm.unit);
        break;
    case Report::back_from_above:
        cli_log(&g_diagd_db, &request, "%.2f %s from above threshold returns to normal", value, alarm.unit);
        break;
    case Report::is_below:
        cli_log(&g_diagd_db, &request, "%.2f %s is below threshold %.2f %s", value, alarm.unit, threshold,
                alarm.unit);
        break;
    case Report::back_from_below:
        cli_log(&g_diagd_db, &request, "%.2f %s from below threshold returns to normal", value, alarm.unit);
        break;
    }
}

void report_pon_alarm(const ThresholdAlarm &alarm, const PonPort &port, Report report, float value,
                      float threshold)
{
    tq_alarm_req_t request{};
    request.alarm_id = alarm.id;
    switch (report) {
    case Report::nothing:
        break;
    case Report::is_above:
        cli_log(&g_diagd_db, &request, "%s 0/%u %.2f %s is above threshold %.2f %s", port.type, port.number,
                value, alarm.unit, threshold, alarm.unit);
        break;
    case Report::back_from_above:
        cli_log(&g_diagd_db, &request, "%s 0/%u %.2f %s from above threshold returns to normal", port.type,
                port.number, value, alarm.unit);
        break;
    case Report::is_below:
        cli_log(&g_diagd_db, &request, "%s 0/%u %.2f %s is below threshold %.2f %s", port.type, port.number,
                value, alarm.unit, threshold, alarm.unit);
        break;
    case Report::back_from_below:
        cli_log(&g_diagd_db, &request, "%s 0/%u %.2f %s from below threshold returns to normal", port.type,
                port.number, value, alarm.unit);
        break;
    }
}

} // namespace diagd
