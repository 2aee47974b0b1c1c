// SPDX-License-Identifier: GPL-2.0-or-later
// Where modules keep their identification: byte numbers of SFF-8472 (A0h) and of SFF-8636 (page 00h above
// 127).
#pragma once

#include <cstdint>

namespace diagd {

// SFF-8636 byte 131 when it says that the module's code is the extended one, in byte 192.
inline constexpr std::uint8_t sff8636_see_extended_compliance = 0x80;

struct MemoryField {
    std::uint8_t first;
    std::uint8_t length;
};

struct IdpromLayout {
    std::uint8_t identifier, connector, wavelength, extended_compliance, encoding, bit_rate;
    MemoryField compliance;
    MemoryField distance; // supported link lengths, one byte per kind of fibre
    MemoryField vendor_name, vendor_oui, part_number, revision, serial_number, date_code;
};

inline constexpr IdpromLayout sff8472_layout{
    .identifier = 0,
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

inline constexpr IdpromLayout sff8636_layout{
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

} // namespace diagd
