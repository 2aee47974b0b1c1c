// SPDX-License-Identifier: GPL-2.0-or-later
// Alarm records of the board itself: an alarm of the catalogue, a state, a text.
#pragma once

#include "tq_alarms.h"

#include <chrono>
#include <cstdint>

namespace diagd {

// Last word of a record; the alarm store only keeps it.
enum class AlarmState : std::uint32_t {
    off = 0,
    on = 1,
    event = 2, // something that happened, with no end of its own
};

// Files a record; from any thread.  Waits for the alarm store while another process has it.  A record that
// cannot be filed is the alarm library's to report.
void file_alarm(tq_alarm_id alarm, AlarmState state, const char *message) noexcept;

// From now on records are dropped: the database is about to go.  Waits until those in the making are filed,
// but no longer than `limit`; false when one still is not.
[[nodiscard]] bool stop_filing_alarms(std::chrono::milliseconds limit) noexcept;

// For a process that ends while one of its threads waits for the alarm store.  Takes the store for the rest
// of the process, so that the thread cannot begin with a record which it has no time to finish; waits `limit`
// at most, after which it is still somebody else's.  The kernel gives it back.
void keep_alarm_store(std::chrono::milliseconds limit) noexcept;

} // namespace diagd
