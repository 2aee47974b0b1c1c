// SPDX-License-Identifier: GPL-2.0-or-later
// Making and opening the file of the alarm store (see store_file.hpp).
#include "platform/alarms/store_file.hpp"

#include "base/box_identity.hpp"
#include "base/foreign_file.hpp"
#include "base/thread_identity.hpp"
#include "platform/system/start_log.hpp"

#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace tq {

namespace {

constexpr char store_folder[] = "/dev/shm"; // where the C library keeps shared memory objects
constexpr char store_path[] = "/dev/shm/tq_alarm_log";

// Lets the box's group in and nobody else.  Whoever may not change that takes the store as it is.
void set_access(int fd, const struct stat &status) noexcept
{
    const gid_t group = base::box_gid().value_or(status.st_gid);
    const auto set = [&] {
        return (status.st_gid == group || fchown(fd, static_cast<uid_t>(-1), group) == 0) &&
               ((status.st_mode & ACCESSPERMS) == base::shared_mode || fchmod(fd, base::shared_mode) == 0);
    };
    if (!set()) {
        const base::RootIdentity root;
        set();
    }
}

// Makes an empty store and gives it the name.  EEXIST when another process was faster.
bool create_store() noexcept
{
    // What another user makes is not taken for the box's.
    if (!base::is_box_owner(geteuid())) {
        errno = ENOENT;
        return false;
    }
    const base::Fd fd(open(store_folder, O_TMPFILE | O_RDWR | O_CLOEXEC, 0));
    struct stat status {};
    if (!fd || fstat(fd.get(), &status) < 0)
        return false;
    // One that stays root's is as good.
    [[maybe_unused]] const int given =
        geteuid() == 0 ? fchown(fd.get(), base::daemon_uid().value_or(0), static_cast<gid_t>(-1)) : 0;
    set_access(fd.get(), status);
    // All pages at once: a full file system shows here and not as a fault at some later record.
    if (const int error = posix_fallocate(fd.get(), 0, static_cast<off_t>(store_size)); error != 0) {
        errno = error;
        return false;
    }
    void *memory = mmap(nullptr, store_size, PROT_READ | PROT_WRITE, MAP_SHARED, fd.get(), 0);
    if (memory == MAP_FAILED)
        return false;
    AlarmChain::format(memory, store_capacity);
    munmap(memory, store_size);
    char self[32];
    std::snprintf(self, sizeof self, "/proc/self/fd/%d", fd.get());
    return linkat(AT_FDCWD, self, AT_FDCWD, store_path, AT_SYMLINK_FOLLOW) == 0;
}

// True: what had the name has it no longer.
bool remove_foreign(uid_t owner) noexcept
{
    if (!base::remove_foreign_file(store_path))
        return false;
    char line[160];
    std::snprintf(line, sizeof line, "%s was made by user %u, who is neither root nor the daemon's: removed",
                  store_path, static_cast<unsigned>(owner));
    warn_from_the_start(line);
    return true;
}

// Whether it has the size and the marks of a store; EPROTO otherwise.
bool is_store(int fd, const struct stat &status) noexcept
{
    AlarmTrailer trailer{};
    if (S_ISREG(status.st_mode) && status.st_size == static_cast<off_t>(store_size) &&
        pread(fd, &trailer, sizeof trailer, AlarmChain::trailer_offset(store_capacity)) == sizeof trailer &&
        AlarmChain::is_ours(trailer, store_capacity))
        return true;
    errno = EPROTO;
    return false;
}

base::Fd open_named() noexcept
{
    const auto open_it = [] { return open(store_path, O_RDWR | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC); };
    base::Fd fd(open_it());
    if (!fd && errno == EACCES) {
        const base::RootIdentity root; // of root's own, with another mode
        fd.reset(open_it());
    }
    return fd;
}

} // namespace

base::Fd open_store() noexcept
{
    for (int attempt = 0; attempt < 3; ++attempt) {
        // Who owns the name is looked at first: what others put there may be anything, and is not opened.
        struct stat status {};
        if (lstat(store_path, &status) < 0) {
            if (errno != ENOENT || (!create_store() && errno != EEXIST))
                return {};
            continue;
        }
        if (!base::is_box_owner(status.st_uid)) {
            if (!remove_foreign(status.st_uid))
                return {};
            continue;
        }
        base::Fd fd = open_named();
        if (!fd && errno != ENOENT)
            return {};
        if (!fd || fstat(fd.get(), &status) < 0 || !base::is_box_owner(status.st_uid))
            continue; // exchanged in between
        set_access(fd.get(), status);
        return is_store(fd.get(), status) ? std::move(fd) : base::Fd{};
    }
    return {};
}

} // namespace tq
