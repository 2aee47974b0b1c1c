// SPDX-License-Identifier: GPL-2.0-or-later
// Identities of a thread.  The functions of the C library change the ids of all threads, also of one that
// just then needs to be root; the system calls change the caller's only.
#pragma once

#include <sys/syscall.h>
#include <unistd.h>

namespace base {

inline bool set_thread_uid(uid_t uid)
{
    return ::syscall(SYS_setresuid, -1, uid, -1) == 0;
}

inline bool set_thread_gid(gid_t gid)
{
    return ::syscall(SYS_setresgid, -1, gid, -1) == 0;
}

// Makes the thread root's while it lives, where the process was started as that.
class RootIdentity {
public:
    RootIdentity() : is_root_(uid_ == 0 || set_thread_uid(0)) {}
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
    bool is_root_;
};

} // namespace base
