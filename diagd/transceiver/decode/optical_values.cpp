// SPDX-License-Identifier: GPL-2.0-or-later
// Conversions of SFF-8472 and SFF-8636 diagnostic words (see optical_values.hpp).
//
// Products and sums are single precision, as in the modules' other readers, so that every display of the box
// shows the same digits; only the logarithm is taken in double precision.
#include "diagd/transceiver/decode/optical_values.hpp"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>

using namespace diagd;

namespace {

// Laser wavelengths (A0h bytes 60-61) by which a module's use is known.
struct WavelengthRow {
    std::uint16_t wavelength_nm;
    PortKind kind;
};

constexpr std::array<WavelengthRow, 7> wavelength_table{{
    {850, PortKind::gigabit_ethernet},
    {1310, PortKind::gigabit_ethernet},
    {1311, PortKind::gigabit_ethernet},
    {1490, PortKind::gpon},
    {1535, PortKind::gpon},
    {1577, PortKind::xgpon},
    {1791, PortKind::xgpon},
}};

// XG-PON optics, and the GPON optics of a combo module's second path, report in double units.
bool double_units(std::uint8_t diagnostics_address, std::uint16_t wavelength_nm) noexcept
{
    switch (transceiver_type_by_wavelength(wavelength_nm)) {
    case PortKind::xgpon:
        return true;
    case PortKind::gpon:
        return diagnostics_address != first_path.diagnostics;
    default:
        return false;
    }
}

} // namespace

PortKind transceiver_type_by_wavelength(std::uint16_t wavelength_nm) noexcept
{
    const auto row = std::ranges::find(wavelength_table, wavelength_nm, &WavelengthRow::wavelength_nm);
    return row == wavelength_table.end() ? PortKind::none : row->kind;
}

float tx_power_unit_by_wavelength(std::uint8_t diagnostics_address, std::uint16_t wavelength_nm) noexcept
{
    return double_units(diagnostics_address, wavelength_nm) ? 2 * sff_power_unit_uw : sff_power_unit_uw;
}

float bias_current_unit_by_wavelength(std::uint8_t diagnostics_address, std::uint16_t wavelength_nm) noexcept
{
    return double_units(diagnostics_address, wavelength_nm) ? 2 * sff_bias_unit_ua : sff_bias_unit_ua;
}

namespace diagd {

ModuleFamily module_family(std::uint8_t identifier) noexcept
{
    switch (identifier) {
    case 0x00: // unspecified: early SFP modules leave the byte empty
    case 0x03: // SFP, SFP+
        return ModuleFamily::sff8472;
    case 0x02: // soldered to the board: QSFP memory on these boards
    case 0x0C: // QSFP
    case 0x0D: // QSFP+
    case 0x11: // QSFP28
        return ModuleFamily::sff8636;
    default:
        return ModuleFamily::unsupported;
    }
}

namespace {

float apply(float raw, Calibration cal) noexcept
{
    return raw * cal.slope + cal.offset;
}

} // namespace

std::uint16_t be16(std::span<const std::uint8_t, 2> bytes) noexcept
{
    return static_cast<std::uint16_t>(bytes[0] << 8 | bytes[1]);
}

float calibration_value(std::uint16_t word) noexcept
{
    // Bit 7 of the second byte, not of the first, tells that the module stored the two's complement.
    const bool negated = (word & 0x0080) != 0;
    const auto bits = static_cast<std::uint16_t>(negated ? 0x10000 - word : word);
    const auto whole = static_cast<std::int8_t>(bits >> 8);
    const float value = static_cast<float>(whole) + static_cast<float>(bits & 0xF0) / 256.0F;
    return negated ? -value : value;
}

CalibrationConstants calibration_constants(std::span<const std::uint8_t, 20> b) noexcept
{
    const auto pair = [](std::span<const std::uint8_t, 4> p) {
        return Calibration{calibration_value(be16(p.first<2>())), calibration_value(be16(p.last<2>()))};
    };
    return {
        .bias = pair(b.subspan<0, 4>()),
        .tx_power = pair(b.subspan<4, 4>()),
        .temperature = pair(b.subspan<8, 4>()),
        .voltage = pair(b.subspan<12, 4>()),
        // SFF-8472 reserves these bytes and keeps a polynomial for RX power in 56-75; the optics of these
        // boards have a linear pair here instead.
        .rx_power = pair(b.subspan<16, 4>()),
    };
}

RawDiagnostics raw_diagnostics(std::span<const std::uint8_t, 10> b) noexcept
{
    return {
        .temperature = static_cast<std::int16_t>(be16(b.subspan<0, 2>())),
        .voltage = be16(b.subspan<2, 2>()),
        .bias = be16(b.subspan<4, 2>()),
        .tx_power = be16(b.subspan<6, 2>()),
        .rx_power = be16(b.subspan<8, 2>()),
    };
}

float temperature_c(std::int16_t raw, Calibration cal) noexcept
{
    return apply(static_cast<float>(std::abs(raw)), cal) / 256.0F;
}

float voltage_v(std::uint16_t raw, Calibration cal) noexcept
{
    return apply(static_cast<float>(raw), cal) / 10000.0F;
}

float bias_ma(std::uint16_t raw, float unit_ua, Calibration cal) noexcept
{
    return apply(static_cast<float>(raw), cal) * unit_ua / 1000.0F;
}

float optical_power_dbm(std::uint16_t raw, float unit_uw, Calibration cal) noexcept
{
    const float milliwatts = apply(static_cast<float>(raw), cal) / (1000.0F / unit_uw);
    return static_cast<float>(10.0 * std::log10(static_cast<double>(milliwatts)));
}

OpticalValues optical_values(const RawDiagnostics &raw, std::uint8_t diagnostics_address,
                             std::uint16_t wavelength_nm, const CalibrationConstants &cal) noexcept
{
    const float bias_unit = bias_current_unit_by_wavelength(diagnostics_address, wavelength_nm);
    const float tx_unit = tx_power_unit_by_wavelength(diagnostics_address, wavelength_nm);
    return {
        .temperature_c = temperature_c(raw.temperature, cal.temperature),
        .voltage_v = voltage_v(raw.voltage, cal.voltage),
        .bias_ma = bias_ma(raw.bias, bias_unit, cal.bias),
        .tx_power_dbm = optical_power_dbm(raw.tx_power, tx_unit, cal.tx_power),
        .rx_power_dbm = optical_power_dbm(raw.rx_power, sff_power_unit_uw, cal.rx_power),
    };
}

} // namespace diagd
