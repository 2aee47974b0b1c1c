// SPDX-License-Identifier: GPL-2.0-or-later
// Reading the diagnostics of a module (see optical_readout.hpp).
//
// Failure policy: a byte that cannot be read is 0, and the values are what the formulas make of it: 0, -inf
// or NaN.  Nothing is retried; only debugging tells.
#include "diagd/transceiver/memory/optical_readout.hpp"

#include "diagd/board/cage.hpp"
#include "diagd/board/registers.hpp"
#include "diagd/transceiver/memory/access.hpp"

#include "util_cpld.h"

#include <array>
#include <cstdio>
#include <span>

namespace diagd {

namespace {

constexpr std::size_t longest_block = 30;

void debug_block(const char *calibration, std::uint8_t address, std::uint8_t first,
                 std::span<const std::uint8_t> bytes) noexcept
{
    if (cpld_debug == 0)
        return;
    // In one piece: the monitors' threads print lines of their own.
    std::array<char, (sizeof " 0xff" - 1) * longest_block + 1> values{};
    std::size_t length = 0;
    for (const std::uint8_t byte : bytes)
        length +=
            static_cast<std::size_t>(std::snprintf(&values[length], values.size() - length, " 0x%x", byte));
    std::printf("%scpld i2c read 0x%x register 0x%x value%s\r\n", calibration, address, first, values.data());
}

std::uint8_t read_monitoring_type(std::uint32_t handle, std::uint8_t address) noexcept
{
    std::uint8_t value = 0;
    const int result = read_checked(handle, address, monitoring_type, value);
    if (cpld_debug != 0 && result < 0)
        std::printf("cpld i2c %d from %d  read %d bytes failed, ret %d\r\n", static_cast<int>(handle),
                    monitoring_type, 1, result);
    else if (cpld_debug != 0)
        std::printf("cpld i2c read 0x%x register 0x%x value 0x%x\r\n", address, monitoring_type, value);
    return value;
}

OpticalValues read_internal(std::uint32_t handle, PathAddress path, std::uint16_t wavelength_nm) noexcept
{
    constexpr std::uint8_t first = 96;
    const auto fields = read_block<10>(handle, path.diagnostics, first);
    debug_block("interAdjust ", path.diagnostics, first, fields);
    return optical_values(raw_diagnostics(fields), path.diagnostics, wavelength_nm);
}

OpticalValues read_external(std::uint32_t handle, PathAddress path, std::uint16_t wavelength_nm) noexcept
{
    constexpr std::uint8_t first = 76;
    const auto block = read_block<longest_block>(handle, path.diagnostics, first);
    debug_block("outerAdjust ", path.diagnostics, first, block);
    const std::span<const std::uint8_t, longest_block> bytes{block};
    return optical_values(raw_diagnostics(bytes.last<10>()), path.diagnostics, wavelength_nm,
                          calibration_constants(bytes.first<20>()));
}

// Temperature, voltage, and bias, TX and RX power of the first lane.
OpticalValues read_lower_memory(std::uint32_t handle, PathAddress path, std::uint16_t wavelength_nm) noexcept
{
    constexpr std::array<std::uint8_t, 5> fields{22, 26, 42, 50, 34};
    std::array<std::uint8_t, 2 * fields.size()> bytes{};
    for (std::size_t i = 0; i < fields.size(); ++i)
        transceiver_read_block(handle, path.id, fields[i], &bytes[2 * i], 2);
    debug_block("", path.id, fields.front(), bytes);
    return optical_values(raw_diagnostics(bytes), path.diagnostics, wavelength_nm);
}

OpticalValues read_values(std::uint32_t handle, PathAddress path, std::uint16_t wavelength_nm) noexcept
{
    const std::uint8_t monitoring = read_monitoring_type(handle, path.id);
    if ((monitoring & internally_calibrated) != 0)
        return read_internal(handle, path, wavelength_nm);
    if ((monitoring & externally_calibrated) != 0)
        return read_external(handle, path, wavelength_nm);
    return read_lower_memory(handle, path, wavelength_nm);
}

} // namespace

void read_optical_path(std::uint32_t handle, PathAddress path, OpticalReadout &readout) noexcept
{
    transceiver_read_byte(handle, path.id, 0); // the identifier, which decides nothing here
    const std::uint16_t wavelength_nm = read_wavelength_nm(handle, path.id);
    const bool is_xg = transceiver_type_by_wavelength(wavelength_nm) == PortKind::xgpon;
    (is_xg ? readout.xg : readout.plain) = read_values(handle, path, wavelength_nm);
}

std::optional<OpticalReadout> read_optics(const BoardSession &board, PortKind kind, int port,
                                          SelectFailure on_failure) noexcept
{
    if (!module_present(board, kind, port))
        return std::nullopt;

    const int channel = module_channel(kind, port);
    if (cpld_debug != 0)
        std::printf("choose channel %d\r\n", channel);
    const ChannelSelect selected{board, channel,
                                 on_failure == SelectFailure::read_on ? ChannelEnd::always
                                                                      : ChannelEnd::when_selected};
    if (!selected) {
        if (cpld_debug != 0)
            std::printf("cpld i2c %d set register %d failed\r\n", board.handle(),
                        static_cast<int>(CpldRegister::module_channel));
        if (on_failure == SelectFailure::no_module)
            return std::nullopt;
    }

    OpticalReadout readout{};
    const auto handle = static_cast<std::uint32_t>(board.handle());
    read_optical_path(handle, first_path, readout);
    if (read_wavelength_nm(handle, second_path.id) != 0)
        read_optical_path(handle, second_path, readout);
    return readout;
}

} // namespace diagd
