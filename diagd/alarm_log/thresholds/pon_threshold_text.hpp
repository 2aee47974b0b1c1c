// SPDX-License-Identifier: GPL-2.0-or-later
// The optical thresholds of the PON ports, and how they read.
#pragma once

#include "diagd/board/interface.hpp"
#include "diagd/core/state.hpp"
#include "diagd/core/text.hpp"

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <limits>

namespace diagd {

// Of all ports of a PON kind; entry 0 is port 1.
[[nodiscard]] inline auto &thresholds_of(PortKind kind) noexcept
{
    return diagm.pon_thresholds[pon_index(kind)];
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
