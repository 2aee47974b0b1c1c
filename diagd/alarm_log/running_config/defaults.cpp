// SPDX-License-Identifier: GPL-2.0-or-later
// The alarm log's defaults at start-up: every alarm as the catalogue has it, the flash level, the remote
// servers switched off.  What an operator changed comes back with the configuration file, which is read
// later.
// Failure policy: the first value that the database refuses ends it with a line on standard error;
// what follows keeps what the database has, and thresholds are not watched.
#include "diagd/alarm_log/actions/alarm_action.hpp"
#include "diagd/alarm_log/catalogue.hpp"
#include "diagd/alarm_log/thresholds/thresholds.hpp"
#include "diagd/core/start_report.hpp"
#include "diagd/core/state.hpp"

#include "tq_api.h"

#include <array>
#include <cstdio>

using namespace diagd;

namespace {

bool is_done(int code, std::string_view what)
{
    if (code == 0)
        return true;
    const char *const reason = tq_strerror(code);
    std::fprintf(stderr, "set alarm log %.*s failed : %s\n", print_length(what), what.data(), reason);
    goes_without("alarm defaults", reason);
    return false;
}

// The texts are whole fields of the catalogue and its name tables.
bool set_texts(std::uint16_t id, const tq_alarm_info_t &entry)
{
    const auto &level = tq_alarm_log_level[entry.default_level];
    const auto &type = tq_alarm_log_type[entry.type];
    const auto &class_name = tq_alarm_log_class[entry.class_];
    tq_database_t *const db = &g_diagd_db;
    return is_done(db_olt_alarm_log_set_alarm_name(id, db, entry.name, sizeof entry.name, 0), "name") &&
           is_done(db_olt_alarm_log_set_alarm_desc(id, db, entry.description, sizeof entry.description, 0),
                   "description") &&
           is_done(db_olt_alarm_log_set_alarm_level(id, db, level, sizeof level, 0), "level") &&
           is_done(db_olt_alarm_log_set_alarm_type(id, db, type, sizeof type, 0), "type") &&
           is_done(db_olt_alarm_log_set_alarm_class(id, db, class_name, sizeof class_name, 0), "class");
}

// The last switch applies what is pending of its alarm, so that an alarm is changed at once.
bool set_actions(std::uint16_t id, const tq_alarm_info_t &entry)
{
    for (const ActionSwitch &one : action_switches) {
        const std::uint8_t on = (entry.default_actions & one.default_bit) != 0 ? 1 : 0;
        const int apply = &one == &action_switches.back() ? 1 : 0;
        if (!is_done(one.set(id, &g_diagd_db, &on, sizeof on, apply), one.word))
            return false;
    }
    return true;
}

bool set_alarms()
{
    for (std::uint16_t id = 0; id < TQ_ALARM_COUNT; ++id)
        if (!set_texts(id, tq_alarm_log_info[id]) || !set_actions(id, tq_alarm_log_info[id]))
            return false;
    return true;
}

bool set_sinks()
{
    constexpr char flash_level[16] = "warning";
    constexpr std::array<std::uint8_t, 16> off{};
    tq_database_t *const db = &g_diagd_db;
    return is_done(db_olt_alarm_log_set_alarm_log_flash_level(db, flash_level, sizeof flash_level, 1),
                   "flash level") &&
           is_done(db_olt_alarm_log_set_remote_server_ipv4_enable(db, off.data(), off.size(), 1),
                   "remote server") &&
           is_done(db_olt_alarm_log_set_remote_server_ipv6_enable(db, off.data(), off.size(), 1),
                   "remote server");
}

} // namespace

int initial_alarm_log_config()
{
    if (set_alarms() && set_sinks())
        start_threshold_monitor();
    return 0;
}
