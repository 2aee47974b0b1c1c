// SPDX-License-Identifier: GPL-2.0-or-later
// The commands of the alarm log, in the order in which they are installed: where two share words, libfrr
// shows the help of the first.
#include "diagd/alarm_log/alarm_log_cli.hpp"
#include "diagd/alarm_log/command_tables.hpp"

void diagd::install_alarm_log_commands() noexcept
{
    for (const CommandTable &table :
         {record_commands, remote_server_commands, flash_commands, configuration_show_commands,
          action_commands, bulk_commands, board_threshold_commands, running_config_commands, debug_commands,
          pon_threshold_commands})
        install_table(table);
}
