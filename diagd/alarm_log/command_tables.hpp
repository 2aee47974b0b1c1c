// SPDX-License-Identifier: GPL-2.0-or-later
// The install tables of the alarm log.  A command's handler, help and row stand in one file;
// alarm_log_cli.cpp puts the files into order.
#pragma once

#include "diagd/core/command.hpp"

namespace diagd {

using CommandTable = std::span<const InstallRow>;

extern const CommandTable record_commands;
extern const CommandTable debug_commands;
extern const CommandTable flash_commands;
extern const CommandTable remote_server_commands;
extern const CommandTable configuration_show_commands;
extern const CommandTable action_commands;
extern const CommandTable bulk_commands;
extern const CommandTable board_threshold_commands;
extern const CommandTable pon_threshold_commands;
extern const CommandTable running_config_commands;

} // namespace diagd
