// SPDX-License-Identifier: GPL-2.0-or-later
// The fan settings and the texts of their codes.
#include "diagd/monitors/fan/fan.hpp"

using std::memory_order_relaxed;

constinit diagd::FanMaster fan_master{};

void diagd::reset_fan_master() noexcept
{
    fan_master.mode.store(fan_auto, memory_order_relaxed);
    fan_master.speed.store(speed_auto, memory_order_relaxed);
    fan_master.state.store(not_yet_written, memory_order_relaxed);
    fan_master.current_speed.store(not_yet_written, memory_order_relaxed);
    fan_master.open_temperature.store(default_temperature, memory_order_relaxed);
    fan_master.reference_temperature.store(default_temperature, memory_order_relaxed);
}

void diagd::lift_reference(std::int32_t seen, std::int32_t lifted) noexcept
{
    fan_master.reference_temperature.compare_exchange_strong(seen, lifted, memory_order_relaxed);
}

int fan_temperature_set(unsigned degrees) noexcept
{
    const auto tenths = static_cast<std::int32_t>(degrees * 10);
    fan_master.open_temperature.store(tenths, memory_order_relaxed);
    fan_master.reference_temperature.store(tenths, memory_order_relaxed);
    return 0;
}

int fan_temperature_get() noexcept
{
    return fan_master.open_temperature.load(memory_order_relaxed);
}

int fan_mode_set(int mode) noexcept
{
    fan_master.mode.store(mode, memory_order_relaxed);
    return 0;
}

int fan_mode_get() noexcept
{
    return fan_master.mode.load(memory_order_relaxed);
}

const char *fan_mode_str_get(int mode) noexcept
{
    switch (mode) {
    case diagd::fan_close:
        return "close";
    case diagd::fan_auto:
        return "auto";
    default:
        return "open";
    }
}

const char *fan_speed_str_get(int speed) noexcept
{
    switch (speed) {
    case diagd::speed_high:
        return "high";
    case diagd::speed_auto:
        return "auto";
    case diagd::speed_medium:
        return "medium";
    default:
        return "low";
    }
}
