// SPDX-License-Identifier: GPL-2.0-or-later
// Registers of a gigabit Ethernet PHY after power-on, as IEEE 802.3 has them: clause 22 by their number,
// clause 45 ("device.register") by the number that phy_clause45_register makes.
#pragma once

#include <array>
#include <cstdint>

namespace sim {

// Bit 30 of a register number marks a clause 45 one: device in bits 16 to 20, register in bits 0 to 15.
inline constexpr std::uint32_t phy_clause45 = 1U << 30;

[[nodiscard]] constexpr std::uint32_t phy_clause45_register(std::uint32_t device, std::uint32_t reg)
{
    return phy_clause45 | device << 16 | reg;
}

namespace phy {

inline constexpr std::uint32_t control = 0;
inline constexpr std::uint16_t control_reset = 1 << 15;
inline constexpr std::uint16_t control_power_down = 1 << 11;
// Loopback, speed, autonegotiation, power-down, isolate, duplex, collision test; the rest reads 0.
inline constexpr std::uint16_t control_kept = 0x7dc0;
inline constexpr std::uint32_t id1 = 2;
inline constexpr std::uint32_t id2 = 3;
inline constexpr std::uint32_t mmd_access = 13; // bits 15:14 function, 4:0 device (22.2.4.3.11)
inline constexpr std::uint32_t mmd_data = 14;
inline constexpr std::uint32_t indirect_address = 0x1e;
inline constexpr std::uint32_t indirect_data = 0x1f;
inline constexpr std::uint16_t link_up = 1 << 2; // of every status register

// Devices: 1 PMA/PMD, 3 PCS, 7 autonegotiation, 30 and 31 the maker's.
inline constexpr std::uint32_t devices = 1U << 1 | 1U << 3 | 1U << 7 | 1U << 30 | 1U << 31;
inline constexpr std::array<std::uint32_t, 3> standard_devices = {1, 3, 7};

struct Value {
    std::uint32_t number;
    std::uint16_t value;
};

inline constexpr Value power_on[] = {
    {control, 0x1140},                      // autonegotiation, full duplex, 1000 Mb/s
    {4, 0x0de1},                            // advertised: 10 and 100 Mb/s, pauses
    {9, 0x0300},                            // advertised: 1000BASE-T
    {15, 0x3000},                           // able to do 1000BASE-T
    {phy_clause45_register(1, 0), 0x0040},  // 1000 Mb/s
    {phy_clause45_register(1, 4), 0x0070},  // able to do 1000, 100, 10 Mb/s
    {phy_clause45_register(1, 5), 0x008b},  // in the package: clause 22, devices 1, 3, 7
    {phy_clause45_register(3, 0), 0x0040},  // 1000 Mb/s
    {phy_clause45_register(3, 5), 0x008b},  //
    {phy_clause45_register(7, 0), 0x1000},  // autonegotiation
    {phy_clause45_register(7, 5), 0x008b},  //
    {phy_clause45_register(7, 16), 0x0de1}, // as register 4
};

// What a link changes.
struct LinkValue {
    std::uint32_t number;
    std::uint16_t down;
    std::uint16_t up;
};
inline constexpr LinkValue link_values[] = {
    {5, 0x0000, 0xcde1},                            // abilities of the partner
    {6, 0x0004, 0x000d},                            // the partner negotiates, too
    {10, 0x0000, 0x3c00},                           // receivers good, the partner does 1000BASE-T
    {phy_clause45_register(7, 19), 0x0000, 0xcde1}, // as register 5
};
// Status registers: abilities, link (latching low: a lost link shows until it is read), negotiation complete.
inline constexpr LinkValue status_values[] = {
    {1, 0x7949, 0x796d},
    {phy_clause45_register(1, 1), 0x0002, 0x0006},
    {phy_clause45_register(3, 1), 0x0002, 0x0006},
    {phy_clause45_register(7, 1), 0x0008, 0x002d},
};

// The bus cannot change these; of the clause 45 devices, registers 1 to 6 and 7.19.
inline constexpr std::array<std::uint32_t, 8> read_only = {1, id1, id2, 5, 6, 8, 10, 15};

} // namespace phy

} // namespace sim
