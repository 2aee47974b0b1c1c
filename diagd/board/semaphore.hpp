// SPDX-License-Identifier: GPL-2.0-or-later
// Owner of a System V semaphore for as long as it lives.  These semaphores are shared by the processes of the
// box and are not recursive: a holder that takes one again waits for ever.
//
// Failure policy: one that somebody has removed stops nobody, because a board that is used by one too many is
// better than one whose fans are left alone; it is said in the log, once.
#pragma once

#include "tq_api.h"

namespace diagd {

class Semaphore {
public:
    explicit Semaphore(int id) noexcept;
    ~Semaphore() { release(); }
    Semaphore(const Semaphore &) = delete;
    Semaphore &operator=(const Semaphore &) = delete;

    // Gives it back at once; a second call does nothing.  One that could not be taken is not given back: its
    // value would rise and two holders get in.
    void release() noexcept
    {
        if (held_)
            semaphore_v(id_);
        held_ = false;
    }

private:
    int id_;
    bool held_;
};

} // namespace diagd
