// SPDX-License-Identifier: GPL-2.0-or-later
// The whole simulated board: every part of it in one place, no I/O.
#pragma once

#include <functional>

#include "cages.hpp"
#include "cpld.hpp"
#include "faults.hpp"
#include "phys.hpp"
#include "sensors.hpp"
#include "transaction_log.hpp"

namespace sim {

struct SimulatedBoard {
    explicit SimulatedBoard(board::Board description_)
        : description(std::move(description_)), cages(description), cpld(description, cages),
          lm75(description.lm75.temperature_tenths), phys(description)
    {
    }
    SimulatedBoard(const SimulatedBoard &) = delete;
    SimulatedBoard &operator=(const SimulatedBoard &) = delete;

    // Bus access outside a module channel: the devices that sit on the bus itself.
    int read_device(int bus, std::uint8_t address, std::uint8_t reg, std::span<std::uint8_t> data);
    int write_device(int bus, std::uint8_t address, std::uint8_t reg, std::span<const std::uint8_t> data);
    // Module behind a channel, nullptr when nothing answers there.
    Module *module_on(int channel);

    const board::Board description;
    Cages cages;
    Cpld cpld;
    Lm75 lm75;
    Phys phys;
    Faults faults;
    TransactionLog log;
};

} // namespace sim
