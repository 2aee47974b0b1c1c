// SPDX-License-Identifier: GPL-2.0-or-later
// The basic commands, for the install order.
#pragma once

#include "diagd/core/frr.hpp"

extern const struct cmd_element gpon_config_interface_cmd;
extern const struct cmd_element xgpon_config_interface_cmd;
extern const struct cmd_element show_debugging_cmd;
extern const struct cmd_element pon_reset_cmd;
extern const struct cmd_element gpio_system_reset_cmd;
extern const struct cmd_element show_version_cmd;
extern const struct cmd_element fan_monitor_set_cmd;
extern const struct cmd_element usb_monitor_set_cmd;
extern const struct cmd_element power_monitor_set_cmd;
extern const struct cmd_element transceiver_monitor_set_cmd;
extern const struct cmd_element show_diag_monitor_cmd;
