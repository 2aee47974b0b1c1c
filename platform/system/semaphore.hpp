// SPDX-License-Identifier: GPL-2.0-or-later
// One-member System V semaphores.
#pragma once

namespace tq {

// Creates or opens; 0, or -1 with errno set.  See semaphore_create.
int open_semaphore(int &id, int key, int count) noexcept;

// Takes / gives back; 0, or -1 with errno set.
int take_semaphore(int id) noexcept;
int give_semaphore(int id) noexcept;

} // namespace tq
