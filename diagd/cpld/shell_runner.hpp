// SPDX-License-Identifier: GPL-2.0-or-later
// Programs that replace the CPLD's logic, run through the shell.  The caller waits for their end.  A program
// outlives a daemon that is killed meanwhile, but holds nothing of it.
#pragma once

#include <chrono>
#include <string>

namespace diagd {

// How long a program may take.  The daemon serves nobody meanwhile, so one that waits for a server that has
// gone silent must not wait for ever.
struct RunBounds {
    std::chrono::milliseconds total;
    std::string file{};                     // what the program writes; empty: only `total` counts
    std::chrono::milliseconds standstill{}; // the longest that `file` may stay as short as it is
};

// Runs a shell line in a process group of its own, dropping what it prints on standard output.  The wait
// status, or -1 when it cannot be started; anything but 0 is told on the daemon's own streams.  A line that
// exceeds its bounds is ended with its whole group: the status is that of a killed shell.
int run_dropping_output(const std::string &line) noexcept;
int run_dropping_output(const std::string &line, const RunBounds &bounds) noexcept;

// Runs a shell line that prints on the daemon's own streams, for as long as it takes; its status is not
// looked at.
void run_to_its_end(const std::string &line) noexcept;

} // namespace diagd
