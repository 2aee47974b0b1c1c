// SPDX-License-Identifier: GPL-2.0-or-later
// One-member System V semaphores, and the alarm store's one in particular.
#pragma once

namespace tq {

// Creates or opens; 0, or -1 with errno set.  See semaphore_create.
int open_semaphore(int &id, int key, int count) noexcept;

// Takes / gives back; 0, or -1 with errno set.
int take_semaphore(int id) noexcept;
int give_semaphore(int id) noexcept;

// Creates or opens the alarm store's semaphore and sets alarm_log_sem_id.
int open_alarm_semaphore() noexcept;
// Takes the alarm store's semaphore; one that was removed under the process is made anew.
int take_alarm_semaphore() noexcept;

} // namespace tq
