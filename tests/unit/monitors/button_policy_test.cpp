// SPDX-License-Identifier: GPL-2.0-or-later
// The meaning of samples of the reset push-button.
#include "diagd/monitors/reset_button/button_policy.hpp"

#include <gtest/gtest.h>

using diagd::ButtonAction;

namespace {

// Action of the first sample that has one, and its number, with `pressed` samples of a press and then one
// after the release.
std::pair<ButtonAction, int> press(int pressed)
{
    int held = 0;
    for (int sample = 1; sample <= pressed + 1; ++sample)
        if (const ButtonAction action = diagd::sample_button(sample <= pressed, held);
            action != ButtonAction::none)
            return {action, sample};
    return {ButtonAction::none, 0};
}

} // namespace

TEST(ButtonPolicy, a_button_that_is_not_pressed_does_nothing)
{
    int held = 0;
    for (int sample = 0; sample < 1000; ++sample)
        EXPECT_EQ(diagd::sample_button(false, held), ButtonAction::none);
    EXPECT_EQ(held, 0);
}

TEST(ButtonPolicy, a_press_of_1_to_24_samples_is_short_and_acts_on_release)
{
    for (int pressed = 1; pressed <= 24; ++pressed)
        EXPECT_EQ(press(pressed), std::pair(ButtonAction::short_press, pressed + 1));
}

TEST(ButtonPolicy, the_25th_sample_is_a_long_press_while_the_button_is_held)
{
    for (int pressed : {25, 26, 100})
        EXPECT_EQ(press(pressed), std::pair(ButtonAction::long_press, 25));
}
