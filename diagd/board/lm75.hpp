// SPDX-License-Identifier: GPL-2.0-or-later
// The board's temperature sensor, an LM75.
#pragma once

#include <cstdint>
#include <span>

// Reads the board's sensor, in tenths of a degree Celsius, signed.  Up to three attempts with a second's
// pause after each that fails, so a broken sensor costs the caller about three seconds; it then reads as it
// did last, or as 127.0 degrees if it never answered: neither a sensor that breaks on a hot board nor one
// that is dead from the start may stop the fans.  Takes no lock: the sensor has a bus of its own.
extern "C" int lm75_temperature_get() noexcept;

namespace diagd {

// Stands for the temperature until the sensor has answered once.  Warmer than any that an LM75 measures (125
// degrees), so that a board without a sensor is cooled as much as it can be.
inline constexpr int lm75_never_read_tenths_c = 1270;

// Opens the sensor's bus, for the life of the process.  False when it cannot be opened; every reading then
// fails.
bool open_board_sensor() noexcept;

// From the temperature register (LM75 data sheet, register 0: two's complement, 1/256 degree, high byte
// first) to tenths of a degree, cut towards zero.
[[nodiscard]] constexpr int lm75_tenths_c(std::span<const std::uint8_t, 2> reg) noexcept
{
    const auto raw = static_cast<std::int16_t>(reg[0] << 8 | reg[1]);
    return raw * 5 / 128;
}

} // namespace diagd
