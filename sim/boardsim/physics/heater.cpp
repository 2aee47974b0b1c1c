// SPDX-License-Identifier: GPL-2.0-or-later
#include "sim/boardsim/physics/heater.hpp"

#include <algorithm>
#include <cmath>

namespace sim {

namespace {

constexpr double step_ms = 500;
constexpr std::uint8_t fan_power_register = 4;
constexpr std::uint8_t fan_speed_register = 5;
constexpr double sensor_max_celsius = 127.5;

} // namespace

void Heater::heat(double watts)
{
    if (!timer_.runs())
        thermal_ = Thermal(board_.lm75.celsius());
    thermal_.heat(watts);
    timer_.start(step_ms, [this] { step(); });
}

void Heater::step()
{
    thermal_.step(step_ms / 1000,
                  airflow_of(board_.cpld.read(fan_power_register), board_.cpld.read(fan_speed_register)));
    const double celsius = std::min(thermal_.celsius(), sensor_max_celsius);
    board_.lm75.set_tenths(static_cast<int>(std::lround(celsius * 10)));
    timer_.start(step_ms, [this] { step(); });
}

} // namespace sim
