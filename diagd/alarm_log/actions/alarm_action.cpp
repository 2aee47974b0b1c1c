// SPDX-License-Identifier: GPL-2.0-or-later
// Actions of alarms in the database.
#include "diagd/alarm_log/actions/alarm_action.hpp"

#include "base/owner.hpp"
#include "diagd/core/state.hpp"

#include "tq_api.h"

namespace diagd {

namespace {

// Calls `visit(one)` for each switch that the word means, until it returns false.
template <typename Visit>
void for_switches(std::string_view action, Visit visit)
{
    for (const ActionSwitch &one : action_switches)
        if ((action == one.word || action == all_actions) && !visit(one))
            return;
}

int set(const ActionSwitch &one, std::uint16_t id, bool on, int apply)
{
    const std::uint8_t value = on ? 1 : 0;
    return one.set(id, &g_diagd_db, &value, sizeof value, apply);
}

} // namespace

ActionResult switch_now(std::uint16_t id, std::string_view action, bool on)
{
    ActionResult result;
    for_switches(action, [&](const ActionSwitch &one) {
        if (const int code = set(one, id, on, 1); code != 0)
            result = {code, one.word};
        return result.code == 0;
    });
    return result;
}

int switch_pending(std::uint16_t id, std::string_view action, bool on)
{
    int code = 0;
    for_switches(action, [&](const ActionSwitch &one) {
        code = set(one, id, on, 0);
        return true;
    });
    return code;
}

bool default_of(const tq_alarm_info_t &entry, std::string_view action)
{
    bool on = false;
    for_switches(action, [&](const ActionSwitch &one) {
        on = (entry.default_actions & one.default_bit) != 0;
        return false;
    });
    return on;
}

std::optional<AlarmConfiguration> read_alarm_configuration()
{
    char *xml = nullptr;
    const int result = db_olt_alarm_log_show_xml_alarm_id(&g_diagd_db, &xml);
    const base::MallocText owner{xml};
    if (result < 0)
        return std::nullopt;
    AlarmConfiguration configuration{};
    parsing_alarm_list_xml_data(xml, configuration.data());
    return configuration;
}

} // namespace diagd
