// SPDX-License-Identifier: GPL-2.0-or-later
// The module's extended control and status byte: A2h 118.  SFF-8472 has its bits reserved from bit 4 up; PON
// modules choose there what their shared RSSI and TX disable pins carry.
#pragma once

#include <cstdint>

namespace diagd {

inline constexpr std::uint8_t gpon_rssi_bit = 0x80;  // RSSI of the GPON receiver, else of the XG-PON one
inline constexpr std::uint8_t rssi_input_bit = 0x40; // the pin carries RSSI, else TX disable
inline constexpr std::uint8_t no_xgpon_txdis_bit = 0x20;
inline constexpr std::uint8_t no_gpon_txdis_bit = 0x10;

// Of the module selected on a CPLD handle; it reads as 0 when it cannot be read.
[[nodiscard]] std::uint8_t read_extended_control(std::uint32_t handle) noexcept;
// Sets or clears one bit and leaves the others as they read.
void write_extended_control_bit(std::uint32_t handle, std::uint8_t bit, bool on) noexcept;

} // namespace diagd
