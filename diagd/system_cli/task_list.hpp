// SPDX-License-Identifier: GPL-2.0-or-later
// The threads of all processes.
#pragma once

#include "base/owner.hpp"
#include "diagd/system_cli/task_parser.hpp"

#include <dirent.h>

#include <functional>

namespace diagd {

struct Task {
    std::uint32_t process;
    std::uint32_t thread;
    std::string command; // base name of the program
    TaskStatus status;
};

// Hands every thread of every process in `proc`, the opened folder /proc, to `row`.  Ends at the first folder
// or command line that cannot be opened (of what has just ended, for one) and returns the message on it,
// "opendir /proc/7/task fail"; empty when all were listed.
[[nodiscard]] std::string for_each_task(DIR *proc, const std::function<void(const Task &)> &row);

} // namespace diagd
