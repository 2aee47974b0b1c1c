// SPDX-License-Identifier: GPL-2.0-or-later
// What a press of the reset push-button means, from samples taken every 200 ms.
#pragma once

namespace diagd {

enum class ButtonAction {
    none,
    short_press, // released in time: reboot
    long_press,  // held for five seconds: reset a part of the configuration, then reboot
};

inline constexpr int long_press_samples = 25;

// Takes one sample; `held` counts those of the press, 0 before the first.  There is no debouncing beyond the
// sampling.  The count is not cleared on release, as a press always ends in a reboot.
[[nodiscard]] constexpr ButtonAction sample_button(bool pressed, int &held) noexcept
{
    if (pressed)
        return ++held >= long_press_samples ? ButtonAction::long_press : ButtonAction::none;
    return held >= 1 && held <= long_press_samples ? ButtonAction::short_press : ButtonAction::none;
}

} // namespace diagd
