// SPDX-License-Identifier: GPL-2.0-or-later
// Putting values in natural units into the fields of a module memory.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstring>
#include <span>
#include <string>

#include "sim/modules/module_description.hpp"
#include "sim/modules/text.hpp"

namespace sim {

// Rounds to a 16-bit field and refuses what does not fit; `what` names the value.
inline std::uint16_t to_word(double raw, double min, double max, const char *what)
{
    const double rounded = std::round(raw);
    if (!(rounded >= min && rounded <= max))
        throw ModuleError(format("%s does not fit its field (raw value %g)", what, raw));
    return static_cast<std::uint16_t>(static_cast<std::int32_t>(rounded));
}

inline std::uint16_t to_unsigned_word(double raw, const char *what)
{
    return to_word(raw, 0, 65535, what);
}
inline std::uint16_t to_signed_word(double raw, const char *what)
{
    return to_word(raw, -32768, 32767, what);
}

inline double microwatts(double dbm)
{
    return 1000 * std::pow(10.0, dbm / 10);
}

// `reg` counts within the half.
inline void put_word(Half &half, std::size_t reg, std::uint16_t word)
{
    half.at(reg) = static_cast<std::uint8_t>(word >> 8);
    half.at(reg + 1) = static_cast<std::uint8_t>(word);
}

// Left-aligned, filled up with blanks, as all texts of module memories are.
inline void put_text(Half &half, std::size_t reg, std::size_t size, const std::string &text)
{
    for (std::size_t i = 0; i < size; ++i)
        half.at(reg + i) = static_cast<std::uint8_t>(i < text.size() ? text[i] : ' ');
}

inline void put_oui(Half &half, std::size_t reg, std::uint32_t oui)
{
    for (std::size_t i = 0; i < 3; ++i)
        half.at(reg + i) = static_cast<std::uint8_t>(oui >> (16 - 8 * i));
}

// Four thresholds in a row, each through `to_raw`.
template <class ToRaw>
void put_limits(Half &half, std::size_t reg, const Limits &limits, ToRaw &&to_raw)
{
    for (std::size_t i = 0; i < limits.size(); ++i)
        put_word(half, reg + 2 * i, to_raw(limits[i]));
}

} // namespace sim
