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

// `mode`: 0 closed, 1 open, anything else automatic.  `threshold`: where the automatic mode opens the fans.
//
// The reference is a ratchet.  Each step of 5.0 to 7.9 degrees above it lifts it to the temperature reached;
// a larger jump leaves it alone, and only the operator lowers it again.  The fans run on until the board is
// more than 7.9 degrees below the reference, also below the threshold, and start again there: a board that
// has been hot is cooled further down than one that is only warm.
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
