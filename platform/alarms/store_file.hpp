// SPDX-License-Identifier: GPL-2.0-or-later
// The file of the alarm store, by its name in shared memory.
// Failure policy: a store appears under its name only when it is complete, so nobody ever sees half of one.
// What is there and was made by root or the daemon's user is left alone, with its records; one of another
// make (size, magic, version) is refused with EPROTO.  What any other user put there, of whatever kind, is
// removed by a process of root's, which says so in the log, and refused with EPERM by any other.
#pragma once

#include "base/fd.hpp"
#include "platform/alarms/chain.hpp"

namespace tq {

inline constexpr std::uint32_t store_capacity = TQ_ALARM_CAPACITY;
inline constexpr std::size_t store_size = AlarmChain::size(store_capacity);

// Opens the store, made when there is none; for whoever holds the store's semaphore.  Nothing, with errno
// set, when there is no usable store and none can be made: ENOENT, too, for a process that is neither root's
// nor of the daemon's user, which makes none.
base::Fd open_store() noexcept;

} // namespace tq
