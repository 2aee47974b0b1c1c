// SPDX-License-Identifier: GPL-2.0-or-later
// The board's temperature sensor, an LM75: four registers behind one pointer.
#pragma once

#include <cstdint>
#include <span>

namespace sim {

class Lm75 {
public:
    explicit Lm75(int temperature_tenths) { set_tenths(temperature_tenths); }

    // Registers: 0 temperature, 2 hysteresis, 3 over-temperature (16 bits, high byte first), 1 configuration
    // (8 bits).  A longer read repeats the register.  0 or a negative errno value.
    int read(std::uint8_t reg, std::span<std::uint8_t> data) const;
    int write(std::uint8_t reg, std::span<const std::uint8_t> data);

    // Two's complement in 1/256 of a degree Celsius; the chip has 1/2 degree, its later kin 1/8.
    void set_raw(std::uint16_t raw) { registers_[0] = raw; }
    // As read: the value set and the drift on top of it.
    [[nodiscard]] std::uint16_t raw() const { return static_cast<std::uint16_t>(registers_[0] + offset_); }
    [[nodiscard]] std::uint16_t set_point() const { return registers_[0]; }
    void set_offset(int raw) { offset_ = raw; }
    // Tenths of a degree Celsius, rounded to 1/256.
    void set_tenths(int tenths);
    [[nodiscard]] double celsius() const { return static_cast<std::int16_t>(raw()) / 256.0; }

private:
    std::uint16_t registers_[4] = {0, 0, 75 << 8, 80 << 8};
    int offset_ = 0;
};

} // namespace sim
