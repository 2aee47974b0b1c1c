// SPDX-License-Identifier: GPL-2.0-or-later
// Identities of a thread.  sysrepo makes its files, pipes and shared memory with the identity of whoever
// needs them first.  A daemon connects as root and lives on as the user who owns the repository, so root
// connects as that user.
//
// The functions of the C library change the ids of all threads, also of one that just then needs to be root;
// the system calls change the caller's only.
#pragma once

#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace tq::db {

inline bool set_thread_uid(uid_t uid)
{
    return ::syscall(SYS_setresuid, -1, uid, -1) == 0;
}

inline bool set_thread_gid(gid_t gid)
{
    return ::syscall(SYS_setresgid, -1, gid, -1) == 0;
}

// While it lives, a thread of root's acts as the owner of `folder`; any other stays what it is.
class OwnerIdentity {
public:
    explicit OwnerIdentity(const char *folder)
    {
        struct stat status {};
        if (uid_ != 0 || ::stat(folder, &status) != 0 || status.st_uid == 0)
            return;
        // the group first: the user has no right to change it
        is_group_changed_ = set_thread_gid(status.st_gid);
        is_user_changed_ = set_thread_uid(status.st_uid);
    }
    ~OwnerIdentity()
    {
        // Both only go back to ids that the process still has, real or saved.
        if (is_user_changed_)
            set_thread_uid(uid_);
        if (is_group_changed_)
            set_thread_gid(gid_);
    }
    OwnerIdentity(const OwnerIdentity &) = delete;
    OwnerIdentity &operator=(const OwnerIdentity &) = delete;

private:
    uid_t uid_ = ::geteuid();
    gid_t gid_ = ::getegid();
    bool is_group_changed_ = false;
    bool is_user_changed_ = false;
};

// Makes the thread root's while it lives, where the process was started as that.
class RootIdentity {
public:
    RootIdentity() { is_root_ = uid_ == 0 || set_thread_uid(0); }
    ~RootIdentity()
    {
        if (is_root_ && uid_ != 0)
            set_thread_uid(uid_);
    }
    RootIdentity(const RootIdentity &) = delete;
    RootIdentity &operator=(const RootIdentity &) = delete;
    explicit operator bool() const { return is_root_; }

private:
    uid_t uid_ = ::geteuid();
    bool is_root_ = false;
};

} // namespace tq::db
