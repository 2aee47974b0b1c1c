// SPDX-License-Identifier: GPL-2.0-or-later
// Reading the configuration of all alarms at once.
#include "diagd/alarm_log/running_config/alarm_configuration.hpp"

#include "base/owner.hpp"
#include "diagd/core/state.hpp"

#include "tq_api.h"

namespace diagd {

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
