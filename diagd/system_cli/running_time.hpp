// SPDX-License-Identifier: GPL-2.0-or-later
// How long the system has been running.
#pragma once

#include "diagd/system_cli/clock_parser.hpp"

extern "C" {

// Time since the kernel's start.  When it cannot be told, standard output says why and all values are 0.
void system_running_time_get(diagd::RunningTime *time) noexcept;
}
