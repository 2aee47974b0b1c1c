// SPDX-License-Identifier: GPL-2.0-or-later
// Why the fans do what they do, from what "show fan json" and "show temperature" tell.  Pure.
#pragma once

#include <string>

namespace diagsh {

struct FanState {
    double temperature_c = 0;
    double fan_temperature_c = 0; // the number that was set; automatic mode runs the fans below it, too
    std::string mode;             // asked for: auto, open, close
    std::string speed;            // asked for: auto, low, medium, high
    std::string now_mode;         // what the fans were told last
    std::string now_speed;
    bool watched = true; // the fan monitor is on
};

// Lines for a person: what the fans do, why, and what would change it.
std::string fan_reason(const FanState &fans);

} // namespace diagsh
