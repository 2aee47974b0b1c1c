// SPDX-License-Identifier: GPL-2.0-or-later
// Where SFF-8472 (revision 12.4) keeps what: byte numbers in decimal as the document has them.
#pragma once

#include <array>

#include "optics/check_codes.hpp"

namespace optics::sff8472 {

// A0h.
namespace id {
inline constexpr std::size_t identifier = 0;
inline constexpr std::size_t ext_identifier = 1;
inline constexpr std::size_t connector = 2;        // SFF-8024 table 4-3
inline constexpr std::size_t compliance = 3;       // 3-10
inline constexpr std::size_t ethernet = 6;         // bit 3: 1000BASE-T
inline constexpr std::size_t cable_technology = 8; // bit 2: passive cable, bit 3: active cable
inline constexpr std::size_t encoding = 11;        // SFF-8024 table 4-2
inline constexpr std::size_t rate = 12;            // 100 MBd; 255: byte 66 has it
inline constexpr std::size_t rate_id = 13;         // SFF-8024 table 4-5
inline constexpr std::size_t smf_km = 14;          // lengths, this and the following
inline constexpr std::size_t smf_100m = 15;
inline constexpr std::size_t om2_10m = 16;
inline constexpr std::size_t om1_10m = 17;
inline constexpr std::size_t om4_10m_or_cable_m = 18;
inline constexpr std::size_t om3_10m = 19;
inline constexpr std::size_t vendor = 20; // 16
inline constexpr std::size_t ext_compliance = 36;
inline constexpr std::size_t oui = 37;           // 3
inline constexpr std::size_t part = 40;          // 16
inline constexpr std::size_t revision = 56;      // 4
inline constexpr std::size_t wavelength_nm = 60; // word; of a cable its compliance
inline constexpr std::size_t options = 64;       // 2
inline constexpr std::size_t rate_250 = 66;      // 250 MBd
inline constexpr std::size_t serial = 68;        // 16
inline constexpr std::size_t date = 84;          // 8
inline constexpr std::size_t diagnostic_type = 92;
inline constexpr std::size_t enhanced_options = 93;
inline constexpr std::size_t revision_compliance = 94;
} // namespace id

// Byte 92.
inline constexpr unsigned diagnostics_implemented = 6;
inline constexpr unsigned internally_calibrated = 5;
inline constexpr unsigned externally_calibrated = 4;
inline constexpr unsigned average_power = 3;
inline constexpr unsigned address_change = 2;
// Byte 93: what of A2h is kept.
inline constexpr unsigned flags_kept = 7;
inline constexpr unsigned tx_disable_kept = 6;
inline constexpr unsigned tx_fault_kept = 5;
inline constexpr unsigned rx_los_kept = 4;

inline constexpr CheckedRange cc_base{"CC_BASE", 0, 62, 63};
inline constexpr CheckedRange cc_ext{"CC_EXT", 64, 94, 95};

// A2h.
namespace dd {
inline constexpr std::size_t rx_coefficients = 56; // Rx_PWR(4) down to (0), a single precision each
inline constexpr std::size_t status = 110;
inline constexpr std::size_t alarm_flags = 112;   // word
inline constexpr std::size_t warning_flags = 116; // word
} // namespace dd

inline constexpr CheckedRange cc_dmi{"CC_DMI", 0, 94, 95};

// Byte 110.
inline constexpr unsigned tx_disable_state = 7;
inline constexpr unsigned tx_fault_state = 2;
inline constexpr unsigned rx_los_state = 1;
inline constexpr unsigned data_not_ready = 0;

// One row for each measured quantity, in the order of Quantity: its threshold words (high alarm, low alarm,
// high warning, low warning), its live word, its constants of external calibration
// (slope and offset), its flag bits (high in `flag`, low below it) and its unit.
struct Row {
    std::size_t thresholds, live, slope, offset;
    unsigned flag;
    bool is_signed;
    double unit;
};
inline constexpr std::size_t no_slope = 0; // received power has its polynomial
inline constexpr std::array<Row, quantities> rows{{
    {0, 96, 84, 86, 15, true, 1.0 / 256},   // temperature, 1/256 degree
    {8, 98, 88, 90, 13, false, 100e-6},     // supply voltage, 100 uV
    {16, 100, 76, 78, 11, false, 2e-3},     // bias, 2 uA
    {24, 102, 80, 82, 9, false, 1e-4},      // transmitted power, 0.1 uW
    {32, 104, no_slope, 0, 7, false, 1e-4}, // received power, 0.1 uW
}};

} // namespace optics::sff8472
