// SPDX-License-Identifier: GPL-2.0-or-later
// The board's temperature.
#pragma once

// Reads the board's sensor, in tenths of a degree Celsius, signed.  Up to three attempts with a second's
// pause after each that fails, so a broken sensor costs the caller about three seconds; it then reads as it
// did last, or as 127.0 degrees if it never answered: neither a sensor that breaks on a hot board nor one
// that is dead from the start may stop the fans.  Takes no lock: the sensor has a bus of its own.
extern "C" int lm75_temperature_get() noexcept;
