// SPDX-License-Identifier: GPL-2.0-or-later
// Waiting for a semaphore (see semaphore_wait.hpp).
// Failure policy: the lock is never taken from a process that lives, even a stopped one: what it guards may
// be half changed.  The log names the process, so that somebody can do something about it.
#include "platform/system/semaphore_wait.hpp"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <sys/ipc.h>
#include <sys/sem.h>

#include <zebra.h>

#include <log.h>

namespace tq {

namespace {

constexpr int named_after_s = 5;

// Program of a process, as /proc names it; "?" for one that has ended or belongs to another world.
void name_program(int pid, char (&name)[32]) noexcept
{
    char path[32];
    std::snprintf(path, sizeof path, "/proc/%d/comm", pid);
    std::strcpy(name, "?");
    if (std::FILE *const file = std::fopen(path, "re")) {
        if (std::fgets(name, sizeof name, file))
            name[std::strcspn(name, "\n")] = '\0';
        std::fclose(file);
    }
}

} // namespace

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
    const timespec patience{named_after_s, 0};
    int named = -1;
    for (;;) {
        const int result = operate(id, -1, &patience);
        if (result == 0 || errno != EAGAIN)
            return result;
        // The last one to change a semaphore that is 0 is the one who took it.
        const int holder = semctl(id, 0, GETPID);
        if (holder < 0 || holder == named)
            continue;
        named = holder;
        semid_ds status{};
        semctl(id, 0, IPC_STAT, &status);
        char program[32];
        name_program(holder, program);
        zlog_warn("semaphore 0x%x: waiting for process %d (%s), which has had it for more than %d s",
                  status.sem_perm.__key, holder, program, named_after_s);
    }
}

} // namespace tq
