// SPDX-License-Identifier: GPL-2.0-or-later
// Diagnostic values of a module (see diagnostics.hpp).
#include "diagd/transceiver/memory/diagnostics.hpp"

#include "diagd/transceiver/memory/access.hpp"
#include "diagd/transceiver/memory/memory_map.hpp"

#include "util_cpld.h"

#include <algorithm>
#include <cstdio>

namespace diagd {

namespace {

constexpr std::size_t longest_external = 76;
constexpr std::size_t longest_traced = 30;
static_assert(longest_external == listing_policy.external_bytes &&
              longest_external == threshold_policy.external_bytes);
static_assert(longest_traced == readout_policy.external_bytes);

// One path of the module that is selected on a handle.
class PathReader {
public:
    PathReader(std::uint32_t handle, PathAddress path, std::uint16_t wavelength_nm,
               const ReadPolicy &policy) noexcept
        : handle_(handle), path_(path), wavelength_nm_(wavelength_nm), policy_(policy)
    {
    }

    std::optional<OpticalValues> read() const noexcept
    {
        const std::uint8_t monitoring = read_monitoring_type();
        if ((monitoring & internally_calibrated) != 0)
            return read_internal();
        if ((monitoring & externally_calibrated) != 0)
            return read_external();
        return policy_.lower_memory ? std::optional{read_lower_memory()} : std::nullopt;
    }

private:
    bool is_traced() const noexcept { return policy_.is_traced && cpld_debug != 0; }

    std::uint8_t read_monitoring_type() const noexcept
    {
        std::uint8_t value = 0;
        const int result = read_checked(handle_, path_.id, monitoring_type, value);
        if (is_traced() && result < 0)
            std::printf("cpld i2c %d from %d  read %d bytes failed, ret %d\r\n", static_cast<int>(handle_),
                        monitoring_type, 1, result);
        else if (is_traced())
            std::printf("cpld i2c read 0x%x register 0x%x value 0x%x\r\n", path_.id, monitoring_type, value);
        return value;
    }

    void trace(const char *calibration, std::uint8_t address, std::uint8_t first,
               std::span<const std::uint8_t> bytes) const noexcept
    {
        if (!is_traced())
            return;
        // In one piece: the monitors' threads print lines of their own.
        std::array<char, (sizeof " 0xff" - 1) * longest_traced + 1> values{};
        std::size_t length = 0;
        for (const std::uint8_t byte : bytes.first(std::min(bytes.size(), longest_traced)))
            length += static_cast<std::size_t>(
                std::snprintf(&values[length], values.size() - length, " 0x%x", byte));
        std::printf("%scpld i2c read 0x%x register 0x%x value%s\r\n", calibration, address, first,
                    values.data());
    }

    OpticalValues values(const RawDiagnostics &raw, const CalibrationConstants &constants = {}) const noexcept
    {
        return optical_values(raw, path_.diagnostics, wavelength_nm_, constants);
    }

    OpticalValues read_internal() const noexcept
    {
        using sff8472::diagnostics;
        const auto fields = read_block<diagnostics.length>(handle_, path_.diagnostics, diagnostics.first);
        trace("interAdjust ", path_.diagnostics, diagnostics.first, fields);
        return values(raw_diagnostics(fields));
    }

    OpticalValues read_external() const noexcept
    {
        using sff8472::calibration;
        using sff8472::diagnostics;
        std::array<std::uint8_t, longest_external> block{};
        const std::span<std::uint8_t> read = std::span{block}.first(policy_.external_bytes);
        transceiver_read_block(handle_, path_.diagnostics, calibration.first, read.data(),
                               static_cast<std::int32_t>(read.size()));
        trace("outerAdjust ", path_.diagnostics, calibration.first, read);
        const std::span<const std::uint8_t, longest_external> bytes{block};
        return values(
            raw_diagnostics(bytes.subspan<diagnostics.first - calibration.first, diagnostics.length>()),
            calibration_constants(bytes.first<calibration.length>()));
    }

    // Temperature, voltage, and bias, TX and RX power of the first lane.
    OpticalValues read_lower_memory() const noexcept
    {
        constexpr std::array fields{sff8636::temperature, sff8636::voltage, sff8636::tx_bias,
                                    sff8636::tx_power, sff8636::rx_power};
        std::array<std::uint8_t, 2 * fields.size()> bytes{};
        for (std::size_t i = 0; i < fields.size(); ++i)
            transceiver_read_block(handle_, path_.id, fields[i], &bytes[2 * i], 2);
        trace("", path_.id, fields.front(), bytes);
        return values(raw_diagnostics(bytes));
    }

    std::uint32_t handle_;
    PathAddress path_;
    std::uint16_t wavelength_nm_;
    const ReadPolicy &policy_;
};

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

template <class Wanted>
PathReading read_path_if(Wanted wanted, std::uint32_t handle, PathAddress path,
                         const ReadPolicy &policy) noexcept
{
    if (policy.identifier_first)
        transceiver_read_byte(handle, path.id, identifier_byte);
    PathReading reading{read_wavelength_nm(handle, path.id), {}};
    if (wanted(transceiver_type_by_wavelength(reading.wavelength_nm)))
        reading.values = read_path_values(handle, path, reading.wavelength_nm, policy);
    return reading;
}

} // namespace

std::optional<OpticalValues> read_path_values(std::uint32_t handle, PathAddress path,
                                              std::uint16_t wavelength_nm, const ReadPolicy &policy) noexcept
{
    return PathReader{handle, path, wavelength_nm, policy}.read();
}

PathReading read_path(std::uint32_t handle, PathAddress path, const ReadPolicy &policy) noexcept
{
    return read_path_if([](PortKind) { return true; }, handle, path, policy);
}

PathReading read_path_of(PortKind kind, std::uint32_t handle, PathAddress path,
                         const ReadPolicy &policy) noexcept
{
    return read_path_if([kind](PortKind found) { return found != PortKind::none && found == kind; }, handle,
                        path, policy);
}

std::uint16_t read_wavelength_nm(std::uint32_t handle, std::uint8_t id_address) noexcept
{
    const std::uint16_t word = transceiver_read_word(handle, id_address, sff8472::idprom.wavelength);
    return static_cast<std::uint16_t>(word << 8 | word >> 8);
}

float read_sff8636_temperature_c(std::uint32_t handle) noexcept
{
    return temperature_c(static_cast<std::int16_t>(read_sff8636_field(handle, sff8636::temperature)));
}

float read_sff8636_voltage_v(std::uint32_t handle) noexcept
{
    return voltage_v(read_sff8636_field(handle, sff8636::voltage));
}

std::uint16_t read_sff8636_wavelength_nm(std::uint32_t handle) noexcept
{
    const std::uint16_t counts = read_sff8636_field(handle, sff8636::idprom.wavelength);
    return static_cast<std::uint16_t>(counts / sff8636::wavelength_counts_per_nm);
}

void read_sff8636_bias_ma(std::uint32_t handle, std::span<float> lanes) noexcept
{
    read_lanes(handle, sff8636::tx_bias, lanes,
               [](std::uint16_t raw) { return bias_ma(raw, sff_bias_unit_ua); });
}

void read_sff8636_tx_power_dbm(std::uint32_t handle, std::span<float> lanes) noexcept
{
    read_lanes(handle, sff8636::tx_power, lanes, sff8636_power_dbm);
}

void read_sff8636_rx_power_dbm(std::uint32_t handle, std::span<float> lanes) noexcept
{
    read_lanes(handle, sff8636::rx_power, lanes, sff8636_power_dbm);
}

} // namespace diagd
