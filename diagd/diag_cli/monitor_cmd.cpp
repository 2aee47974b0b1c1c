// SPDX-License-Identifier: GPL-2.0-or-later
// The monitor switches.  They live in memory only: neither the database nor the running configuration knows
// them, and a restart enables every monitor again.
#include "diagd/diag_cli/basic_cmd.hpp"

#include "diagd/core/state.hpp"
#include "diagd/core/text.hpp"

#include <cstring>

using diagd::line_end;

static void set_switch(diagd::MonitorSwitch &monitor, const struct cmd_token *first_token)
{
    const bool disable = std::strcmp(first_token->text, "no") == 0;
    monitor.store(disable ? 0 : 1, std::memory_order_relaxed);
}

static const char *switch_text(const diagd::MonitorSwitch &monitor)
{
    return monitor.load(std::memory_order_relaxed) != 0 ? "Enable" : "Disable";
}

DEFUN(fan_monitor_set, fan_monitor_set_cmd, "[no] fan monitor",
      "Negate a command or set its defaults\n"
      "fan\n"
      "monitor\n")
{
    set_switch(diagm.fan_monitor, argv[0]);
    return CMD_SUCCESS;
}

DEFUN(usb_monitor_set, usb_monitor_set_cmd, "[no] usb monitor",
      "Negate a command or set its defaults\n"
      "usb\n"
      "monitor\n")
{
    set_switch(diagm.usb_monitor, argv[0]);
    return CMD_SUCCESS;
}

DEFUN(power_monitor_set, power_monitor_set_cmd, "[no] power monitor",
      "Negate a command or set its defaults\n"
      "power\n"
      "power monitor\n")
{
    set_switch(diagm.power_monitor, argv[0]);
    return CMD_SUCCESS;
}

DEFUN(transceiver_monitor_set, transceiver_monitor_set_cmd, "[no] transceiver monitor",
      "Negate a command or set its defaults\n"
      "transceiver\n"
      "transceiver monitor\n")
{
    set_switch(diagm.transceiver_monitor, argv[0]);
    return CMD_SUCCESS;
}

DEFUN(show_diag_monitor, show_diag_monitor_cmd, "show diag monitor",
      "Show running system information\n"
      "diag\n"
      "monitor information\n")
{
    vty_out(vty, "FAN Monitor         : %s%s", switch_text(diagm.fan_monitor), line_end);
    vty_out(vty, "USB Monitor         : %s%s", switch_text(diagm.usb_monitor), line_end);
    vty_out(vty, "Power Monitor       : %s%s", switch_text(diagm.power_monitor), line_end);
    vty_out(vty, "Transceiver Monitor : %s%s", switch_text(diagm.transceiver_monitor), line_end);
    return CMD_SUCCESS;
}
