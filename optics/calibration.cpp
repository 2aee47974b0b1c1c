// SPDX-License-Identifier: GPL-2.0-or-later
#include "optics/calibration.hpp"

#include <bit>
#include <cmath>

namespace optics::sff8472 {

Linear read_linear(const Page &a2, std::size_t slope, std::size_t offset)
{
    return {a2.u16(slope) / 256.0, static_cast<double>(a2.s16(offset))};
}

Polynomial read_polynomial(const Page &a2, std::size_t first)
{
    Polynomial result;
    bool finite = true;
    bool any = false;
    for (std::size_t i = 0; i < 5; ++i) {
        const std::size_t at = first + 4 * i;
        const std::uint32_t bits = static_cast<std::uint32_t>(a2.u16(at)) << 16 | a2.u16(at + 2);
        const float coefficient = std::bit_cast<float>(bits);
        finite = finite && std::isfinite(coefficient);
        any = any || coefficient != 0;
        result.coefficients[4 - i] = coefficient;
    }
    result.usable = finite && any;
    return result;
}

} // namespace optics::sff8472
