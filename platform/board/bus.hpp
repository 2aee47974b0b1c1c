// SPDX-License-Identifier: GPL-2.0-or-later
// The bus contract under libutil_cpld, libutil_i2c and libutil_phy: what a transport has to offer, whether
// the buses are simulated or device nodes.
//
// Handles are file descriptors, so that they can be closed with close(2), and carry no state in this
// process: the three libraries do not know of each other's handles, yet take them.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

#include "platform/description/board_description.hpp"

namespace board {

// A CPLD handle reaches modules through the channel selected on it and nothing else on its bus; a raw
// handle reaches every device that sits on the bus itself.  Both reach the CPLD's registers.
enum class HandleKind : std::uint8_t { raw = 0, cpld = 1 };

// All operations return 0 (open: the handle) or a negative errno value, and end within about a second
// whatever the hardware does.
class Bus {
public:
    static constexpr std::size_t max_transfer = 4096;

    Bus() = default;
    Bus(const Bus &) = delete;
    Bus &operator=(const Bus &) = delete;
    virtual ~Bus() = default;

    virtual int open(int bus, HandleKind kind) const = 0;
    // One transaction: write the register number, then read (repeated start) or write data.size() bytes.
    virtual int read(int handle, std::uint8_t address, std::uint8_t reg,
                     std::span<std::uint8_t> data) const = 0;
    virtual int write(int handle, std::uint8_t address, std::uint8_t reg,
                      std::span<const std::uint8_t> data) const = 0;
    // CPLD registers.
    virtual int cpld_read(int handle, std::uint8_t reg, std::uint8_t &value) const = 0;
    virtual int cpld_write(int handle, std::uint8_t reg, std::uint8_t value) const = 0;
    // Connects the handle to a channel (0-based) of the multiplexer / disconnects it.
    virtual int select(int handle, int channel) const = 0;
    virtual int deselect(int handle) const = 0;
    // MDIO, clause 22; bit 30 of `reg` marks a clause 45 number (device in bits 16-20, register in 0-15).
    virtual int phy_read(const char *interface, std::uint32_t phy, std::uint32_t reg,
                         std::uint32_t &value) const = 0;
    virtual int phy_write(const char *interface, std::uint32_t phy, std::uint32_t reg,
                          std::uint32_t value) const = 0;
};

// The transport that this box's description names; nullptr when there is no usable description.
const Bus *this_bus();

} // namespace board
