// SPDX-License-Identifier: GPL-2.0-or-later
// What happens when an alarm is raised: its four actions, each with a switch in the database.
#pragma once

#include "tq_database.h"

#include <array>
#include <cstdint>
#include <optional>
#include <string_view>

namespace diagd {

struct ActionSwitch {
    std::string_view word;
    int (*set)(std::uint16_t id, tq_database_t *, const void *value, int size, int apply);
    int (*get)(std::uint16_t id, tq_database_t *, void *value, int *length);
    std::uint32_t default_bit;                 // in an entry's default actions
    std::uint32_t tq_alarm_cfg_t::*configured; // in the configuration of all alarms
    const char *help;
};

// In the order in which they are changed and shown.
inline constexpr auto action_switches = std::to_array<ActionSwitch>({
    {"print", db_olt_alarm_log_set_action_print, db_olt_alarm_log_get_action_print, TQ_ACTION_PRINT,
     &tq_alarm_cfg_t::print, "Print in the daemon's log.\n"},
    {"record", db_olt_alarm_log_set_action_record, db_olt_alarm_log_get_action_record, TQ_ACTION_RECORD,
     &tq_alarm_cfg_t::record, "Record in the alarm log.\n"},
    {"trap", db_olt_alarm_log_set_action_trap, db_olt_alarm_log_get_action_trap, TQ_ACTION_TRAP,
     &tq_alarm_cfg_t::trap, "Send a trap.\n"},
    {"remote", db_olt_alarm_log_set_action_remote, db_olt_alarm_log_get_action_remote, TQ_ACTION_REMOTE,
     &tq_alarm_cfg_t::remote, "Send to the remote log servers.\n"},
});

// Every function below takes one of the words above, or this one for all four.  Another word changes nothing
// and is no failure.
inline constexpr std::string_view all_actions = "all";

struct ActionResult {
    int code = 0;            // of the platform
    std::string_view failed; // the switch that it is about
};

// Each switch takes effect at once.  The first that fails ends it: those before stay changed.
[[nodiscard]] ActionResult switch_now(std::uint16_t id, std::string_view action, bool on);

// Left pending until the database is told to apply.  With several switches the result is that of the last.
[[nodiscard]] int switch_pending(std::uint16_t id, std::string_view action, bool on);

// The entry's own default for the action.  For all four it is that of print.
[[nodiscard]] bool default_of(const tq_alarm_info_t &entry, std::string_view action);

// Level and actions of every alarm, by its id.  What the database does not say stays without a level and
// switched off.
using AlarmConfiguration = std::array<tq_alarm_cfg_t, TQ_ALARM_COUNT>;

// Nothing when the database cannot be read.
[[nodiscard]] std::optional<AlarmConfiguration> read_alarm_configuration();

} // namespace diagd
