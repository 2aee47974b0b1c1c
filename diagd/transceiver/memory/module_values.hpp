// SPDX-License-Identifier: GPL-2.0-or-later
// Reading the diagnostic values of the module that is selected on a CPLD handle.  Each function makes the
// transactions named beside it and no others.
#pragma once

#include "diagd/transceiver/decode/optical_values.hpp"

#include <array>
#include <cstdint>
#include <optional>
#include <span>

namespace diagd {

// Values of an SFP path.  A0h byte 92, then, byte by byte, A2h 96-105 of an internally calibrated module
// (bit 5) or A2h 76-151 of an externally calibrated one (bit 4).  Empty when the module is neither.
[[nodiscard]] std::optional<OpticalValues> read_path_values(std::uint32_t handle, PathAddress path,
                                                            std::uint16_t wavelength_nm) noexcept;

inline constexpr std::size_t sff8636_lanes = 4;
using Lanes = std::array<float, sff8636_lanes>;

// Lower memory of an SFF-8636 module, two byte reads each.
[[nodiscard]] float read_sff8636_temperature_c(std::uint32_t handle) noexcept; // 22-23
[[nodiscard]] float read_sff8636_voltage_v(std::uint32_t handle) noexcept;     // 26-27
// Laser wavelength in nm, bytes 186-187 of page 00h, which counts twentieths; the page must be selected.
[[nodiscard]] std::uint16_t read_sff8636_wavelength_nm(std::uint32_t handle) noexcept;
// One field per entry, from lane 1 on.
void read_sff8636_bias_ma(std::uint32_t handle, std::span<float> lanes) noexcept;      // 42-49
void read_sff8636_tx_power_dbm(std::uint32_t handle, std::span<float> lanes) noexcept; // 50-57
void read_sff8636_rx_power_dbm(std::uint32_t handle, std::span<float> lanes) noexcept; // 34-41

} // namespace diagd
