// SPDX-License-Identifier: GPL-2.0-or-later
// The daemon's worker threads.  Each is made known to libfrr, which ends the process at the first log line of
// a thread that it does not know, carries a name, and leaves the daemon's signals to the event loop.
#pragma once

namespace diagd {

enum class ThreadEnd {
    detached, // runs until the process ends
    joinable, // may return
};

// Starts a thread of the process's life.  `name` is at most 15 characters, as shown by ps and top, and a
// literal; `body` is the thread's whole work.  False when the thread was refused: pthread_create is taken to
// report that with a negative value.  Its positive error codes count as started, but there is then no thread.
[[nodiscard]] bool start_worker(const char *name, void (*body)() noexcept, ThreadEnd end) noexcept;

// Starts one that does something and ends, as above.  False: there is none, whatever the reason.
[[nodiscard]] bool start_helper(const char *name, void (*body)() noexcept) noexcept;

} // namespace diagd
