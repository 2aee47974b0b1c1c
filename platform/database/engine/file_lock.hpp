// SPDX-License-Identifier: GPL-2.0-or-later
// Locks between processes that the kernel releases with their holder, however it ends.
#pragma once

#include <sys/file.h>

#include <cerrno>
#include <chrono>
#include <thread>

#include "base/fd.hpp"

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

// A turn at writing, or at leaving: a program that unsubscribes and one that writes would wait for each
// other. Who does not get its turn in time goes on without.
class Turn {
public:
    Turn(const base::Fd &file, std::chrono::milliseconds wait) : file_(file), is_mine_(lock_file(file, wait))
    {
    }
    ~Turn()
    {
        if (is_mine_)
            unlock_file(file_);
    }
    Turn(const Turn &) = delete;
    Turn &operator=(const Turn &) = delete;

private:
    const base::Fd &file_;
    bool is_mine_;
};

} // namespace tq::db
