// SPDX-License-Identifier: GPL-2.0-or-later
#include "sim/boardsim/devices/i2c_devices.hpp"

#include <algorithm>
#include <cerrno>

namespace sim {

namespace {

constexpr std::uint8_t eeprom_page = 8;
constexpr std::uint8_t switch_bytes = 2;

Memory memory_of(const board::I2cDevice &description)
{
    if (description.fru)
        return encode_fru(*description.fru);
    Memory blank;
    blank.fill(0xff);
    return blank;
}

std::variant<Eeprom, Lm75> chip_of(const board::I2cDevice &description)
{
    if (description.kind == board::I2cDevice::Kind::lm75)
        return Lm75(description.temperature_tenths);
    return Eeprom(memory_of(description));
}

} // namespace

int Eeprom::read(std::uint8_t reg, std::span<std::uint8_t> data) const
{
    for (std::uint8_t &byte : data)
        byte = memory_[reg++];
    return 0;
}

int Eeprom::write(std::uint8_t reg, std::span<const std::uint8_t> data)
{
    const auto page = static_cast<std::uint8_t>(reg / eeprom_page * eeprom_page);
    for (const std::uint8_t byte : data) {
        memory_[reg] = byte;
        reg = static_cast<std::uint8_t>(page + (reg + 1) % eeprom_page);
    }
    return 0;
}

int ChannelSwitch::read(std::uint8_t reg, std::span<std::uint8_t> data) const
{
    for (std::uint8_t &byte : data)
        byte = static_cast<std::uint8_t>(channels_ >> 8 * (reg++ % switch_bytes));
    return 0;
}

int ChannelSwitch::write(std::uint8_t reg, std::span<const std::uint8_t> data)
{
    for (const std::uint8_t byte : data) {
        const int shift = 8 * (reg++ % switch_bytes);
        channels_ = static_cast<std::uint16_t>((channels_ & ~(0xff << shift)) | byte << shift);
    }
    return 0;
}

int I2cDevice::read(std::uint8_t reg, std::span<std::uint8_t> data) const
{
    return std::visit([&](const auto &part) { return part.read(reg, data); }, chip);
}

int I2cDevice::write(std::uint8_t reg, std::span<const std::uint8_t> data)
{
    return std::visit([&](auto &part) { return part.write(reg, data); }, chip);
}

I2cDevices::I2cDevices(const board::Board &board)
{
    for (const board::I2cDevice &description : board.devices)
        devices_.push_back({description, chip_of(description)});
}

I2cDevice *I2cDevices::find(int bus, std::uint8_t address)
{
    const auto found = std::ranges::find_if(devices_, [&](const I2cDevice &device) {
        return device.description.bus == bus && device.description.address == address;
    });
    return found != devices_.end() ? &*found : nullptr;
}

} // namespace sim
