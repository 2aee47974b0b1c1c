// SPDX-License-Identifier: GPL-2.0-or-later
// Names to numbers: alarm levels and alarm ids.
#include "platform/alarms/alarm.hpp"
#include "platform/trace/tq_trace.hpp"
#include "tq_api.h"

#include <cstring>

namespace tq {

int level_of(const char *keyword) noexcept
{
    for (int level = 0; keyword && level < TQ_ALARM_LEVEL_COUNT; ++level)
        if (std::strcmp(keyword, tq_alarm_log_level[level]) == 0)
            return level;
    return TQ_ALARM_LEVEL_ALL;
}

} // namespace tq

namespace {

// A name that stands twice, as an alarm and as an event, means the alarm: the lower id.
int id_of(const char *name) noexcept
{
    for (int id = 0; name && id < TQ_ALARM_COUNT; ++id)
        if (std::strncmp(name, tq_alarm_log_info[id].name, sizeof tq_alarm_log_info[id].name) == 0)
            return id;
    return -1;
}

} // namespace

int get_level_num_by_string(const char *keyword)
{
    return tq::traced(
        "get_level_num_by_string", [&] { return tq::level_of(keyword); }, tq::arg("keyword", keyword));
}

int get_alarm_id_by_name(const char *name)
{
    return tq::traced(
        "get_alarm_id_by_name", [&] { return id_of(name); }, tq::arg("name", name));
}
