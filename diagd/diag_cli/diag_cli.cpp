// SPDX-License-Identifier: GPL-2.0-or-later
// The daemon's command frame: its nodes, the order in which the alarm log's and its own commands are
// installed, and the basic commands.
// Failure policy: all commands succeed on every path.  What the database does not give is shown empty.
#include "base/printable.hpp"
#include "diagd/alarm_log/alarm_log_cli.hpp"
#include "diagd/board/gpio.hpp"
#include "diagd/board/interface.hpp"
#include "diagd/core/command.hpp"
#include "diagd/core/state.hpp"
#include "diagd/core/text.hpp"

#include "util_cpld.h"
#include "util_i2c.h"
#include "util_phy.h"

#include <chrono>
#include <cstdio>
#include <cstring>
#include <string>
#include <thread>

using diagd::config_node;
using diagd::diagnose_node;
using diagd::line_end;

// --- nodes

namespace {

// Never entered: it exists to write its part of the running configuration.
struct cmd_node alarm_log_cmd_node = {
    .name = "alarm-log",
    .node = diagd::alarm_log_node,
    .prompt = "",
    .config_write = diagd::alarm_log_config_write,
};

// The trailing arguments of the prompts are the session's slot and port.
struct cmd_node gpon_cmd_node = {
    .name = "gpon",
    .node = diagd::gpon_node,
    .parent_node = CONFIG_NODE,
    .prompt = "%s(config-gpon-%d/%d)# ",
    .config_write = diagd::gpon_config_write,
};

struct cmd_node xgpon_cmd_node = {
    .name = "xgpon",
    .node = diagd::xgpon_node,
    .parent_node = CONFIG_NODE,
    .prompt = "%s(config-xgpon-%d/%d)# ",
    .config_write = diagd::xgpon_config_write,
};

} // namespace

// --- interfaces

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

// --- the board

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

// --- version

// Fields run at most to the next one, so each is cut to its own size.
static std::string field(std::span<const char> bytes)
{
    return std::string{diagd::field_text(bytes)};
}

static std::string shown(std::span<const char> bytes)
{
    return base::printable(diagd::field_text(bytes));
}

DEFUN(show_version, show_version_cmd, "show version [json]",
      "Show running system information\n"
      "show version information\n"
      "JavaScript Object Notation\n")
{
    tq_base_info_t info{};
    database_dev_get_base_info(&g_diagd_db, &info);

    if (use_json(argc, argv)) {
        const diagd::Json json = diagd::json_new_object();
        json_object_string_add(json.get(), "deviceMacAddress", field(info.device_mac).c_str());
        json_object_string_add(json.get(), "deviceModel", field(info.device_model).c_str());
        json_object_string_add(json.get(), "serialNumber", field(info.serial_number).c_str());
        json_object_string_add(json.get(), "hardwareVersion", field(info.hardware_version).c_str());
        json_object_string_add(json.get(), "softwareVersion", field(info.software_version).c_str());
        json_object_string_add(json.get(), "softwareCreatedTime", field(info.software_created).c_str());
        json_object_string_add(json.get(), "copyright", field(info.copyright).c_str());
        diagd::json_print(vty, json);
        return CMD_SUCCESS;
    }

    vty_out(vty, "  OLT Serial Number     : %s%s", shown(info.serial_number).c_str(), line_end);
    vty_out(vty, "  Device Model          : %s%s", shown(info.device_model).c_str(), line_end);
    vty_out(vty, "  Hardware Version      : %s%s", shown(info.hardware_version).c_str(), line_end);
    vty_out(vty, "  Software Version      : %s%s", shown(info.software_version).c_str(), line_end);
    vty_out(vty, "  Software Created Time : %s%s", shown(info.software_created).c_str(), line_end);
    vty_out(vty, "  Copyright: %s%s", shown(info.copyright).c_str(), line_end);
    return CMD_SUCCESS;
}

// --- monitor switches.  They live in memory only: neither the database nor the running configuration knows
// them, and a restart enables every monitor again.

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

// --- install order

namespace {

constexpr diagd::InstallRow interface_commands[] = {
    {config_node, &gpon_config_interface_cmd},
    {config_node, &xgpon_config_interface_cmd},
};

constexpr diagd::InstallRow basic_commands[] = {
    // The board
    {diagnose_node, &show_debugging_cmd},
    {diagnose_node, &pon_reset_cmd},
    {diagnose_node, &gpio_system_reset_cmd},
    {config_node, &show_version_cmd},

    // Monitor switches
    {diagnose_node, &fan_monitor_set_cmd},
    {diagnose_node, &usb_monitor_set_cmd},
    {diagnose_node, &power_monitor_set_cmd},
    {diagnose_node, &transceiver_monitor_set_cmd},
    {diagnose_node, &show_diag_monitor_cmd},
};

} // namespace

int diag_cmd_init()
{
    install_node(&alarm_log_cmd_node);
    install_node(&gpon_cmd_node);
    install_node(&xgpon_cmd_node);
    diagd::install_table(interface_commands);
    diagd::install_alarm_log_commands();
    diagd::install_table(basic_commands);
    return 0;
}
