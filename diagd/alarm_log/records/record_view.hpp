// SPDX-License-Identifier: GPL-2.0-or-later
// What the alarm-log commands see and remove: selections of records over the chain.
#pragma once

#include "diagd/alarm_log/records/record_chain.hpp"

#include <cstdint>
#include <functional>

namespace diagd {

// 0..7, or TQ_ALARM_LEVEL_ALL for records of every level.  A level selects exactly itself, not what is above.
using LevelFilter = std::uint8_t;

using RecordSink = std::function<void(const tq_alarm_slot_t &)>;

// Valid records of the level, oldest first.  Returns how many.
int view_all(const RecordChain &chain, LevelFilter level, const RecordSink &sink);

// The `count` oldest slots: a slot without a record uses up one of them and shows nothing.
void view_oldest(const RecordChain &chain, std::uint16_t count, const RecordSink &sink);

// The `count` newest slots, oldest of them first, counted in the same way.
void view_newest(const RecordChain &chain, std::uint16_t count, const RecordSink &sink);

// Has the alarm library delete the valid records of the level.
void delete_records(const RecordChain &chain, LevelFilter level);

} // namespace diagd
