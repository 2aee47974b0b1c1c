// SPDX-License-Identifier: GPL-2.0-or-later
// External calibration of SFF-8472 (9.3): the module stores raw numbers and the constants that make values
// of them.
#pragma once

#include <array>
#include <cstdint>

#include "optics/memory.hpp"

namespace optics::sff8472 {

// Temperature, voltage, bias and transmitted power: slope * raw + offset, the offset in units of the raw
// number.
struct Linear {
    double slope = 1;
    double offset = 0;
    [[nodiscard]] double apply(double raw) const { return slope * raw + offset; }
};

// Received power: the sum of Rx_PWR(k) * raw^k, in 0.1 uW.
struct Polynomial {
    std::array<double, 5> coefficients{}; // Rx_PWR(0) first
    bool usable = false;                  // all are finite, and not all are 0
    [[nodiscard]] double apply(double raw) const
    {
        const auto &c = coefficients;
        return (((c[4] * raw + c[3]) * raw + c[2]) * raw + c[1]) * raw + c[0];
    }
};

// Slopes are unsigned with eight binary places, offsets signed.
Linear read_linear(const Page &a2, std::size_t slope, std::size_t offset);
// IEEE 754 single precision, big-endian, Rx_PWR(4) first.
Polynomial read_polynomial(const Page &a2, std::size_t first);

} // namespace optics::sff8472
