// SPDX-License-Identifier: GPL-2.0-or-later
// Level and action switches of an alarm, and the level of the flash file.
// Failure policy: an alarm is never lost because the database has no answer; the catalogue has one.
#include "platform/alarms/alarm.hpp"
#include "platform/trace/tq_trace.hpp"
#include "tq_api.h"
#include "tq_database.h"

#include <array>

namespace tq {

namespace {

// An alarm that the catalogue does not have is one that an operator sends by hand, or that a daemon newer
// than this library raises: it is to be seen, and disturbs nobody.
constexpr std::uint8_t unknown_level = 1; // info
constexpr std::uint32_t unknown_actions = TQ_ACTION_PRINT | TQ_ACTION_RECORD;

using SwitchGetter = int (*)(std::uint16_t, tq_database_t *, void *, int *);

struct Switch {
    std::uint32_t action;
    SwitchGetter get;
};

constexpr std::array switches = {
    Switch{TQ_ACTION_PRINT, db_olt_alarm_log_get_action_print},
    Switch{TQ_ACTION_RECORD, db_olt_alarm_log_get_action_record},
    Switch{TQ_ACTION_TRAP, db_olt_alarm_log_get_action_trap},
    Switch{TQ_ACTION_REMOTE, db_olt_alarm_log_get_action_remote},
};

} // namespace

AlarmSettings alarm_settings(std::uint16_t alarm_id, tq_database_t *db) noexcept
{
    if (alarm_id >= TQ_ALARM_COUNT)
        return {unknown_level, unknown_actions};
    const tq_alarm_info_t &info = tq_alarm_log_info[alarm_id];
    AlarmSettings settings{static_cast<std::uint8_t>(info.default_level), info.default_actions};
    if (!db)
        return settings;

    char text[16 + 1] = "";
    int length = 16;
    if (db_olt_alarm_log_get_alarm_level(alarm_id, db, text, &length) == 0) {
        const int level = level_of(text);
        if (level < TQ_ALARM_LEVEL_COUNT)
            settings.level = static_cast<std::uint8_t>(level);
    }
    for (const Switch &one : switches) {
        std::uint8_t on = 0;
        length = 1;
        if (one.get(alarm_id, db, &on, &length) == 0)
            settings.actions = on ? settings.actions | one.action : settings.actions & ~one.action;
    }
    return settings;
}

} // namespace tq

int get_flash_level_from_database(tq_database_t *db)
{
    return tq::traced("get_flash_level_from_database", [&] {
        char text[16 + 1] = "";
        int length = 16;
        if (!db || db_olt_alarm_log_get_alarm_log_flash_level(db, text, &length) != 0)
            return -1;
        return tq::level_of(text);
    });
}
