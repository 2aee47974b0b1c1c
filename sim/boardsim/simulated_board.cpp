// SPDX-License-Identifier: GPL-2.0-or-later
#include "sim/boardsim/simulated_board.hpp"

#include <cerrno>

namespace sim {

namespace {

// The CPLD as a device on its bus: as many registers in a row as there are bytes.
struct CpldRegisters {
    Cpld &cpld;

    int read(std::uint8_t reg, std::span<std::uint8_t> data) const
    {
        for (std::uint8_t &byte : data)
            byte = cpld.read(reg++);
        return 0;
    }
    int write(std::uint8_t reg, std::span<const std::uint8_t> data) const
    {
        for (const std::uint8_t byte : data)
            cpld.write(reg++, byte);
        return 0;
    }
};

} // namespace

// Calls `transfer(device)` with what answers at an address of a bus.
template <class Transfer>
int SimulatedBoard::on_device(int bus, std::uint8_t address, Transfer transfer)
{
    const auto is = [&](const auto &part) { return part.bus == bus && part.address == address; };
    if (is(description.lm75))
        return transfer(lm75);
    if (is(description.cpld))
        return transfer(CpldRegisters{cpld});
    if (is(description.multiplexer))
        return transfer(channel_switch);
    I2cDevice *device = devices.find(bus, address);
    return device != nullptr ? transfer(*device) : -ENXIO;
}

// As on_device, with the modules on the channels that are switched on by hand.
template <class Transfer>
int SimulatedBoard::on_module(int bus, Transfer transfer)
{
    for (int channel = 0; bus == description.multiplexer.bus && channel < description.multiplexer.channels;
         ++channel) {
        Module *module = channel_switch.on(channel) ? module_on(channel) : nullptr;
        if (module != nullptr && transfer(*module) == 0)
            return 0;
    }
    return -ENXIO;
}

int SimulatedBoard::read_device(int bus, std::uint8_t address, std::uint8_t reg, std::span<std::uint8_t> data)
{
    const int result = on_device(bus, address, [&](auto &&device) { return device.read(reg, data); });
    return result == 0 ? 0 : on_module(bus, [&](Module &module) { return module.read(address, reg, data); });
}

int SimulatedBoard::write_device(int bus, std::uint8_t address, std::uint8_t reg,
                                 std::span<const std::uint8_t> data)
{
    const int result = on_device(bus, address, [&](auto &&device) { return device.write(reg, data); });
    return result == 0 ? 0 : on_module(bus, [&](Module &module) { return module.write(address, reg, data); });
}

Module *SimulatedBoard::module_on(int channel)
{
    Cage *cage = cages.on_channel(channel);
    // A stuck presence line says nothing about the supply.
    const bool gated = cage != nullptr && !cpld.plain() && cage->presence == Presence::real;
    return cage != nullptr ? cage->answering(gated) : nullptr;
}

} // namespace sim
