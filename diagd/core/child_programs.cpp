// SPDX-License-Identifier: GPL-2.0-or-later
// Programs that the daemon starts and waits for itself (see child_programs.hpp).
#include "diagd/core/child_programs.hpp"

#include <pthread.h>
#include <unistd.h>

#include <cstdlib>
#include <mutex>

namespace diagd {

namespace {

std::mutex handling_mutex;
int handling_users = 0;
struct sigaction handling_found;

} // namespace

void keep_descriptors() noexcept
{
    close_range(STDERR_FILENO + 1, ~0U, CLOSE_RANGE_CLOEXEC);
}

ChildSignals::ChildSignals() noexcept
{
    {
        const std::lock_guard lock{handling_mutex};
        struct sigaction by_default {};
        by_default.sa_handler = SIG_DFL;
        if (handling_users++ == 0)
            sigaction(SIGCHLD, &by_default, &handling_found);
    }
    sigset_t none;
    sigemptyset(&none);
    pthread_sigmask(SIG_SETMASK, &none, &mask_);
}

ChildSignals::~ChildSignals()
{
    pthread_sigmask(SIG_SETMASK, &mask_, nullptr);
    const std::lock_guard lock{handling_mutex};
    if (--handling_users == 0)
        sigaction(SIGCHLD, &handling_found, nullptr);
}

int run_shell_line(const char *line) noexcept
{
    const ChildSignals signals;
    keep_descriptors();
    return std::system(line);
}

} // namespace diagd
