// SPDX-License-Identifier: GPL-2.0-or-later
// Registers of the CPLD, 8 bits each, and access to single ones.  In those of ports, bit n-1 is port n.
//
// Failure policy: a register that cannot be read reads as 0, a write that fails is passed over: there is
// nobody to tell, and what matters is written again.
#pragma once

#include "util_cpld.h"

#include <cstdint>

namespace diagd {

enum class CpldRegister : std::uint8_t {
    logic_run = 0,              // written only: 0 while the logic is being replaced, 1 when it is done
    fan_power = 4,              // 1 on
    fan_speed = 5,              // 0 low, 1 medium, 2 high, 5 automatic; the diagnostics node writes 1, 2, 3
    usb_led = 6,                // 1 on
    pon_transmitter = 8,        // per port
    pon_led = 10,               // per port
    pon_power = 11,             // per port
    sfp_power = 12,             // per port
    system_led = 13,            // 1 on
    over_temperature_seen = 14, // 1: the change of the flag has been seen
    module_channel = 119,       // the multiplexer's, which the library switches

    // A cage that is supplied and holds a module reads as 1.
    pon_presence = pon_power,
    sfp_presence = sfp_power,
};

[[nodiscard]] inline std::uint8_t read_register(int handle, CpldRegister reg) noexcept
{
    std::uint8_t value = 0;
    misc_cpld_i2c_read_byte(handle, static_cast<std::uint8_t>(reg), &value);
    return value;
}

// For whoever holds the board already, or needs not to.
inline void write_register(int handle, CpldRegister reg, std::uint8_t value) noexcept
{
    misc_cpld_i2c_set_byte(handle, static_cast<std::uint8_t>(reg), value);
}

// Holds the board's semaphore meanwhile: for handles that stay open.
void lock_and_write_register(int handle, CpldRegister reg, std::uint8_t value) noexcept;

} // namespace diagd
