// SPDX-License-Identifier: GPL-2.0-or-later
// The heater: while it is on, the sensor follows the board's warmth, which the fans cool.
#include <algorithm>
#include <cmath>

#include "sim/boardsim/control/verbs.hpp"
#include "sim/modules/text.hpp"

namespace sim {

namespace {

constexpr double heat_step_ms = 500;
constexpr double max_watts = 200;
constexpr std::uint8_t fan_power_register = 4;
constexpr std::uint8_t fan_speed_register = 5;
constexpr double sensor_max_celsius = 127.5;

} // namespace

void Verbs::heat_step()
{
    thermal_.step(heat_step_ms / 1000,
                  airflow_of(board_.cpld.read(fan_power_register), board_.cpld.read(fan_speed_register)));
    const double celsius = std::min(thermal_.celsius(), sensor_max_celsius);
    board_.lm75.set_tenths(static_cast<int>(std::lround(celsius * 10)));
    heat_timer_ = loop_.after(scaled(heat_step_ms), [this] { heat_step(); });
}

void Verbs::set_heating(bool on)
{
    if (heat_timer_)
        loop_.cancel(*heat_timer_);
    heat_timer_.reset();
    if (on)
        heat_timer_ = loop_.after(scaled(heat_step_ms), [this] { heat_step(); });
}

// The first call takes the board over as warm as the sensor says; "off" leaves it so and lets the sensor
// rest.
std::string Verbs::heat(const Words &words)
{
    if (words[0] == "off") {
        set_heating(false);
        return {};
    }
    const double watts = parse_real(words[0], 0, max_watts);
    if (!heat_timer_)
        thermal_ = Thermal(board_.lm75.celsius());
    thermal_.heat(watts);
    set_heating(true);
    return {};
}

} // namespace sim
