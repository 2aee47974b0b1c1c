// SPDX-License-Identifier: GPL-2.0-or-later
// The print action: an alarm goes to the log of the process that raised it.  The calling thread must be one
// that libfrr knows.
#include "alarm.hpp"
#include "tq_api.h"
#include "tq_errno.h"

#include <zebra.h>

#include <log.h>

#include <array>
#include <cstdio>

namespace tq {

namespace {

// Alarm levels rise with severity, those of syslog fall, and syslog has no "major".
constexpr std::array<int, TQ_ALARM_LEVEL_COUNT> syslog_priority = {
    LOG_DEBUG, LOG_INFO, LOG_NOTICE, LOG_WARNING, LOG_ERR, LOG_CRIT, LOG_ALERT, LOG_EMERG,
};

} // namespace

int print_alarm(const Alarm &alarm) noexcept
{
    const char *level = tq_alarm_log_level[alarm.level];
    const int priority = syslog_priority[alarm.level];
    if (alarm.id < TQ_ALARM_COUNT) {
        const tq_alarm_info_t &info = tq_alarm_log_info[alarm.id];
        zlog(priority, "%s %s (%s): %s", tq_alarm_log_class[info.class_], info.name, level, alarm.message);
    } else {
        zlog(priority, "alarm %u (%s): %s", static_cast<unsigned>(alarm.id), level, alarm.message);
    }
    return TQ_OK;
}

} // namespace tq
