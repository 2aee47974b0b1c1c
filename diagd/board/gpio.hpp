// SPDX-License-Identifier: GPL-2.0-or-later
// The board's GPIO device, and the resets through it.  Failure policy of the resets: one error line in the
// log, the device closed, no further request.
#pragma once

#include "base/fd.hpp"

#include <cstdint>

namespace diagd {

// Request word of the GPIO device: bits 0..7 value, bits 8..15 GPIO number.
[[nodiscard]] constexpr std::uint32_t gpio_word(unsigned gpio, unsigned value) noexcept
{
    return (gpio & 0xFFu) << 8 | (value & 0xFFu);
}

// Requests of the GPIO driver.  `get` makes the line an input as well.
enum class GpioRequest : unsigned long { set = 1, get = 3 };

inline constexpr const char *gpio_device = "/dev/tq_gpio_cfg";

// False with errno when it cannot be opened; it needs privileges.
[[nodiscard]] base::Fd open_gpio() noexcept;
// False with errno when the driver refuses.
[[nodiscard]] bool request_gpio(const base::Fd &device, GpioRequest request, unsigned gpio,
                                unsigned value) noexcept;

// Pulls the PON chip's reset line.
void pon_chip_reset() noexcept;

// Pulls the board's reset line until the board resets.
void system_gpio_reset() noexcept;

} // namespace diagd
