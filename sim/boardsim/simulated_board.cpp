// SPDX-License-Identifier: GPL-2.0-or-later
#include "simulated_board.hpp"

#include <cerrno>

namespace sim {

int SimulatedBoard::read_device(int bus, std::uint8_t address, std::uint8_t reg, std::span<std::uint8_t> data)
{
    if (bus == description.lm75.bus && address == description.lm75.address)
        return lm75.read(reg, data);
    if (bus != description.cpld.bus || address != description.cpld.address)
        return -ENXIO;
    for (std::uint8_t &byte : data)
        byte = cpld.read(reg++);
    return 0;
}

int SimulatedBoard::write_device(int bus, std::uint8_t address, std::uint8_t reg,
                                 std::span<const std::uint8_t> data)
{
    if (bus == description.lm75.bus && address == description.lm75.address)
        return lm75.write(reg, data);
    if (bus != description.cpld.bus || address != description.cpld.address)
        return -ENXIO;
    for (const std::uint8_t byte : data)
        cpld.write(reg++, byte);
    return 0;
}

Module *SimulatedBoard::module_on(int channel)
{
    Cage *cage = cages.on_channel(channel);
    // A stuck presence line says nothing about the supply.
    const bool gated = cage != nullptr && !cpld.plain() && cage->presence == Presence::real;
    return cage != nullptr ? cage->answering(gated) : nullptr;
}

} // namespace sim
