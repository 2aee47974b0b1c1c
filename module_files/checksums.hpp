// SPDX-License-Identifier: GPL-2.0-or-later
// Check codes of module memories: the low byte of the sum of a range, stored right behind it.
#pragma once

#include <cstddef>
#include <cstdint>

#include "module_files/module_image.hpp"

namespace module_files {

// Offsets within 128 bytes of lower or upper memory.
struct Checksum {
    const char *name;
    std::size_t first;
    std::size_t place; // of the code, one after the last byte summed up
};

inline constexpr Checksum checksum_base{"CC_BASE", 0, 63};          // SFF-8472 A0h
inline constexpr Checksum checksum_extended{"CC_EXT", 64, 95};      // SFF-8472 A0h
inline constexpr Checksum checksum_diagnostics{"CC_DMI", 0, 95};    // SFF-8472 A2h
inline constexpr Checksum checksum_qsfp_base{"CC_BASE", 0, 63};     // SFF-8636 page 00h, bytes 128-190, 191
inline constexpr Checksum checksum_qsfp_extended{"CC_EXT", 64, 95}; // SFF-8636 page 00h, bytes 192-222, 223

inline std::uint8_t compute(const Half &memory, const Checksum &sum)
{
    unsigned total = 0;
    for (std::size_t i = sum.first; i < sum.place; ++i)
        total += memory[i];
    return static_cast<std::uint8_t>(total);
}

} // namespace module_files
