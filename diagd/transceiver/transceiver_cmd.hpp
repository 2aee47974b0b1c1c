// SPDX-License-Identifier: GPL-2.0-or-later
// The unit's commands, for its install table.
#pragma once

#include "diagd/core/frr.hpp"

// transceiver_cli.cpp
extern const struct cmd_element interface_idprom_show_cmd;
extern const struct cmd_element interface_xgpon_idprom_show_cmd;
extern const struct cmd_element transceiver_show_cmd;
extern const struct cmd_element transceiver_detail_show_cmd;
extern const struct cmd_element transceiver_rssi_txdis_cmd;
extern const struct cmd_element show_transceiver_rssi_txdis_cmd;
extern const struct cmd_element debug_transceiver_cmd;

// reserved_cmd.cpp: in no install table.
extern const struct cmd_element transceiver_dom_support_show_cmd;
extern const struct cmd_element transceiver_tx_power_threshold_cmd;
extern const struct cmd_element no_transceiver_tx_power_threshold_cmd;
extern const struct cmd_element transceiver_rx_power_threshold_cmd;
extern const struct cmd_element no_transceiver_rx_power_threshold_cmd;
extern const struct cmd_element transceiver_power_error_down_cmd;
