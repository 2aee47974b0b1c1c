// SPDX-License-Identifier: GPL-2.0-or-later
// Devices on the I2C buses that nothing but the I2C commands asks: inventory memories, further sensors, and
// the control bytes of the switch in front of the cages.
#pragma once

#include <cstdint>
#include <span>
#include <variant>
#include <vector>

#include "platform/description/board_description.hpp"
#include "sim/boardsim/devices/fru.hpp"
#include "sim/boardsim/devices/lm75.hpp"

namespace sim {

// A memory of 256 bytes.  Reading goes on at the start behind its end; a write stays in its page of 8.
class Eeprom {
public:
    explicit Eeprom(const Memory &memory) : memory_(memory) {}

    int read(std::uint8_t reg, std::span<std::uint8_t> data) const;
    int write(std::uint8_t reg, std::span<const std::uint8_t> data);
    [[nodiscard]] const Memory &memory() const { return memory_; }
    void restore(const Memory &memory) { memory_ = memory; }

private:
    Memory memory_;
};

// Control byte 0 has channels 0 to 7, byte 1 the others.  The channels switched on here are those of whoever
// works by hand; the channel that a handle selects is the handle's own and does not show.
class ChannelSwitch {
public:
    int read(std::uint8_t reg, std::span<std::uint8_t> data) const;
    int write(std::uint8_t reg, std::span<const std::uint8_t> data);
    [[nodiscard]] bool on(int channel) const { return (channels_ >> channel & 1) != 0; }
    [[nodiscard]] unsigned channels() const { return channels_; }

private:
    std::uint16_t channels_ = 0;
};

struct I2cDevice {
    const board::I2cDevice &description;
    std::variant<Eeprom, Lm75> chip;

    int read(std::uint8_t reg, std::span<std::uint8_t> data) const;
    int write(std::uint8_t reg, std::span<const std::uint8_t> data);
};

class I2cDevices {
public:
    explicit I2cDevices(const board::Board &board);

    // nullptr when there is none.
    I2cDevice *find(int bus, std::uint8_t address);
    [[nodiscard]] std::vector<I2cDevice> &all() { return devices_; }

private:
    std::vector<I2cDevice> devices_;
};

} // namespace sim
