// SPDX-License-Identifier: GPL-2.0-or-later
// Registers of the CPLD that operators change, 8 bits each.  In those of ports, bit n-1 is port n.
#pragma once

#include <cstdint>

namespace diagd {

enum class CpldRegister : std::uint8_t {
    logic_run = 0,       // written only: 0 while the logic is being replaced, 1 when it is done
    fan_power = 4,       // 1 on
    fan_speed = 5,       // here 1 low, 2 medium, 3 high
    usb_led = 6,         // 1 on
    pon_transmitter = 8, // per port
    pon_led = 10,        // per port
    pon_power = 11,      // per port
    sfp_power = 12,      // per port
    system_led = 13,     // 1 on
};

} // namespace diagd
