// SPDX-License-Identifier: GPL-2.0-or-later
// Where modules keep what: byte numbers of SFF-8472 and SFF-8636, in decimal as the documents have them.
#pragma once

#include <cstdint>

namespace diagd {

struct MemoryField {
    std::uint8_t first;
    std::uint8_t length;
};

// Identification: A0h of SFF-8472 (tables 4-1 and 4-2), upper page 00h of SFF-8636 (table 6-14).
struct IdpromLayout {
    std::uint8_t identifier, connector, wavelength, extended_compliance, encoding, bit_rate;
    MemoryField compliance;
    MemoryField distance; // supported link lengths, one byte per kind of fibre
    MemoryField vendor_name, vendor_oui, part_number, revision, serial_number, date_code;
};

// What the first page has in both standards: SFF-8472 table 4-1, SFF-8636 table 6-1.
inline constexpr std::uint8_t identifier_byte = 0;
// Diagnostic monitoring type, SFF-8472 table 8-5.  A module that claims both is internally calibrated.  These
// boards look at the byte of SFF-8636 modules, too, which is in their lower memory.
inline constexpr std::uint8_t monitoring_type = 92;
inline constexpr std::uint8_t internally_calibrated = 0x20;
inline constexpr std::uint8_t externally_calibrated = 0x10;

namespace sff8472 {

inline constexpr IdpromLayout idprom{
    .identifier = identifier_byte,
    .connector = 2,
    .wavelength = 60,
    .extended_compliance = 36,
    .encoding = 11,
    .bit_rate = 12,
    .compliance = {3, 8},
    .distance = {14, 6},
    .vendor_name = {20, 16},
    .vendor_oui = {37, 3},
    .part_number = {40, 16},
    .revision = {56, 4},
    .serial_number = {68, 16},
    .date_code = {84, 8},
};

// A2h.  Calibration constants begin at byte 56 (table 9-6); those that these boards use are the linear ones.
inline constexpr MemoryField calibration{76, 20};
inline constexpr MemoryField diagnostics{96, 10}; // temperature, Vcc, TX bias, TX power, RX power: table 9-11
// Extended module control and status (table 10-1).  The standard reserves its bits from 4 up; PON modules
// choose there what their shared RSSI and TX disable pin carries.
inline constexpr std::uint8_t extended_control = 118;
inline constexpr std::uint8_t gpon_rssi_bit = 0x80;  // RSSI of the GPON receiver, else of the XG-PON one
inline constexpr std::uint8_t rssi_input_bit = 0x40; // the pin carries RSSI, else TX disable
inline constexpr std::uint8_t no_xgpon_txdis_bit = 0x20;
inline constexpr std::uint8_t no_gpon_txdis_bit = 0x10;

} // namespace sff8472

namespace sff8636 {

inline constexpr IdpromLayout idprom{
    .identifier = 128,
    .connector = 130,
    .wavelength = 186,
    .extended_compliance = 192,
    .encoding = 139,
    .bit_rate = 140,
    .compliance = {131, 8},
    .distance = {142, 5},
    .vendor_name = {148, 16},
    .vendor_oui = {165, 3},
    .part_number = {168, 16},
    .revision = {184, 2},
    .serial_number = {196, 16},
    .date_code = {212, 8},
};
// Byte 131 when it says that the module's code is the extended one, in byte 192 (table 6-17).
inline constexpr std::uint8_t see_extended_compliance = 0x80;
inline constexpr std::uint8_t wavelength_counts_per_nm = 20; // bytes 186-187, table 6-14

// Lower memory: monitors of the module (table 6-7) and of its four channels (table 6-8), two bytes each.
inline constexpr std::uint8_t temperature = 22;
inline constexpr std::uint8_t voltage = 26;
inline constexpr std::uint8_t rx_power = 34; // of channel 1; the others' behind it
inline constexpr std::uint8_t tx_bias = 42;
inline constexpr std::uint8_t tx_power = 50;
inline constexpr std::uint8_t page_select = 127; // table 6-1

} // namespace sff8636

// The upper half of the map, which the display of a module's identification dumps.
inline constexpr std::uint8_t upper_half = 128;

} // namespace diagd
