// SPDX-License-Identifier: GPL-2.0-or-later
// What the fans are to do at a board temperature.  Temperatures are tenths of a degree Celsius.
#pragma once

namespace diagd {

// Level of an automatic speed: 0 low, 1 medium, 2 high.
[[nodiscard]] constexpr int automatic_fan_speed(int temperature) noexcept
{
    if (temperature > 650)
        return 2;
    return temperature > 500 ? 1 : 0;
}

struct FanDecision {
    bool open;
    int reference; // the reference from now on
};

// `mode`: 0 closed, 1 open, anything else automatic.  `threshold`: the temperature that the operator has set,
// and the reference until the board has been hotter.
//
// The fans run from 7.9 degrees below the reference on, but never later than from the threshold on.  The
// reference is a ratchet: each step of 5.0 to 7.9 degrees above it lifts it to the temperature reached, a
// larger jump leaves it alone, and only the operator lowers it again.  After a hot period the fans thus stop
// and start at a higher temperature than before.
[[nodiscard]] constexpr FanDecision decide_fans(int mode, int temperature, int threshold,
                                                int reference) noexcept
{
    constexpr int step_min = 50;
    constexpr int step_max = 79;
    constexpr int hysteresis = 79;

    if (mode == 1)
        return {.open = true, .reference = reference};
    if (mode == 0)
        return {.open = false, .reference = reference};
    if (temperature < threshold)
        return {.open = temperature >= reference - hysteresis, .reference = reference};
    const bool lifted = temperature >= reference + step_min && temperature <= reference + step_max;
    return {.open = true, .reference = lifted ? temperature : reference};
}

} // namespace diagd
