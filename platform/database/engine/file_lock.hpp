// SPDX-License-Identifier: GPL-2.0-or-later
// Locks between processes that the kernel releases with their holder, however it ends.
#pragma once

#include "base/fd.hpp"

#include <sys/file.h>

#include <cerrno>
#include <chrono>
#include <thread>

namespace tq::db {

// Whether the lock was had within `wait`.
inline bool lock_file(const base::Fd &file, std::chrono::milliseconds wait)
{
    const auto deadline = std::chrono::steady_clock::now() + wait;
    while (::flock(file.get(), LOCK_EX | LOCK_NB) != 0) {
        if (errno != EWOULDBLOCK || std::chrono::steady_clock::now() >= deadline)
            return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    return true;
}

inline void unlock_file(const base::Fd &file)
{
    ::flock(file.get(), LOCK_UN);
}

// Holds the lock while it lives.  Who does not get it in time goes on without.
class FileLockGuard {
public:
    FileLockGuard(const base::Fd &file, std::chrono::milliseconds wait)
        : file_(file), is_held_(lock_file(file, wait))
    {
    }
    ~FileLockGuard()
    {
        if (is_held_)
            unlock_file(file_);
    }
    FileLockGuard(const FileLockGuard &) = delete;
    FileLockGuard &operator=(const FileLockGuard &) = delete;

private:
    const base::Fd &file_;
    bool is_held_;
};

} // namespace tq::db
