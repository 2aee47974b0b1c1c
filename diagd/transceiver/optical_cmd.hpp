// SPDX-License-Identifier: GPL-2.0-or-later
// Displays of what optical modules measure.  They stand amid the commands of the CPLD, whose install table
// has them.
#pragma once

#include "diagd/core/frr.hpp"

extern const struct cmd_element show_port_laser_cmd;
extern const struct cmd_element show_xgpon_laser_cmd;
extern const struct cmd_element show_transceiver_optical_cmd;
extern const struct cmd_element show_xgpon_transceiver_optical_cmd;
extern const struct cmd_element show_pon_transceiver_optical_cmd;
