// SPDX-License-Identifier: GPL-2.0-or-later
// The reasons of the fans.
#include "shell/fan_reason.hpp"

#include <array>
#include <cstdio>

namespace diagsh {

namespace {

// As the daemon's monitor decides (diagd/monitors/fan/fan_policy.hpp).
constexpr double medium_above_c = 50.0, high_above_c = 65.0, cooled_below_peak_c = 7.9;

std::string degrees(double value)
{
    std::array<char, 32> text{};
    std::snprintf(text.data(), text.size(), "%.1f degrees", value);
    return text.data();
}

std::string why_open(const FanState &fans)
{
    const std::string now = "the board has " + degrees(fans.temperature_c);
    if (fans.mode != "auto")
        return "They are " + fans.now_mode + " because that was asked for (fan mode " + fans.mode + ").\n";
    const std::string limit = ", they open at " + degrees(fans.open_at_c) + " (fan temperature)";
    if (fans.now_mode != "open")
        return "They stand still: " + now + limit + ".\n";
    if (fans.temperature_c >= fans.open_at_c)
        return "They run: " + now + limit + ".\n";
    return "They run: " + now + limit + ". It was warmer before, and is cooled to " +
           degrees(cooled_below_peak_c) +
           " below that (fan temperature forgets it),\nor the fan monitor is off " +
           "or has not looked since the start.\n";
}

std::string why_speed(const FanState &fans)
{
    const std::string is = "Their speed is " + fans.now_speed;
    if (fans.speed != "auto")
        return is + " because that was asked for (fan speed " + fans.speed + "); fan speed auto ends that.\n";
    return is + " by the temperature: medium above " + degrees(medium_above_c) + ", high above " +
           degrees(high_above_c) + ".\n";
}

} // namespace

std::string fan_reason(const FanState &fans)
{
    return why_open(fans) + why_speed(fans);
}

} // namespace diagsh
