// SPDX-License-Identifier: GPL-2.0-or-later
// Laser wavelengths (A0h bytes 60-61) by which a module's use is known.
#pragma once

#include "diagd/transceiver/decode/optical_values.hpp"

#include <array>
#include <cstdint>

namespace diagd {

struct WavelengthRow {
    std::uint16_t wavelength_nm;
    ModuleClass module_class;
};

inline constexpr std::array<WavelengthRow, 7> wavelength_table{{
    {850, ModuleClass::gigabit_ethernet},
    {1310, ModuleClass::gigabit_ethernet},
    {1311, ModuleClass::gigabit_ethernet},
    {1490, ModuleClass::gpon},
    {1535, ModuleClass::gpon},
    {1577, ModuleClass::xgpon},
    {1791, ModuleClass::xgpon},
}};

} // namespace diagd
