// SPDX-License-Identifier: GPL-2.0-or-later
// Diagnostics of the optical module in one cage, both PON generations in one record.
//
// Other readers of modules (transceiver/) go by the identifier and by the wavelength that is asked for.  This
// one takes what the module's monitoring type says, so it has received power of every module, too.
#pragma once

#include "diagd/board/interface.hpp"
#include "diagd/board/session.hpp"
#include "diagd/transceiver/decode/optical_values.hpp"

#include <cstdint>
#include <optional>

namespace diagd {

// All zero until something is read.
struct OpticalReadout {
    OpticalValues plain; // of paths of any wavelength class but XG-PON
    OpticalValues xg;    // of XG-PON paths
};
static_assert(sizeof(OpticalReadout) == 10 * sizeof(float));

// What a channel that cannot be selected means.
enum class SelectFailure {
    no_module,
    read_on, // bytes then read as 0
};

// Reads one path of the module that is selected on the handle, by the readout's policy (see diagnostics.hpp),
// into its half of the record.
void read_optical_path(std::uint32_t handle, PathAddress path, OpticalReadout &readout) noexcept;

// Reads the module in the cage of a port: its first path and, when that answers with a wavelength, its
// second.  Empty when the cage holds no module.
[[nodiscard]] std::optional<OpticalReadout> read_optics(const BoardSession &board, PortKind kind, int port,
                                                        SelectFailure on_failure) noexcept;

} // namespace diagd
