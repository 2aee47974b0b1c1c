// SPDX-License-Identifier: GPL-2.0-or-later
// Waiting for a semaphore (see semaphore_wait.hpp).
// Failure policy: the lock is never taken from a process that lives, even a stopped one: what it guards may
// be half changed.  The log names the process, so that somebody can do something about it.
#include "platform/system/semaphore_wait.hpp"

#include "base/semaphore_holder.hpp"

#include <cerrno>

#include <zebra.h>

#include <log.h>

namespace tq {

int operate(int id, short change, const timespec *longest) noexcept
{
    sembuf operation{0, change, SEM_UNDO};
    int result;
    do
        result = semtimedop(id, &operation, 1, longest);
    while (result < 0 && errno == EINTR);
    return result;
}

int take_however_long(int id) noexcept
{
    const timespec patience{base::long_wait_s, 0};
    int named = -1;
    for (;;) {
        const int result = operate(id, -1, &patience);
        if (result == 0 || errno != EAGAIN)
            return result;
        const base::SemaphoreHolder holder = base::holder_of(id);
        if (holder.process >= 0 && holder.process != named)
            zlog_warn("%s", holder.line);
        named = holder.process;
    }
}

} // namespace tq
