// SPDX-License-Identifier: GPL-2.0-or-later
// Start of fan control.
// Failure policy: without the sensor's bus or the CPLD's there is no fan control, silently, and the fans stay
// as they are; the commands are there nevertheless.
#include "diagd/board/board_sensor.hpp"
#include "diagd/core/privileges.hpp"
#include "diagd/core/state.hpp"
#include "diagd/monitors/fan/fan_cmd.hpp"
#include "diagd/monitors/fan/fan_monitor.hpp"
#include "diagd/monitors/fan/fan_settings.hpp"

#include "util_i2c.h"

#include <cstdio>

namespace {
constexpr int cpld_bus = 0;
}

int fan_init()
{
    diagd::reset_fan_master();
    fan_cmd_init();

    diagd::Privileges raised{"fan_monitor_init"};
    if (!diagd::open_board_sensor())
        return 0;
    const int cpld = misc_i2c_device_init(cpld_bus);
    if (cpld < 0)
        return 0;
    raised.lower();

    if (!diagd::start_fan_monitor(cpld)) {
        std::puts("fan_monitor_thread init failed!\r");
        return 0;
    }
    diagm.fan_monitor.store(1, std::memory_order_relaxed);
    return 0;
}
