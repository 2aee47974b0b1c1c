// SPDX-License-Identifier: GPL-2.0-or-later
// Programs that replace the CPLD's logic, run through the shell.  The caller waits for their end, however
// long that takes.  A program outlives a daemon that is killed meanwhile, but holds nothing of it.
#pragma once

#include <string>

namespace diagd {

// Runs a shell line, dropping what it prints on standard output.  The wait status, or -1 when it cannot be
// started; anything but 0 is told on the daemon's own streams.
int run_dropping_output(const std::string &line) noexcept;

// Runs a shell line that prints on the daemon's own streams.  How it ends is nobody's business.
void run_to_its_end(const std::string &line) noexcept;

} // namespace diagd
