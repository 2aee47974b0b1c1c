// SPDX-License-Identifier: GPL-2.0-or-later
// A shared file that somebody cuts short takes its pages away from under those who have it mapped: the next
// access is SIGBUS.  No look at the size beforehand prevents that, for it can be cut after the look.
//
// So the fault is caught: empty private memory takes the place of the whole mapping, and the access goes on
// there. A store of zeros has no records, and a walk along its links ends within its capacity.  Whoever uses
// the store asks afterwards whether it was there all the time.
#pragma once

#include <cstddef>

namespace tq {

// From now on the store lies here; one at a time.  The handler of SIGBUS is this library's then, and hands on
// what is not about the store to the one before.  Threads that use the store must not block the signal.
void guard_store(void *memory, std::size_t size) noexcept;

// Whether a fault has replaced the memory since guard_store.
bool is_store_lost() noexcept;

} // namespace tq
