// SPDX-License-Identifier: GPL-2.0-or-later
// Fields of an identification that all standards write alike.
#pragma once

#include <algorithm>
#include <cstring>

#include "optics/memory.hpp"
#include "optics/model.hpp"

namespace optics {

// Without the blanks and zeros that fill it up.
inline Text read_text(const Page &page, std::size_t first, std::size_t size)
{
    const Bytes bytes = page.range(first, size);
    std::size_t count = std::min(bytes.size(), Text{}.bytes.size());
    while (count != 0 && (bytes[count - 1] == ' ' || bytes[count - 1] == 0))
        --count;
    Text text;
    if (count != 0)
        std::memcpy(text.bytes.data(), bytes.data(), count);
    text.size = static_cast<std::uint8_t>(count);
    return text;
}

template <std::size_t size>
void read_bytes(const Page &page, std::size_t first, std::array<std::uint8_t, size> &into)
{
    const Bytes bytes = page.range(first, size);
    std::copy(bytes.begin(), bytes.end(), into.begin());
}

// 255 says: more than 254 units.
inline Length read_length(const Page &page, std::size_t byte, double unit_m)
{
    const unsigned count = page.u8(byte);
    return {count * unit_m, count == 255};
}

// Nominal rate in MBd; byte `fine` has it in units of 250 where byte `coarse`, in units of 100, is too small.
inline std::optional<unsigned> read_rate(const Page &page, std::size_t coarse, std::size_t fine)
{
    const unsigned mbd = page.u8(coarse) == 255 ? page.u8(fine) * 250U : page.u8(coarse) * 100U;
    return mbd != 0 ? std::optional(mbd) : std::nullopt;
}

} // namespace optics
