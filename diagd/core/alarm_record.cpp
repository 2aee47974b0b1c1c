// SPDX-License-Identifier: GPL-2.0-or-later
// Filing alarm records; the failure policy stands in alarm_record.hpp.
#include "diagd/core/alarm_record.hpp"

#include "diagd/core/state.hpp"

#include "tq_api.h"

#include <mutex>

namespace {

// Keeps the database from being closed under a thread that files a record.
std::mutex filing;
bool stopped = false;

} // namespace

void diagd::file_alarm(std::uint16_t code, AlarmState state, const char *message) noexcept
{
    tq_alarm_req_t request{};
    request.alarm_id = code;
    request.state = static_cast<std::uint32_t>(state);
    const std::lock_guard lock{filing};
    if (!stopped)
        cli_log(&g_diagd_db, &request, "%s", message);
}

void diagd::stop_filing_alarms() noexcept
{
    const std::lock_guard lock{filing};
    stopped = true;
}
