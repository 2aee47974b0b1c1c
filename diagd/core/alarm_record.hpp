// SPDX-License-Identifier: GPL-2.0-or-later
// Alarm records of the board itself: a code of the catalogue, a state, a text.
#pragma once

#include <cstdint>

namespace diagd {

// Last word of a record; the alarm store only keeps it.
enum class AlarmState : std::uint32_t {
    off = 0,
    on = 1,
    event = 2, // something that happened, with no end of its own
};

// Files a record; from any thread.  A record that cannot be filed is the alarm library's to report.
void file_alarm(std::uint16_t code, AlarmState state, const char *message) noexcept;

// Waits for the record being filed and drops all that come: the database is about to go.
void stop_filing_alarms() noexcept;

} // namespace diagd
