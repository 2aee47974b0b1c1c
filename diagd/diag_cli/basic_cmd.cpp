// SPDX-License-Identifier: GPL-2.0-or-later
// Interface nodes, debugging state and the GPIO resets.  All of them succeed on every path.
#include "diagd/diag_cli/basic_cmd.hpp"

#include "diagd/board/gpio.hpp"
#include "diagd/board/interface.hpp"
#include "diagd/core/command.hpp"
#include "diagd/core/text.hpp"

#include "util_cpld.h"
#include "util_i2c.h"
#include "util_phy.h"

#include <chrono>
#include <cstdio>
#include <thread>

using diagd::line_end;

static void enter_interface(struct vty *vty, enum node_type node, diagd::PortKind kind, const char *position)
{
    const diagd::Interface interface = diagd::parse_interface(kind, position);
    vty->slot = interface.slot;
    vty->port = interface.port;
    vty->intf_kind = static_cast<int>(kind);
    vty->node = node;
}

DEFUN(gpon_config_interface, gpon_config_interface_cmd, "interface gpon <S/P>",
      "Interface information\n"
      "Specify gpon module.\n" SLOT_PORT_STR)
{
    enter_interface(vty, diagd::gpon_node, diagd::PortKind::gpon, argv[2]->arg);
    return CMD_SUCCESS;
}

DEFUN(xgpon_config_interface, xgpon_config_interface_cmd, "interface xgpon <S/P>",
      "Interface information\n"
      "Specify xgpon module.\n" SLOT_PORT_STR)
{
    enter_interface(vty, diagd::xgpon_node, diagd::PortKind::xgpon, argv[2]->arg);
    return CMD_SUCCESS;
}

DEFUN(show_debugging, show_debugging_cmd, "show debugging",
      "Show running system information\n"
      "State of each debugging option.\n")
{
    if (misc_phy_debug_get() != 0)
        vty_out(vty, "PHY debugging is ON%s", line_end);
    if (misc_i2c_debug_get() != 0)
        vty_out(vty, "I2C debugging is ON%s", line_end);
    if (misc_cpld_debug_get() != 0)
        vty_out(vty, "CPLD debugging is ON%s", line_end);
    return CMD_SUCCESS;
}

DEFUN(pon_reset, pon_reset_cmd, "pon reset",
      "pon\n"
      "reset pon chip\n")
{
    diagd::pon_chip_reset();
    return CMD_SUCCESS;
}

DEFUN(gpio_system_reset, gpio_system_reset_cmd, "system gpio reset",
      "system\n"
      "gpio\n"
      "reset system\n")
{
    using namespace std::chrono_literals;

    vty_out(vty, "Restarting system by gpio...%s", line_end);
    diagd::flush_vty(vty);
    std::puts("Resetting By GPIO...\r");
    std::this_thread::sleep_for(2s); // the operator reads it before the line drops
    diagd::system_gpio_reset();
    return CMD_SUCCESS;
}
