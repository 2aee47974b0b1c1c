// SPDX-License-Identifier: GPL-2.0-or-later
// Diagnostic values of a module (see module_values.hpp).  A byte that cannot be read counts as 0, and the
// value comes out as the formulas then make it.
#include "diagd/transceiver/memory/module_values.hpp"

#include "diagd/transceiver/memory/access.hpp"
#include "diagd/transceiver/memory/idprom_layout.hpp"

namespace diagd {

namespace {

std::uint16_t read_sff8636_field(std::uint32_t handle, std::uint8_t reg) noexcept
{
    return be16(read_block<2>(handle, first_path.id, reg));
}

template <class Convert>
void read_lanes(std::uint32_t handle, std::uint8_t reg, std::span<float> lanes, Convert convert) noexcept
{
    for (float &lane : lanes) {
        lane = convert(read_sff8636_field(handle, reg));
        reg = static_cast<std::uint8_t>(reg + 2);
    }
}

float sff8636_power_dbm(std::uint16_t raw) noexcept
{
    return optical_power_dbm(raw, sff_power_unit_uw);
}

} // namespace

std::uint16_t read_wavelength_nm(std::uint32_t handle, std::uint8_t id_address) noexcept
{
    const std::uint16_t word = transceiver_read_word(handle, id_address, sff8472_layout.wavelength);
    return static_cast<std::uint16_t>(word << 8 | word >> 8);
}

std::optional<OpticalValues> read_path_values(std::uint32_t handle, PathAddress path,
                                              std::uint16_t wavelength_nm) noexcept
{
    const std::uint8_t monitoring = transceiver_read_byte(handle, path.id, monitoring_type);
    if ((monitoring & internally_calibrated) != 0) {
        const auto fields = read_block<10>(handle, path.diagnostics, 96);
        return optical_values(raw_diagnostics(fields), path.diagnostics, wavelength_nm);
    }
    if ((monitoring & externally_calibrated) != 0) {
        const auto block = read_block<76>(handle, path.diagnostics, 76);
        const std::span<const std::uint8_t, 76> bytes{block};
        return optical_values(raw_diagnostics(bytes.subspan<20, 10>()), path.diagnostics, wavelength_nm,
                              calibration_constants(bytes.first<20>()));
    }
    return std::nullopt;
}

float read_sff8636_temperature_c(std::uint32_t handle) noexcept
{
    return temperature_c(static_cast<std::int16_t>(read_sff8636_field(handle, 22)));
}

float read_sff8636_voltage_v(std::uint32_t handle) noexcept
{
    return voltage_v(read_sff8636_field(handle, 26));
}

std::uint16_t read_sff8636_wavelength_nm(std::uint32_t handle) noexcept
{
    constexpr unsigned counts_per_nm = 20;
    return static_cast<std::uint16_t>(read_sff8636_field(handle, sff8636_layout.wavelength) / counts_per_nm);
}

void read_sff8636_bias_ma(std::uint32_t handle, std::span<float> lanes) noexcept
{
    read_lanes(handle, 42, lanes, [](std::uint16_t raw) { return bias_ma(raw, sff_bias_unit_ua); });
}

void read_sff8636_tx_power_dbm(std::uint32_t handle, std::span<float> lanes) noexcept
{
    read_lanes(handle, 50, lanes, sff8636_power_dbm);
}

void read_sff8636_rx_power_dbm(std::uint32_t handle, std::span<float> lanes) noexcept
{
    read_lanes(handle, 34, lanes, sff8636_power_dbm);
}

} // namespace diagd
