// SPDX-License-Identifier: GPL-2.0-or-later
// The whole simulated board: every part of it in one place, no I/O.
#pragma once

#include <functional>

#include "sim/boardsim/bus/faults.hpp"
#include "sim/boardsim/bus/transaction_log.hpp"
#include "sim/boardsim/devices/cages.hpp"
#include "sim/boardsim/devices/cpld.hpp"
#include "sim/boardsim/devices/i2c_devices.hpp"
#include "sim/boardsim/devices/lm75.hpp"
#include "sim/boardsim/devices/phys.hpp"

namespace sim {

struct SimulatedBoard {
    explicit SimulatedBoard(board::Board description_)
        : description(std::move(description_)), cages(description), cpld(description, cages),
          lm75(description.lm75.temperature_tenths), devices(description), phys(description)
    {
    }
    SimulatedBoard(const SimulatedBoard &) = delete;
    SimulatedBoard &operator=(const SimulatedBoard &) = delete;

    // Bus access outside a handle's channel: the devices that sit on the bus itself, and the modules that are
    // switched to it by hand.
    int read_device(int bus, std::uint8_t address, std::uint8_t reg, std::span<std::uint8_t> data);
    int write_device(int bus, std::uint8_t address, std::uint8_t reg, std::span<const std::uint8_t> data);
    // Module behind a channel, nullptr when nothing answers there.
    Module *module_on(int channel);

    const board::Board description;
    Cages cages;
    Cpld cpld;
    Lm75 lm75;
    ChannelSwitch channel_switch;
    I2cDevices devices;
    Phys phys;
    Faults faults;
    TransactionLog log;

private:
    template <class Transfer>
    int on_device(int bus, std::uint8_t address, Transfer transfer);
    template <class Transfer>
    int on_module(int bus, Transfer transfer);
};

} // namespace sim
