// SPDX-License-Identifier: GPL-2.0-or-later
// The alarm store's semaphore (see store_semaphore.hpp).
#include "platform/alarms/store_semaphore.hpp"

#include "platform/system/semaphore.hpp"
#include "tq_api.h"

#include <cerrno>

int alarm_log_sem_id = -1;

namespace tq {

namespace {

constexpr int alarm_key = 0x102411; // next to the board's

} // namespace

int open_alarm_semaphore() noexcept
{
    return open_semaphore(alarm_log_sem_id, alarm_key, 1);
}

int take_alarm_semaphore() noexcept
{
    int result = alarm_log_sem_id < 0 ? -1 : take_semaphore(alarm_log_sem_id);
    if (result < 0 && (alarm_log_sem_id < 0 || errno == EIDRM || errno == EINVAL)) {
        if (open_alarm_semaphore() < 0)
            return -1;
        result = take_semaphore(alarm_log_sem_id);
    }
    return result;
}

StoreGuard::~StoreGuard()
{
    const int saved = errno;
    if (is_held_)
        give_semaphore(alarm_log_sem_id);
    errno = saved;
}

} // namespace tq
