// SPDX-License-Identifier: GPL-2.0-or-later
#include "sim/boardsim/devices/lm75.hpp"

#include <cerrno>
#include <cmath>

namespace sim {

namespace {

constexpr std::uint8_t temperature = 0;
constexpr std::uint8_t configuration = 1;
constexpr std::uint8_t register_count = 4;

} // namespace

int Lm75::read(std::uint8_t reg, std::span<std::uint8_t> data) const
{
    if (reg >= register_count)
        return -ENXIO;
    const std::uint16_t value = reg == temperature ? raw() : registers_[reg];
    for (std::size_t i = 0; i < data.size(); ++i) {
        const bool high = i % 2 == 0 && reg != configuration;
        data[i] = static_cast<std::uint8_t>(high ? value >> 8 : value);
    }
    return 0;
}

int Lm75::write(std::uint8_t reg, std::span<const std::uint8_t> data)
{
    if (reg >= register_count)
        return -ENXIO;
    if (reg == temperature || data.empty())
        return 0;
    registers_[reg] = data[0];
    if (reg != configuration)
        registers_[reg] = static_cast<std::uint16_t>(data[0] << 8 | (data.size() > 1 ? data[1] : 0));
    return 0;
}

void Lm75::set_tenths(int tenths)
{
    set_raw(static_cast<std::uint16_t>(static_cast<std::int16_t>(std::lround(tenths * 25.6))));
}

} // namespace sim
