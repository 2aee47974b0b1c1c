// SPDX-License-Identifier: GPL-2.0-or-later
// Transport to the board below the kernel: I2C adapters as /dev/i2c-N (i2c-dev), PHYs by the MII ioctls of
// their network interfaces.
#pragma once

#include "platform/board/bus.hpp"

namespace board {

class LinuxBus final : public Bus {
public:
    LinuxBus(const Cpld &cpld, const Multiplexer &multiplexer);

    // Either kind is the adapter itself: what tells them apart is what the multiplexer lets through.
    int open(int bus, HandleKind kind) const override;
    int read(int handle, std::uint8_t address, std::uint8_t reg, std::span<std::uint8_t> data) const override;
    int write(int handle, std::uint8_t address, std::uint8_t reg,
              std::span<const std::uint8_t> data) const override;
    int cpld_read(int handle, std::uint8_t reg, std::uint8_t &value) const override;
    int cpld_write(int handle, std::uint8_t reg, std::uint8_t value) const override;
    int select(int handle, int channel) const override;
    int deselect(int handle) const override;
    int phy_read(const char *interface, std::uint32_t phy, std::uint32_t reg,
                 std::uint32_t &value) const override;
    int phy_write(const char *interface, std::uint32_t phy, std::uint32_t reg,
                  std::uint32_t value) const override;

private:
    int switch_to(int handle, unsigned channels) const;

    std::uint8_t cpld_address_;
    Multiplexer multiplexer_;
};

} // namespace board
