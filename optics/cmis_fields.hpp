// SPDX-License-Identifier: GPL-2.0-or-later
// Where CMIS (revision 5.0) keeps what: byte numbers in decimal as the document has them.
#pragma once

#include <array>

#include "optics/check_codes.hpp"

namespace optics::cmis {

inline constexpr std::size_t lanes = 8;

// Lower memory.
namespace low {
inline constexpr std::size_t identifier = 0;
inline constexpr std::size_t revision_compliance = 1; // two digits
inline constexpr std::size_t status = 2;              // bit 7: flat memory
inline constexpr std::size_t module_state = 3;        // bits 3-1
inline constexpr std::size_t module_flags = 9;        // temperature in bits 0-3, voltage in 4-7
inline constexpr std::size_t temperature = 14;        // signed, 1/256 degree
inline constexpr std::size_t voltage = 16;            // 100 uV
inline constexpr std::size_t live_end = 18;
inline constexpr std::size_t media_type = 85;
inline constexpr std::size_t lane_counts = 88; // of the first application: media lanes in bits 3-0
} // namespace low

inline constexpr unsigned flat_memory = 7;
inline constexpr std::uint8_t media_passive_copper = 3; // values of media_type
inline constexpr std::uint8_t media_active_cable = 4;
inline constexpr std::uint8_t media_base_t = 5;

// Page 00h.
namespace id {
inline constexpr std::size_t identifier = 128;
inline constexpr std::size_t vendor = 129;       // 16
inline constexpr std::size_t oui = 145;          // 3
inline constexpr std::size_t part = 148;         // 16
inline constexpr std::size_t revision = 164;     // 2
inline constexpr std::size_t serial = 166;       // 16
inline constexpr std::size_t date = 182;         // 8
inline constexpr std::size_t cable_length = 202; // bits 7-6 multiplier, 5-0 base
inline constexpr std::size_t connector = 203;    // SFF-8024 table 4-3
inline constexpr std::size_t attenuation = 204;  // 204-207, dB
inline constexpr std::size_t technology = 212;
} // namespace id

inline constexpr std::uint8_t copper_unequalized = 0x0a; // from here to copper_last copper
inline constexpr std::uint8_t copper_limiting = 0x0c;    // from here on with something that amplifies
inline constexpr std::uint8_t copper_last = 0x0f;

// Page 01h.
namespace advertised {
inline constexpr std::size_t smf_length = 132; // bits 7-6 multiplier, 5-0 base
inline constexpr std::size_t om5_2m = 133;
inline constexpr std::size_t om4_2m = 134;
inline constexpr std::size_t om3_2m = 135;
inline constexpr std::size_t om2_m = 136;
inline constexpr std::size_t wavelength = 138;      // word, 0.05 nm
inline constexpr std::size_t tolerance = 140;       // word, 0.005 nm
inline constexpr std::size_t module_monitors = 159; // bit 0 temperature, bit 1 voltage
inline constexpr std::size_t lane_monitors =
    160; // bit 0 bias, 1 TX power, 2 RX power; 4-3: scale of the bias
} // namespace advertised

// Page 11h: flags, a byte for each kind with lane 1 in bit 0.
namespace lane_flags {
inline constexpr std::size_t tx_fault = 135;
inline constexpr std::size_t tx_los = 136;
inline constexpr std::size_t rx_los = 147;
} // namespace lane_flags

inline constexpr CheckedRange page00_check{"page 00h", 128, 221, 222};
inline constexpr CheckedRange page01_check{"page 01h", 130, 254, 255};
inline constexpr CheckedRange page02_check{"page 02h", 128, 254, 255};

// One row for each measured quantity, in the order of Quantity: its thresholds on page 02h (high
// alarm, low alarm, high warning, low warning), its live word in lower memory or the first of eight on page
// 11h, its four bytes of lane flags there (in the same order; 0: flags of the module), and its
// unit.
struct Row {
    std::size_t thresholds, live, flags;
    bool is_signed;
    double unit;
};
inline constexpr std::array<Row, quantities> rows{{
    {128, low::temperature, 0, true, 1.0 / 256},
    {136, low::voltage, 0, false, 100e-6},
    {184, 170, 143, false, 2e-3},
    {176, 154, 139, false, 1e-4},
    {192, 186, 149, false, 1e-4},
}};

} // namespace optics::cmis
