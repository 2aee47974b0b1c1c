// SPDX-License-Identifier: GPL-2.0-or-later
// sysrepo makes its files, pipes and shared memory with the identity of whoever needs them first.  A daemon
// connects as root and lives on as the user who owns the repository, so root connects as that user.
#pragma once

#include <sys/stat.h>
#include <unistd.h>

namespace tq::db {

// While it lives, a process of root acts as the owner of `folder`; any other process stays what it is.
// Effective ids are the whole process's: to be used before there are other threads that mind.
class OwnerIdentity {
public:
    explicit OwnerIdentity(const char *folder)
    {
        struct stat status {};
        if (uid_ != 0 || ::stat(folder, &status) != 0 || status.st_uid == 0)
            return;
        // the group first: the user has no right to change it
        is_group_changed_ = ::setegid(status.st_gid) == 0;
        is_user_changed_ = ::seteuid(status.st_uid) == 0;
    }
    ~OwnerIdentity()
    {
        // Both only go back to ids that the process still has, real or saved.
        if (is_user_changed_ && ::seteuid(uid_) != 0)
            return;
        if (is_group_changed_ && ::setegid(gid_) != 0)
            return;
    }
    OwnerIdentity(const OwnerIdentity &) = delete;
    OwnerIdentity &operator=(const OwnerIdentity &) = delete;

private:
    uid_t uid_ = ::geteuid();
    gid_t gid_ = ::getegid();
    bool is_group_changed_ = false;
    bool is_user_changed_ = false;
};

} // namespace tq::db
