// SPDX-License-Identifier: GPL-2.0-or-later
// Taking a semaphore that another process has.
#pragma once

#include <ctime>

namespace tq {

// Adds `change`, undone when the process dies; waits `longest`, or for ever.  0, or -1 with errno set: EAGAIN
// after that time.
int operate(int id, short change, const timespec *longest) noexcept;

// Takes it.  A process that keeps it for more than five seconds is named in the log, once in a wait; the
// calling thread must be one that libfrr knows.  0, or -1 with errno set.
int take_however_long(int id) noexcept;

} // namespace tq
