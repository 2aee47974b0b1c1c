// SPDX-License-Identifier: GPL-2.0-or-later
// The optical thresholds of the PON ports, and how they read.
#pragma once

#include "diagd/core/state.hpp"
#include "diagd/core/text.hpp"

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <limits>

namespace diagd {

enum class PonType : std::size_t { gpon, xgpon };

// Of all ports of the type; entry 0 is port 1.
[[nodiscard]] inline auto &thresholds_of(PonType type) noexcept
{
    return diagm.pon_thresholds[static_cast<std::size_t>(type)];
}

// A threshold with two decimals, cut to the width of a threshold's text.
class ThresholdText {
public:
    explicit ThresholdText(float threshold) noexcept
    {
        char whole[64]; // of any float
        std::snprintf(whole, sizeof whole, "%.2f", static_cast<double>(threshold));
        copy_text(text_, whole);
    }
    [[nodiscard]] const char *c_str() const noexcept { return text_; }

private:
    char text_[32];
};

// Its whole part; the nearest number that there is for one beyond all of them.
[[nodiscard]] inline std::int64_t whole_threshold(float threshold) noexcept
{
    constexpr auto limit = static_cast<float>(std::numeric_limits<std::int64_t>::max() / 2);
    return static_cast<std::int64_t>(std::clamp(threshold, -limit, limit));
}

} // namespace diagd
