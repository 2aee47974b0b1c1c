// SPDX-License-Identifier: GPL-2.0-or-later
// Reading the diagnostic values of the module that is selected on a CPLD handle.  Each function makes the
// transactions named beside it and no others. Failure policy: a byte that cannot be read counts as 0, and the
// value comes out as the formulas then make it: 0, -inf or NaN.  Nothing is retried.
#pragma once

#include "diagd/transceiver/decode/optical_values.hpp"

#include <array>
#include <cstdint>
#include <optional>
#include <span>

namespace diagd {

// What reading one optical path means to one of its users.
struct ReadPolicy {
    bool identifier_first;       // read A0h byte 0 before the rest, though it decides nothing
    std::uint8_t external_bytes; // of an externally calibrated module, from A2h byte 76 on: constants and
                                 // values are in the first 30
    bool lower_memory; // a module that is not calibrated is read as SFF-8636; otherwise it has no values
    bool is_traced;    // what is read goes to standard output while cpld_debug is on
};

inline constexpr ReadPolicy listing_policy{
    .identifier_first = false, .external_bytes = 76, .lower_memory = false, .is_traced = false};
inline constexpr ReadPolicy threshold_policy{
    .identifier_first = false, .external_bytes = 76, .lower_memory = false, .is_traced = false};
inline constexpr ReadPolicy readout_policy{
    .identifier_first = true, .external_bytes = 30, .lower_memory = true, .is_traced = true};

// Values of a path whose wavelength is known.  A0h byte 92, then, byte by byte, A2h 96-105 of an internally
// calibrated module, the policy's A2h bytes from 76 on of an externally calibrated one, and of any other,
// where the policy has lower memory read, the fields at 22, 26, 42, 50 and 34 of A0h.
[[nodiscard]] std::optional<OpticalValues> read_path_values(std::uint32_t handle, PathAddress path,
                                                            std::uint16_t wavelength_nm,
                                                            const ReadPolicy &policy) noexcept;

struct PathReading {
    std::uint16_t wavelength_nm;
    std::optional<OpticalValues> values; // empty: the module has no calibrated diagnostics
};

// A path from its beginning: A0h byte 0 if the policy has it read, the word at A0h 60, and what
// read_path_values reads.
[[nodiscard]] PathReading read_path(std::uint32_t handle, PathAddress path,
                                    const ReadPolicy &policy) noexcept;
// The same of a path whose laser is of the kind; of any other the values are not read.
[[nodiscard]] PathReading read_path_of(PortKind kind, std::uint32_t handle, PathAddress path,
                                       const ReadPolicy &policy) noexcept;

// Laser wavelength in nm, A0h bytes 60-61: one word read.
[[nodiscard]] std::uint16_t read_wavelength_nm(std::uint32_t handle, std::uint8_t id_address) noexcept;

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
