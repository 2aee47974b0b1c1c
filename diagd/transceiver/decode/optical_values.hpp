// SPDX-License-Identifier: GPL-2.0-or-later
// From raw diagnostic words of a module to engineering values.  Pure: no bus, no state.
#pragma once

#include "diagd/board/interface.hpp"

#include <cstdint>
#include <span>

namespace diagd {

// Memory map families, told apart by the identifier (A0h byte 0, SFF-8024 table 4-1).
enum class ModuleFamily : std::uint8_t { unsupported, sff8472, sff8636 };

// The two-wire addresses of one optical path of an SFP-class module.
struct PathAddress {
    std::uint8_t id;          // A0h page
    std::uint8_t diagnostics; // A2h page
};
inline constexpr PathAddress first_path{0x50, 0x51};
inline constexpr PathAddress second_path{0x58, 0x59}; // combo PON modules only

inline constexpr float sff_bias_unit_ua = 2.0F;  // weight of one count of a bias field
inline constexpr float sff_power_unit_uw = 0.1F; // weight of one count of a power field

// Linear correction of one raw field.  The default is that of an internally calibrated module: none.
struct Calibration {
    float slope = 1.0F;
    float offset = 0.0F;
};

// External calibration constants, in the order of A2h bytes 76-95.
struct CalibrationConstants {
    Calibration bias, tx_power, temperature, voltage, rx_power;
};

// Raw fields of A2h bytes 96-105.
struct RawDiagnostics {
    std::int16_t temperature;
    std::uint16_t voltage, bias, tx_power, rx_power;
};

struct OpticalValues {
    float temperature_c; // without its sign
    float voltage_v;
    float bias_ma;
    float tx_power_dbm; // -inf for no light, NaN when calibration makes it negative
    float rx_power_dbm;

    friend bool operator==(const OpticalValues &, const OpticalValues &) = default;
};

[[nodiscard]] ModuleFamily module_family(std::uint8_t identifier) noexcept;

// One 16-bit constant as the modules of these boards store it: a signed whole part in the first byte and a
// fraction in the upper half of the second, whose bit 7 marks the whole word as negated.
[[nodiscard]] float calibration_value(std::uint16_t word) noexcept;
[[nodiscard]] CalibrationConstants
calibration_constants(std::span<const std::uint8_t, 20> a2h_76_95) noexcept;

[[nodiscard]] std::uint16_t be16(std::span<const std::uint8_t, 2> bytes) noexcept;
[[nodiscard]] RawDiagnostics raw_diagnostics(std::span<const std::uint8_t, 10> a2h_96_105) noexcept;

// Scalar conversions.  Raw counts are 1/256 degree, 100 uV, `unit_ua` and `unit_uw`.
[[nodiscard]] float temperature_c(std::int16_t raw, Calibration cal = {}) noexcept;
[[nodiscard]] float voltage_v(std::uint16_t raw, Calibration cal = {}) noexcept;
[[nodiscard]] float bias_ma(std::uint16_t raw, float unit_ua, Calibration cal = {}) noexcept;
[[nodiscard]] float optical_power_dbm(std::uint16_t raw, float unit_uw, Calibration cal = {}) noexcept;

// All five of one SFP path, with the units of its diagnostics address and wavelength.
[[nodiscard]] OpticalValues optical_values(const RawDiagnostics &raw, std::uint8_t diagnostics_address,
                                           std::uint16_t wavelength_nm,
                                           const CalibrationConstants &cal = {}) noexcept;

} // namespace diagd

extern "C" {
// Kind of the ports whose optics have that laser; none of any other.
diagd::PortKind transceiver_type_by_wavelength(std::uint16_t wavelength_nm) noexcept;
// Weight of one count of the TX power field in microwatts, of the bias field in microamperes.
float tx_power_unit_by_wavelength(std::uint8_t diagnostics_address, std::uint16_t wavelength_nm) noexcept;
float bias_current_unit_by_wavelength(std::uint8_t diagnostics_address, std::uint16_t wavelength_nm) noexcept;
}
