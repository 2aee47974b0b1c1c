// SPDX-License-Identifier: GPL-2.0-or-later
// System V semaphores.
// Failure policy: every operation is undone by the kernel when its process dies, so a crash never leaves a
// semaphore held.  One that is gone is an error of its caller.  One that a process keeps, stopped or at work,
// is waited for however long that takes, and the log names the process.  One that was made by nobody of the
// box is not used: root removes it and makes another, any other process gets EPERM.
#include "platform/system/semaphore.hpp"

#include "base/box_identity.hpp"
#include "base/thread_identity.hpp"
#include "platform/system/semaphore_wait.hpp"
#include "platform/system/start_log.hpp"

#include <cerrno>
#include <cstdio>
#include <ctime>
#include <sys/ipc.h>
#include <sys/sem.h>
#include <sys/stat.h>
#include <unistd.h>

#ifdef __SANITIZE_THREAD__
#include <sanitizer/tsan_interface.h>
#endif

namespace tq {

namespace {

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

// Of any set, as far as this process can be root; EACCES of one that others keep to themselves.
bool status_of(int id, semid_ds &status) noexcept
{
    if (semctl(id, 0, IPC_STAT, SemaphoreArgument{.status = &status}) == 0)
        return true;
    if (errno != EACCES)
        return false;
    const base::RootIdentity root;
    return semctl(id, 0, IPC_STAT, SemaphoreArgument{.status = &status}) == 0;
}

// A set that was never given a value has neither an operation time nor, on Linux, a last user.
bool has_value(int id, bool &known) noexcept
{
    semid_ds status{};
    known = status_of(id, status);
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

// A maker keeps all rights in what it made, whoever it has given it to since.
bool is_foreign(const semid_ds &status) noexcept
{
    return !base::is_box_owner(status.sem_perm.cuid) || !base::is_box_owner(status.sem_perm.uid);
}

// Lets the owner and the box's group in and nobody else.  Whoever may not change that takes the set as it is.
void set_access(int id, semid_ds status, uid_t owner) noexcept
{
    ipc_perm &access = status.sem_perm;
    const gid_t group = base::box_gid().value_or(access.gid);
    if ((access.mode & ACCESSPERMS) == base::shared_mode && access.gid == group && access.uid == owner)
        return;
    access.mode = base::shared_mode;
    access.gid = group;
    access.uid = owner;
    if (semctl(id, 0, IPC_SET, SemaphoreArgument{.status = &status}) < 0 && errno == EPERM) {
        const base::RootIdentity root;
        semctl(id, 0, IPC_SET, SemaphoreArgument{.status = &status});
    }
}

// 0, or -1 with errno set.
int make(int &id, int key, int count) noexcept
{
    // What another user makes is not taken for the box's.
    if (!base::is_box_owner(geteuid())) {
        errno = ENOENT;
        return -1;
    }
    const int made = semget(key, 1, IPC_CREAT | IPC_EXCL | base::shared_mode);
    if (made < 0)
        return -1;
    semid_ds status{};
    if (!status_of(made, status))
        return -1;
    set_access(made, status, base::daemon_uid().value_or(status.sem_perm.uid));
    if (give_first_value(made, count) < 0)
        return -1;
    id = made;
    return 0;
}

// 0, or -1 with errno set.
int remove_foreign(int id, int key, const semid_ds &status) noexcept
{
    const base::RootIdentity root;
    if (!root) {
        errno = EPERM;
        return -1;
    }
    if (semctl(id, 0, IPC_RMID) < 0)
        return errno == EIDRM || errno == EINVAL ? 0 : -1;
    char line[160];
    std::snprintf(line, sizeof line,
                  "semaphore 0x%x was made by user %u, who is neither root nor the daemon's: removed", key,
                  static_cast<unsigned>(status.sem_perm.cuid));
    warn_from_the_start(line);
    return 0;
}

// One that its maker has left without a value gets it here.
int await_value(int id, int key, int count) noexcept
{
    bool known = true;
    bool ready = has_value(id, known);
    int waited_ms = 0;
    for (; known && !ready && waited_ms < creator_wait_ms; ++waited_ms) {
        sleep_1_ms();
        ready = has_value(id, known);
    }
    if (!known)
        return -1;
    if (ready)
        return 0;
    if (give_first_value(id, count) < 0)
        return -1;
    char line[120];
    std::snprintf(line, sizeof line, "semaphore 0x%x had no value: its maker has died; it is %d now", key,
                  count);
    warn_from_the_start(line);
    return 0;
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
        const int found = semget(key, 1, 0);
        semid_ds status{};
        if (found < 0) {
            if (errno != ENOENT)
                return -1;
            if (make(id, key, count) == 0)
                return 0;
            if (errno != EEXIST)
                return -1;
            continue; // somebody was faster
        }
        int result = status_of(found, status) ? 0 : -1;
        if (result == 0 && is_foreign(status)) {
            if (remove_foreign(found, key, status) < 0)
                return -1;
            continue;
        }
        if (result == 0) {
            set_access(found, status, status.sem_perm.uid);
            result = await_value(found, key, count);
        }
        if (result == 0) {
            id = found;
            return 0;
        }
        if (errno != EIDRM && errno != EINVAL) // removed in between
            return -1;
    }
    return -1;
}

int take_semaphore(int id) noexcept
{
    const int result = take_however_long(id);
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
    return operate(id, 1, nullptr);
}

} // namespace tq
