// SPDX-License-Identifier: GPL-2.0-or-later
// The alarm store's semaphore: whoever looks at the store or changes it holds it.
// Failure policy: one that somebody removed is made again by the next user.
#pragma once

namespace tq {

// Creates or opens it and sets alarm_log_sem_id.  0, or -1 with errno set.
int open_alarm_semaphore() noexcept;
// Takes it, for however long its holder keeps it.  0, or -1 with errno set.
int take_alarm_semaphore() noexcept;

// Holds it while it lives; false, with errno set, when it could not be had.  Giving it back leaves errno
// alone.
class StoreGuard {
public:
    StoreGuard() noexcept : is_held_(take_alarm_semaphore() == 0) {}
    ~StoreGuard();
    StoreGuard(const StoreGuard &) = delete;
    StoreGuard &operator=(const StoreGuard &) = delete;

    explicit operator bool() const noexcept { return is_held_; }

private:
    bool is_held_;
};

} // namespace tq
