// SPDX-License-Identifier: GPL-2.0-or-later
// Programs that the daemon starts and waits for itself: what they find, and what they leave.
#pragma once

#include <signal.h>

namespace diagd {

// Keeps what the daemon has open from the programs it starts from now on.  Libraries leave locks and pipes
// open to them: one that outlived a killed daemon would keep them from the next.
void keep_descriptors() noexcept;

// Default handling of SIGCHLD, and no signal blocked, for as long as it lives: what is run meanwhile can be
// waited for and interrupted like any program.  The handling is the process's: of several threads that run
// programs at once, the last to end restores what the first one found.
class ChildSignals {
public:
    ChildSignals() noexcept;
    ~ChildSignals();
    ChildSignals(const ChildSignals &) = delete;
    ChildSignals &operator=(const ChildSignals &) = delete;

private:
    sigset_t mask_;
};

// Runs a shell line, which prints on the daemon's own streams, to its end.  The wait status, or -1 with errno
// when it cannot be started.
int run_shell_line(const char *line) noexcept;

} // namespace diagd
