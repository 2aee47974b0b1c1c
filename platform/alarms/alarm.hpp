// SPDX-License-Identifier: GPL-2.0-or-later
// An alarm on its way through its actions.
#pragma once

#include "tq_types.h"

#include <cstdint>
#include <ctime>

namespace tq {

// 0..7, or TQ_ALARM_LEVEL_ALL for what is no level.
int level_of(const char *keyword) noexcept;

// How an alarm is configured: level 0..7 and TQ_ACTION_ bits.
struct AlarmSettings {
    std::uint8_t level = 0;
    std::uint32_t actions = 0;
};

// From the database, each value by itself; one that cannot be read, or was never set, is the catalogue's.
AlarmSettings alarm_settings(std::uint16_t alarm_id, tq_database_t *db) noexcept;

// Private enterprise number of what leaves the OLT: structured data of log messages, the MIB of the traps.
// It is the one reserved for documentation (RFC 5612); a maker puts its own here and in OLT-ALARM-MIB.
inline constexpr unsigned enterprise_number = 32473;

struct Alarm {
    std::uint16_t id;
    std::uint8_t level;
    std::tm time;        // local
    const char *message; // never NULL, not yet cut to the size of a record
    int microseconds = 0;
    tq_alarm_req_t request{};    // what the alarm is about
    tq_database_t *db = nullptr; // where the log servers are configured; may be missing
};

// The actions.  Each gives 0 or a platform error code, and none waits for anything but a lock of this box.
int record_alarm(const Alarm &alarm) noexcept;
int print_alarm(const Alarm &alarm) noexcept;
int remote_alarm(const Alarm &alarm) noexcept;
int trap_alarm(const Alarm &alarm) noexcept;

} // namespace tq
