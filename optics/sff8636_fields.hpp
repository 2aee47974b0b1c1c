// SPDX-License-Identifier: GPL-2.0-or-later
// Where SFF-8636 (revision 2.10a) keeps what: byte numbers in decimal as the document has them.
#pragma once

#include <array>

#include "optics/check_codes.hpp"

namespace optics::sff8636 {

inline constexpr std::size_t lanes = 4;

// Lower memory.
namespace low {
inline constexpr std::size_t identifier = 0;
inline constexpr std::size_t revision_compliance = 1;
inline constexpr std::size_t status = 2;            // bit 2 flat memory, bit 0 data not ready
inline constexpr std::size_t los = 3;               // bits 7-4 transmit lanes 4-1, 3-0 receive
inline constexpr std::size_t fault = 4;             // bits 3-0 transmit lanes 4-1
inline constexpr std::size_t temperature_flags = 6; // high nibble
inline constexpr std::size_t voltage_flags = 7;
inline constexpr std::size_t rx_flags = 9; // a nibble a lane, lane 1 in the high one of 9
inline constexpr std::size_t bias_flags = 11;
inline constexpr std::size_t tx_flags = 13;
inline constexpr std::size_t temperature = 22; // signed, 1/256 degree
inline constexpr std::size_t voltage = 26;     // 100 uV
inline constexpr std::size_t rx_power = 34;    // four words, 0.1 uW
inline constexpr std::size_t bias = 42;        // 2 uA
inline constexpr std::size_t tx_power = 50;    // 0.1 uW
inline constexpr std::size_t live_end = 58;
inline constexpr std::size_t tx_disable = 86; // bits 3-0 lanes 4-1
} // namespace low

inline constexpr unsigned flat_memory = 2;
inline constexpr unsigned data_not_ready = 0;

// Page 00h.
namespace id {
inline constexpr std::size_t identifier = 128;
inline constexpr std::size_t ext_identifier = 129;
inline constexpr std::size_t connector = 130;
inline constexpr std::size_t compliance = 131; // 131-138
inline constexpr std::size_t encoding = 139;
inline constexpr std::size_t rate = 140; // 100 MBd; 255: byte 222 has it
inline constexpr std::size_t rate_id = 141;
inline constexpr std::size_t smf_km = 142;
inline constexpr std::size_t om3_2m = 143;
inline constexpr std::size_t om2_m = 144;
inline constexpr std::size_t om1_m = 145;
inline constexpr std::size_t om4_2m_or_cable_m = 146;
inline constexpr std::size_t device_technology = 147;
inline constexpr std::size_t vendor = 148;     // 16
inline constexpr std::size_t oui = 165;        // 3
inline constexpr std::size_t part = 168;       // 16
inline constexpr std::size_t revision = 184;   // 2
inline constexpr std::size_t wavelength = 186; // word, 0.05 nm; of copper 186-189 are attenuations in dB
inline constexpr std::size_t tolerance = 188;  // word, 0.005 nm
inline constexpr std::size_t ext_compliance = 192;
inline constexpr std::size_t options = 193; // 193-195
inline constexpr std::size_t serial = 196;  // 16
inline constexpr std::size_t date = 212;    // 8
inline constexpr std::size_t diagnostic_type = 220;
inline constexpr std::size_t rate_250 = 222; // 250 MBd
} // namespace id

// Byte 147, high nibble: what transmits.
inline constexpr unsigned copper_unequalized = 0x0a; // from here on copper
inline constexpr unsigned copper_linear = 0x0c;      // from here on with something that amplifies

// Byte 220; temperature and voltage from revision byte 8 on.
inline constexpr unsigned temperature_monitored = 5;
inline constexpr unsigned voltage_monitored = 4;
inline constexpr unsigned average_power = 3;
inline constexpr unsigned tx_power_monitored = 2;
inline constexpr std::uint8_t monitors_told_from = 8;

inline constexpr CheckedRange cc_base{"CC_BASE", 128, 190, 191};
inline constexpr CheckedRange cc_ext{"CC_EXT", 192, 222, 223};

// One row for each measured quantity, in the order of Quantity: its thresholds on page 03h (high
// alarm, low alarm, high warning, low warning), its live word or the first of its four, the flags of the
// module or of lanes 1 and 2, and its unit.
struct Row {
    std::size_t thresholds, live, flags;
    bool is_signed;
    double unit;
};
inline constexpr std::array<Row, quantities> rows{{
    {128, low::temperature, low::temperature_flags, true, 1.0 / 256},
    {144, low::voltage, low::voltage_flags, false, 100e-6},
    {184, low::bias, low::bias_flags, false, 2e-3},
    {192, low::tx_power, low::tx_flags, false, 1e-4},
    {176, low::rx_power, low::rx_flags, false, 1e-4},
}};

} // namespace optics::sff8636
