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

std::string not_looked(const FanState &fans)
{
    return fans.watched ? "the monitor has not looked since, which takes five seconds.\n"
                        : "the fan monitor is off (fan monitor in diagnose switches it on).\n";
}

std::string why_open(const FanState &fans)
{
    const bool run = fans.now_mode == "open";
    const std::string they = run ? "They run" : "They stand still";
    const std::string now = "the board has " + degrees(fans.temperature_c);
    const std::string limit = ", they open at " + degrees(fans.open_at_c) + " (fan temperature)";
    if (fans.mode != "auto" && fans.mode == fans.now_mode)
        return they + " because that was asked for (fan mode " + fans.mode + ").\n";
    if (fans.mode != "auto")
        return they + " although fan mode " + fans.mode + " was asked for: " + not_looked(fans);
    const bool warm = fans.temperature_c >= fans.open_at_c;
    if (run == warm)
        return they + ": " + now + limit + ".\n";
    if (!run || !fans.watched)
        return they + " although " + now + limit + ": " + not_looked(fans);
    return they + ": " + now + limit + ". It was warmer before, and is cooled to " +
           degrees(cooled_below_peak_c) +
           " below that (fan temperature forgets it),\nor the monitor has not looked since the start.\n";
}

std::string why_speed(const FanState &fans)
{
    const std::string is = "Their speed is " + fans.now_speed;
    if (fans.speed != "auto")
        return is + " because that was asked for (fan speed " + fans.speed + "); fan speed auto ends that.\n";
    const char *by_temperature = fans.temperature_c > high_above_c     ? "high"
                                 : fans.temperature_c > medium_above_c ? "medium"
                                                                       : "low";
    const std::string limits =
        "medium above " + degrees(medium_above_c) + ", high above " + degrees(high_above_c);
    if (fans.now_speed != by_temperature)
        return is + ", by the temperature it would be " + by_temperature + " (" + limits +
               "): " + not_looked(fans);
    return is + " by the temperature: " + limits + ".\n";
}

} // namespace

std::string fan_reason(const FanState &fans)
{
    return why_open(fans) + why_speed(fans);
}

} // namespace diagsh
