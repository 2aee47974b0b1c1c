// SPDX-License-Identifier: GPL-2.0-or-later
// Resets through the board's GPIO device.  Failure policy: one error line in the log, the device closed, no
// further request.
#pragma once

#include <cstdint>

namespace diagd {

// Request word of the GPIO device: bits 0..7 value, bits 8..15 GPIO number.
[[nodiscard]] constexpr std::uint32_t gpio_word(unsigned gpio, unsigned value) noexcept
{
    return (gpio & 0xFFu) << 8 | (value & 0xFFu);
}

// Pulls the PON chip's reset line.
void pon_chip_reset() noexcept;

// Pulls the board's reset line until the board resets.
void system_gpio_reset() noexcept;

} // namespace diagd
