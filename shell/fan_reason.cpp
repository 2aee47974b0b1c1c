// SPDX-License-Identifier: GPL-2.0-or-later
// The reasons of the fans.
#include "shell/fan_reason.hpp"

#include <array>
#include <cmath>
#include <cstdio>

namespace diagsh {

namespace {

// As the daemon's monitor decides (diagd/monitors/fan/fan_policy.hpp).
constexpr double medium_above_c = 50.0, high_above_c = 65.0, run_below_c = 7.9;

std::string degrees(double value)
{
    std::array<char, 32> text{};
    std::snprintf(text.data(), text.size(), "%.1f degrees", value);
    return text.data();
}

// What is measured and what is set, compared as the daemon does.
long tenths(double value)
{
    return std::lround(value * 10);
}

std::string not_looked(const FanState &fans)
{
    return fans.watched ? "the monitor has not looked since, which takes five seconds.\n"
                        : "the fan monitor is off (fan monitor in diagnose switches it on).\n";
}

std::string why_open(const FanState &fans)
{
    const std::string they =
        fans.now_mode == "open" ? "They are told to run" : "They are told to stand still";
    if (fans.mode != "auto" && fans.mode == fans.now_mode)
        return they + " because that was asked for (fan mode " + fans.mode + ").\n";
    if (fans.mode != "auto")
        return they + " although fan mode " + fans.mode + " was asked for: " + not_looked(fans);

    // As the board has been; heat raises it later.
    const double run_from_c = fans.fan_temperature_c - run_below_c;
    const std::string rule = "the board has " + degrees(fans.temperature_c) + ", they run at " +
                             degrees(run_from_c) + " and above (fan temperature is " +
                             degrees(fans.fan_temperature_c) + ", less 7.9)";
    const bool warm = tenths(fans.temperature_c) >= tenths(run_from_c);
    if ((fans.now_mode == "open") == warm)
        return they + ": " + rule + ".\n";
    const std::string although = they + " although " + rule + ": ";
    if (!warm || tenths(fans.temperature_c) >= tenths(fans.fan_temperature_c))
        return although + not_looked(fans);
    return although + "it was hotter, which makes them stop earlier, at " + degrees(fans.fan_temperature_c) +
           " at most (fan temperature forgets it),\nor " + not_looked(fans);
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
