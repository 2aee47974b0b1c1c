// SPDX-License-Identifier: GPL-2.0-or-later
// What programs that the daemon starts and waits for itself find and leave.
#pragma once

#include <csignal>
#include <pthread.h>

namespace diagd {

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
