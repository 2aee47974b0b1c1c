// SPDX-License-Identifier: GPL-2.0-or-later
// The unit's commands, for its install table.
#pragma once

#include "diagd/core/frr.hpp"

// cpld_cli.cpp
extern const struct cmd_element reboot_device_cmd;
extern const struct cmd_element reboot_system_cmd;

// switch_cmd.cpp
extern const struct cmd_element system_led_cmd;
extern const struct cmd_element usb_led_cmd;
extern const struct cmd_element pon_led_cmd;
extern const struct cmd_element pon_power_config_cmd;
extern const struct cmd_element pon_tx_config_cmd;
extern const struct cmd_element sfp_power_config_cmd;
extern const struct cmd_element fan_mode_cmd;
extern const struct cmd_element fan_speed_cmd;

// show_cmd.cpp
extern const struct cmd_element show_pon_led_cmd;
extern const struct cmd_element show_pon_power_cmd;
extern const struct cmd_element show_pon_tx_cmd;
extern const struct cmd_element show_sfp_power_cmd;
extern const struct cmd_element show_logic_version_cmd;
extern const struct cmd_element show_device_type_cmd;
extern const struct cmd_element show_system_power_cmd;
extern const struct cmd_element debug_cpld_cmd;

// upgrade_cmd.cpp
extern const struct cmd_element cpld_upgrade_tftp_cmd;
extern const struct cmd_element cpld_upgrade_ftp_cmd;
extern const struct cmd_element cpld_upgrade_by_usb_cmd;
extern const struct cmd_element cpld_restore_cmd;
extern const struct cmd_element cpld_erase_cmd;

namespace diagd {

// Switches the system LED on; a return code of a command.
int switch_system_led_on() noexcept;

} // namespace diagd
