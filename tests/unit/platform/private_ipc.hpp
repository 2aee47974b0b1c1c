// SPDX-License-Identifier: GPL-2.0-or-later
// Linked into a test, gives the whole test program its own /dev/shm and its own System V semaphores before
// any test runs.
#pragma once

// Empties the program's /dev/shm and removes its semaphore sets.
void clear_private_ipc();
