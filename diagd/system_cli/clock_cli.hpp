// SPDX-License-Identifier: GPL-2.0-or-later
// The clock's commands and the time since the system's start.
#pragma once

#include "diagd/system_cli/clock_parser.hpp"

namespace diagd {

// Installs the commands, behind the others of the unit.
void clock_cmd_init() noexcept;

} // namespace diagd

extern "C" {

// Time since the kernel's start.  When it cannot be told, standard output says why and all values are 0.
void system_running_time_get(diagd::RunningTime *time) noexcept;
}
