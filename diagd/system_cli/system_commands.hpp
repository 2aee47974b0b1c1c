// SPDX-License-Identifier: GPL-2.0-or-later
// The system information commands, for the install order.
#pragma once

#include "frr.hpp"

extern const struct cmd_element show_sys_cpu_usage_cmd;
extern const struct cmd_element show_sys_mem_cmd;
