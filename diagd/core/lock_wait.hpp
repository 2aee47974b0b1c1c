// SPDX-License-Identifier: GPL-2.0-or-later
// Waiting for a semaphore on the main thread without keeping the sessions that do not need it.
//
// A handler that would wait for long is left as it stands, on its stack, and the event loop goes on on
// another stack until the semaphore is free.  Handlers need not know: they only take some time, as they do
// when a semaphore is waited for.  Nothing is run again and nothing is given up.
#pragma once

#include <atomic>

namespace diagd {

namespace detail {
// Set when the configuration has been read; before that, and in programs without lock_wait_init, nothing is
// done.
using LockWait = void (*)(int semaphore) noexcept;
inline constinit std::atomic<LockWait> lock_wait = nullptr;
inline constinit int is_loop_kept = 0;
inline constinit int waiting_handlers = 0;
} // namespace detail

// To be called before a semaphore is taken that others may keep for long; from any thread.  On the main
// thread it comes back when the semaphore was free a moment ago, or at once where the loop cannot go on
// without the caller.
inline void await_free(int semaphore) noexcept
{
    if (const detail::LockWait wait = detail::lock_wait.load(std::memory_order_acquire))
        wait(semaphore);
}

// Whether some handler waits, so that there are stacks besides the one that runs.
inline bool is_handler_waiting() noexcept
{
    return detail::waiting_handlers > 0;
}

// While one lives, what the main thread waits for stops the event loop.
class EventLoopKept {
public:
    EventLoopKept() noexcept { ++detail::is_loop_kept; }
    ~EventLoopKept() { --detail::is_loop_kept; }
    EventLoopKept(const EventLoopKept &) = delete;
    EventLoopKept &operator=(const EventLoopKept &) = delete;
};

} // namespace diagd

// From when the configuration has been read, handlers wait as above.
void lock_wait_init();
