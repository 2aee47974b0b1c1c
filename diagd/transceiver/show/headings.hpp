// SPDX-License-Identifier: GPL-2.0-or-later
// Fixed lines of the transceiver tables, without their line ends.
#pragma once

#include <array>
#include <string_view>

namespace diagd::headings {

// The first line stands whatever the monitor switch says: the displays are not fed by that monitor.
inline constexpr std::array<std::string_view, 5> legend{
    "Transceiver monitoring is disabled for all interfaces.",
    "If device is externally calibrated, only calibrated values are printed.",
    "++ : high alarm, +  : high warning, -  : low warning, -- : low alarm.",
    "NA or N/A: not applicable, Tx: transmit, Rx: receive.",
    "mA: milliamperes, dBm: decibels (milliwatts).",
};

// One laser: SFP-class modules, and cages without a module.
// clang-format off
inline constexpr std::string_view single =
    "Interface     Temperature (Celsius)    Voltage (Volts)    Current (mA)    Optical Tx Power(dBm)           Optical Rx Power(dBm)";
inline constexpr std::string_view single_rule =
    "----------    ---------------------    ---------------    ------------    ----------------------------    ------------------------------- ";

// Four lanes: QSFP-class modules.
inline constexpr std::string_view lanes =
    "Interface     Temperature (Celsius)    Voltage (Volts)    Current (mA)                    Optical Tx Power(dBm)           Optical Rx Power(dBm)";
inline constexpr std::string_view lanes_pon =
    "                                                          TX1    TX2    TX3    TX4        TX1    TX2    TX3    TX4        RX1    RX2    RX3    RX4";
inline constexpr std::string_view lanes_gigabit = // its first receive lane carries no number
    "                                                          TX1    TX2    TX3    TX4        TX1    TX2    TX3    TX4        RX    RX2    RX3    RX4";
inline constexpr std::string_view lanes_rule =
    "----------    ---------------------    ---------------    ----------------------------    ----------------------------    ------------------------------- ";

// Threshold tables: the same columns and rule for every quantity.
inline constexpr std::string_view threshold_columns = "              High Alarm   High Warn    Low Warn      Low Alarm";
inline constexpr std::string_view threshold_rule    = "----------    -------------    ---------    ---------    ----------    ----------";

struct ThresholdTable {
    std::string_view quantity;
    std::string_view unit_pon;
    std::string_view unit_gigabit;
};

inline constexpr std::string_view celsius     = "Interface     (Celsius)        (Celsius)    (Celsius)    (Celsius)     (Celsius)";
inline constexpr std::string_view volts       = "Interface     (Volts)          (Volts)      (Volts)      (Volts)       (Volts)";
inline constexpr std::string_view volts_gigabit = "Interface     (Volts             (Volts)      (Volts)      (Volts)      (Volts)"; // not closed
inline constexpr std::string_view milliampere = "Interface     (mA)             (mA)         (mA)         (mA)          (mA)";
inline constexpr std::string_view dbm         = "Interface     (dBm)            (dBm)        (dBm)        (dBm)         (dBm)";

inline constexpr std::array<ThresholdTable, 5> threshold_tables{{
    {"              Temperature      Threshold    Threshold    Threshold     Threshold", celsius, celsius},
    {"              Voltage          Threshold    Threshold    Threshold     Threshold", volts, volts_gigabit},
    {"              Current          Threshold    Threshold    Threshold     Threshold", milliampere, milliampere},
    {"              Transmit Power   Threshold    Threshold    Threshold     Threshold", dbm, dbm},
    {"              Receive Power    Threshold    Threshold    Threshold     Threshold", dbm, dbm},
}};
// clang-format on

} // namespace diagd::headings
