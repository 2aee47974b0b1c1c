// SPDX-License-Identifier: GPL-2.0-or-later
// Laser wavelengths (A0h bytes 60-61) by which a module's use is known.
#ifndef DIAGD_WAVELENGTH_TABLE_HPP
#define DIAGD_WAVELENGTH_TABLE_HPP

#include "optical_values.hpp"

#include <array>
#include <cstdint>

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

#endif
