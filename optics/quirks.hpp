// SPDX-License-Identifier: GPL-2.0-or-later
// Modules that keep their numbers in other units than the standard's.  Only what is known of a real or a
// described module stands here: a wavelength or a rate proves nothing.
#pragma once

#include <array>
#include <string_view>

#include "optics/model.hpp"

namespace optics {

struct Quirk {
    std::string_view vendor, part;
    double wavelength_nm;  // of the path that is meant: a combo module has two under one part number
    double tx_power, bias; // times the standard's unit
};

inline constexpr std::array<Quirk, 2> quirk_table{{
    {"OPTOLUX", "OLX-XGPON-N1", 1577, 2, 2},
    {"OPTOLUX", "OLX-COMBO-D2", 1577, 2, 2},
}};

inline const Quirk *quirk_of(const Identity &identity)
{
    for (const Quirk &quirk : quirk_table)
        if (identity.part.view() == quirk.part && identity.vendor.view() == quirk.vendor &&
            identity.wavelength_nm == quirk.wavelength_nm)
            return &quirk;
    return nullptr;
}

} // namespace optics
