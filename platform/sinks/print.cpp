// SPDX-License-Identifier: GPL-2.0-or-later
// The print action: an alarm goes to the log of the process that raised it.  The calling thread must be one
// that libfrr knows.  The log is read on terminals, and one alarm is one line of it, whoever wrote the
// message.
#include "base/printable.hpp"
#include "platform/alarms/alarm.hpp"
#include "platform/sinks/syslog_severity.hpp"
#include "tq_api.h"
#include "tq_errno.h"

#include <zebra.h>

#include <log.h>

namespace tq {

int print_alarm(const Alarm &alarm) noexcept
{
    const char *level = tq_alarm_log_level[alarm.level];
    const std::string message = base::printable(alarm.message);
    const int priority = syslog_severity[alarm.level];
    if (alarm.id < TQ_ALARM_COUNT) {
        const tq_alarm_info_t &info = tq_alarm_log_info[alarm.id];
        zlog(priority, "%s %s (%s): %s", tq_alarm_log_class[info.class_], info.name, level, message.c_str());
    } else {
        zlog(priority, "alarm %u (%s): %s", static_cast<unsigned>(alarm.id), level, message.c_str());
    }
    return TQ_OK;
}

} // namespace tq
