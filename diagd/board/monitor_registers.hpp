// SPDX-License-Identifier: GPL-2.0-or-later
// CPLD registers of the hardware monitors, and the handles by which their threads reach them.
#pragma once

#include <cstdint>

namespace diagd {

enum class MonitorRegister : std::uint8_t {
    fan_power = 4,              // 1 open, 0 close
    fan_speed = 5,              // a FanSpeed
    usb_led = 6,                // 1 on, 0 off
    over_temperature_seen = 14, // 1: the change of the flag has been seen
};

// Opens the CPLD for the life of the process; `reason` names the operation and must be a literal.  -1 when it
// cannot be opened, which is said on standard output.
[[nodiscard]] int open_monitored_cpld(const char *reason) noexcept;

// Writes one register on a handle that stays open, under the board semaphore.  A write that fails is passed
// over: there is nobody to tell, and the next change writes again.
void write_register(int handle, MonitorRegister reg, std::uint8_t value) noexcept;

} // namespace diagd
