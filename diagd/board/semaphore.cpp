// SPDX-License-Identifier: GPL-2.0-or-later
// Taking a semaphore; the failure policy stands in semaphore.hpp.
#include "diagd/board/semaphore.hpp"

#include "diagd/core/frr.hpp"
#include "diagd/core/lock_wait.hpp"

#include <atomic>
#include <cerrno>

namespace {

bool take(int id) noexcept
{
    diagd::await_free(id);
    return semaphore_p(id) >= 0;
}

} // namespace

diagd::Semaphore::Semaphore(int id) noexcept : id_(id), held_(take(id))
{
    static std::atomic<int> reported = -1;
    if (!held_ && reported.exchange(id_, std::memory_order_relaxed) != id_)
        zlog_err("semaphore %d is gone: %s; what it guards is used without it until the daemon is restarted",
                 id_, safe_strerror(errno));
}
