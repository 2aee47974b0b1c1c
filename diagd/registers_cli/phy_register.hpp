// SPDX-License-Identifier: GPL-2.0-or-later
// Register numbers of Ethernet PHYs (IEEE 802.3) as the PHY library takes them.
#pragma once

#include <cstdint>

namespace diagd {

// Clause 22: registers 0 to 15 are the standard's, the rest is the maker's.
inline constexpr std::uint32_t phy_standard_registers = 16;

// Window to the indirect registers: the number goes into one register, the value is in the other.
inline constexpr std::uint32_t phy_indirect_address = 0x1e;
inline constexpr std::uint32_t phy_indirect_value = 0x1f;

// Clause 45: bit 30 marks the number, the device address is in bits 16 and up, the register below.
[[nodiscard]] constexpr std::uint32_t clause45_register(std::uint32_t device, std::uint32_t reg) noexcept
{
    return 1U << 30 | device << 16 | (reg & 0xffff);
}

} // namespace diagd
