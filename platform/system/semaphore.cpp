// SPDX-License-Identifier: GPL-2.0-or-later
// System V semaphores.
// Failure policy: every operation is undone by the kernel when its process dies, so a crash never leaves a
// semaphore held.  One that is gone is an error of its caller.
#include "platform/system/semaphore.hpp"

#include <cerrno>
#include <ctime>
#include <sys/ipc.h>
#include <sys/sem.h>

#ifdef __SANITIZE_THREAD__
#include <sanitizer/tsan_interface.h>
#endif

namespace tq {

namespace {

constexpr int access_mode = 0666; // the daemons run as several users

// A creator needs microseconds from making the set to giving it its value; one that takes longer than this
// has died in between.
constexpr int creator_wait_ms = 1000;

// semctl's argument; the C library leaves its declaration to the caller.
union SemaphoreArgument {
    int value;
    semid_ds *status;
};

void sleep_1_ms() noexcept
{
    const timespec pause{0, 1'000'000};
    nanosleep(&pause, nullptr);
}

// A set that was never given a value has neither an operation time nor, on Linux, a last user.
bool has_value(int id, bool &known) noexcept
{
    semid_ds status{};
    const int result = semctl(id, 0, IPC_STAT, SemaphoreArgument{.status = &status});
    known = result == 0;
    return status.sem_otime != 0 || semctl(id, 0, GETPID) > 0 || semctl(id, 0, GETVAL) > 0;
}

// One operation sets value and operation time together; it does nothing when somebody was faster.
int give_first_value(int id, int count) noexcept
{
    sembuf operations[] = {{0, 0, IPC_NOWAIT}, {0, static_cast<short>(count), 0}};
    if (semop(id, operations, 2) == 0 || errno == EAGAIN)
        return 0;
    return -1;
}

int operate(int id, short change) noexcept
{
    sembuf operation{0, change, SEM_UNDO};
    int result;
    do
        result = semop(id, &operation, 1);
    while (result < 0 && errno == EINTR);
    return result;
}

#ifdef __SANITIZE_THREAD__
// ThreadSanitizer does not know that System V semaphores order the threads of a process.
char *ordering_cell(int id) noexcept
{
    static char cells[64];
    return &cells[static_cast<unsigned>(id) % sizeof cells];
}
#endif

} // namespace

int open_semaphore(int &id, int key, int count) noexcept
{
    if (count < 1 || count > 0x7fff) {
        errno = EINVAL;
        return -1;
    }
    for (int attempt = 0; attempt < 3; ++attempt) {
        int found = semget(key, 1, IPC_CREAT | IPC_EXCL | access_mode);
        if (found >= 0) {
            if (give_first_value(found, count) < 0)
                return -1;
            id = found;
            return 0;
        }
        if (errno != EEXIST)
            return -1;
        found = semget(key, 1, 0);
        if (found < 0) {
            if (errno == ENOENT) // removed in between
                continue;
            return -1;
        }
        bool known = true;
        bool ready = has_value(found, known);
        for (int waited_ms = 0; known && !ready && waited_ms < creator_wait_ms; ++waited_ms) {
            sleep_1_ms();
            ready = has_value(found, known);
        }
        if (!known) {
            if (errno == EIDRM || errno == EINVAL)
                continue;
            return -1;
        }
        if (!ready && give_first_value(found, count) < 0)
            return -1;
        id = found;
        return 0;
    }
    return -1;
}

int take_semaphore(int id) noexcept
{
    const int result = operate(id, -1);
#ifdef __SANITIZE_THREAD__
    if (result == 0)
        __tsan_acquire(ordering_cell(id));
#endif
    return result;
}

int give_semaphore(int id) noexcept
{
#ifdef __SANITIZE_THREAD__
    __tsan_release(ordering_cell(id));
#endif
    return operate(id, 1);
}

} // namespace tq
