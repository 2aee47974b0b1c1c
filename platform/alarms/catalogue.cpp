// SPDX-License-Identifier: GPL-2.0-or-later
// The alarm catalogue, made from the rows of tq_alarms.def, and the names of levels, types and classes.
#include "tq_api.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>

char tq_alarm_log_level[TQ_ALARM_LEVEL_COUNT][16] = {
    "debug", "info", "notice", "warning", "major", "critical", "alert", "emerg",
};
char tq_alarm_log_type[][16] = {"environment", "equipment", "communication", "processing"};
char tq_alarm_log_class[][8] = {"alarm", "event"};

namespace {

enum class Class : std::uint32_t { alarm, event };
enum class Type : std::uint32_t { environment, equipment, communication, processing };
enum class Group : std::uint32_t { global, onu, pon, route };
enum : std::uint32_t { level_info = 1, level_major = 4 };

constexpr std::uint32_t usual_actions = TQ_ACTION_PRINT | TQ_ACTION_RECORD;
// Threshold alarms are switched on together with their thresholds; a fresh system has none.
constexpr std::uint32_t no_actions = 0;

template <std::size_t N, std::size_t D>
consteval tq_alarm_info_t entry(std::uint16_t id, const char (&name)[N], const char (&description)[D],
                                Class class_, Type type, std::uint32_t actions, Group group)
{
    static_assert(N <= sizeof tq_alarm_info_t::name && D <= sizeof tq_alarm_info_t::description);
    tq_alarm_info_t info{};
    info.id = id;
    std::copy_n(name, N, info.name);
    std::copy_n(description, D, info.description);
    info.default_level = class_ == Class::alarm ? level_major : level_info;
    info.type = static_cast<std::uint32_t>(type);
    info.default_actions = actions;
    info.class_ = static_cast<std::uint32_t>(class_);
    info.group = static_cast<std::uint32_t>(group);
    return info;
}

constexpr bool ids_are_places()
{
    std::size_t place = 0;
#define TQ_ROW(id, ...)                                                                                      \
    if (place++ != id)                                                                                       \
        return false;
#include "tq_alarms.def"
    return true;
}
static_assert(ids_are_places(), "rows of tq_alarms.def are only ever added at the end");

} // namespace

constinit tq_alarm_info_t tq_alarm_log_info[TQ_ALARM_COUNT] = {
#define TQ_ROW(id, ID, name, description, class_, type, group, actions, bulk)                                \
    entry(id, name, description, Class::class_, Type::type, actions, Group::group),
#include "tq_alarms.def"
};
