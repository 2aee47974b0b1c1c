// SPDX-License-Identifier: GPL-2.0-or-later
// Reboot by command.  The peers are not told, and the board itself is reset by what ends the daemons.
#include "diagd/cpld/cpld_cmd.hpp"

#include "diagd/core/alarm_record.hpp"
#include "diagd/core/text.hpp"
#include "diagd/monitors/reset_button/system_reset.hpp"

#include <cstdio>

namespace {
}

DEFUN(reboot_device, reboot_device_cmd, "reboot", "reboot device\n")
{
    diagd::file_alarm(TQ_ALARM_RESET, diagd::AlarmState::event, "reset by command");
    system_backup();
    system_reboot();
    vty_out(vty, "Restarting system...%s", diagd::line_end);
    std::puts("Resetting ...\r");
    return CMD_SUCCESS;
}

// For scripts: no record, and not a word.
DEFUN_HIDDEN(reboot_system, reboot_system_cmd, "reload", "reboot device\n")
{
    system_backup();
    system_reboot();
    return CMD_SUCCESS;
}
