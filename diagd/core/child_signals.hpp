// SPDX-License-Identifier: GPL-2.0-or-later
// What programs that the daemon starts and waits for itself find and leave.
#pragma once

#include <csignal>
#include <pthread.h>
#include <unistd.h>

namespace diagd {

// Keeps what the daemon has open from the programs it starts from now on.  Libraries leave locks and pipes
// open to them: one that outlived a killed daemon would keep them from the next.
inline void keep_descriptors() noexcept
{
    close_range(STDERR_FILENO + 1, ~0U, CLOSE_RANGE_CLOEXEC);
}

// Default handling of SIGCHLD, and no signal blocked, for as long as it lives: what is run meanwhile can be
// waited for and interrupted like any program.
class ChildSignals {
public:
    ChildSignals() noexcept : handler_(std::signal(SIGCHLD, SIG_DFL))
    {
        sigset_t none;
        sigemptyset(&none);
        pthread_sigmask(SIG_SETMASK, &none, &mask_);
    }
    ~ChildSignals()
    {
        pthread_sigmask(SIG_SETMASK, &mask_, nullptr);
        std::signal(SIGCHLD, handler_);
    }
    ChildSignals(const ChildSignals &) = delete;
    ChildSignals &operator=(const ChildSignals &) = delete;

private:
    void (*handler_)(int);
    sigset_t mask_;
};

} // namespace diagd
