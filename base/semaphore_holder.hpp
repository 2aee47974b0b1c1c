// SPDX-License-Identifier: GPL-2.0-or-later
// Who keeps a semaphore that others wait for.
#pragma once

#include <sys/ipc.h>
#include <sys/sem.h>

#include <cstdio>
#include <cstring>

namespace base {

// Waiting for longer than this is worth a line in the log.
inline constexpr int long_wait_s = 5;

struct SemaphoreHolder {
    int process = -1; // the last one to change a semaphore that is 0 is the one who took it
    char line[160] = "";
};

// Who has the semaphore now, and the line that says so.
inline SemaphoreHolder holder_of(int semaphore) noexcept
{
    SemaphoreHolder holder;
    holder.process = ::semctl(semaphore, 0, GETPID);
    semid_ds status{};
    ::semctl(semaphore, 0, IPC_STAT, &status);

    char program[32] = "?"; // of a process that has ended or belongs to another world
    char path[32];
    std::snprintf(path, sizeof path, "/proc/%d/comm", holder.process);
    if (std::FILE *const file = std::fopen(path, "re")) {
        if (std::fgets(program, sizeof program, file))
            program[std::strcspn(program, "\n")] = '\0';
        std::fclose(file);
    }
    std::snprintf(holder.line, sizeof holder.line,
                  "semaphore 0x%x: waiting for process %d (%s), which has had it for more than %d s",
                  static_cast<unsigned>(status.sem_perm.__key), holder.process, program, long_wait_s);
    return holder;
}

} // namespace base
