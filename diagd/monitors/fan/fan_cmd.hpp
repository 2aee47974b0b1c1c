// SPDX-License-Identifier: GPL-2.0-or-later
// The fan commands.
#pragma once

// Installs the node of the fans' running configuration and the commands.  Returns 0.
int fan_cmd_init();
