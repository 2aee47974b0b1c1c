// SPDX-License-Identifier: GPL-2.0-or-later
// Laser wavelengths (A0h bytes 60-61) by which a module's use is known.
#pragma once

#include "diagd/transceiver/decode/optical_values.hpp"

#include <array>
#include <cstdint>

namespace diagd {

struct WavelengthRow {
    std::uint16_t wavelength_nm;
    PortKind kind;
};

inline constexpr std::array<WavelengthRow, 7> wavelength_table{{
    {850, PortKind::gigabit_ethernet},
    {1310, PortKind::gigabit_ethernet},
    {1311, PortKind::gigabit_ethernet},
    {1490, PortKind::gpon},
    {1535, PortKind::gpon},
    {1577, PortKind::xgpon},
    {1791, PortKind::xgpon},
}};

} // namespace diagd
