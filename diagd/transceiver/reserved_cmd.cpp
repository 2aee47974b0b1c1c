// SPDX-License-Identifier: GPL-2.0-or-later
// Commands whose words are reserved for modules' own thresholds and their supported types.  They stand in no
// install table, so nobody can type them: the thresholds in force are those of the alarm log.
#include "diagd/transceiver/transceiver_cmd.hpp"

#include "diagd/core/text.hpp"

using diagd::line_end;

#define TRANSCEIVER_STR "Interface transceiver configuration subcommands\n"
#define THRESHOLD_STR                                                                                        \
    TRANSCEIVER_STR "Diagnosis\n"                                                                            \
                    "Threshold\n"
#define LIMITS_STR(quantity)                                                                                 \
    "Default\n"                                                                                              \
    "Lower alarm limit\n"                                                                                    \
    "Set " quantity " low-alarm threshold(dBm)\n"                                                            \
    "Upper alarm limit\n"                                                                                    \
    "Set " quantity " high-alarm threshold(dBm)\n"

DEFUN(transceiver_dom_support_show, transceiver_dom_support_show_cmd,
      "show interface transceiver dom-supported-list",
      SHOW_STR "Interface status and configuration\n"
               "Show interface transceiver\n"
               "Show supported transceivers\n")
{
    vty_out(vty, "Transceiver Type        Supporting DOM%s", line_end);
    vty_out(vty, "--------------------    -------------------------%s", line_end);
    return CMD_SUCCESS;
}

DEFUN(transceiver_tx_power_threshold, transceiver_tx_power_threshold_cmd,
      "transceiver diagnosis threshold tx-power <default|low-alarm VALUE|high-alarm VALUE>",
      THRESHOLD_STR "Tx Power\n" LIMITS_STR("tx power"))
{
    return CMD_SUCCESS;
}

DEFUN(no_transceiver_tx_power_threshold, no_transceiver_tx_power_threshold_cmd,
      "no transceiver diagnosis threshold tx-power", NO_STR THRESHOLD_STR "Tx Power\n")
{
    return CMD_SUCCESS;
}

DEFUN(transceiver_rx_power_threshold, transceiver_rx_power_threshold_cmd,
      "transceiver diagnosis threshold rx-power <default|low-alarm VALUE|high-alarm VALUE>",
      THRESHOLD_STR "Rx Power\n" LIMITS_STR("rx power"))
{
    return CMD_SUCCESS;
}

DEFUN(no_transceiver_rx_power_threshold, no_transceiver_rx_power_threshold_cmd,
      "no transceiver diagnosis threshold rx-power", NO_STR THRESHOLD_STR "Rx Power\n")
{
    return CMD_SUCCESS;
}

DEFUN(transceiver_power_error_down, transceiver_power_error_down_cmd,
      "transceiver power low trigger error-down",
      TRANSCEIVER_STR "Power\n"
                      "Low\n"
                      "Trigger\n"
                      "Error-down\n")
{
    return CMD_SUCCESS;
}
