// SPDX-License-Identifier: GPL-2.0-or-later
// Reading the diagnostics of a module (see optical_readout.hpp).
#include "diagd/transceiver/memory/optical_readout.hpp"

#include "diagd/board/cage.hpp"
#include "diagd/board/registers.hpp"
#include "diagd/transceiver/memory/diagnostics.hpp"

#include "util_cpld.h"

#include <cstdio>

namespace diagd {

void read_optical_path(std::uint32_t handle, PathAddress path, OpticalReadout &readout) noexcept
{
    const PathReading reading = read_path(handle, path, readout_policy);
    const bool is_xg = transceiver_type_by_wavelength(reading.wavelength_nm) == PortKind::xgpon;
    (is_xg ? readout.xg : readout.plain) = reading.values.value_or(OpticalValues{});
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
