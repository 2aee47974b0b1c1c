// SPDX-License-Identifier: GPL-2.0-or-later
// Transport to a simulated board: each handle is a connection to its transaction socket.
#pragma once

#include <string>

#include "platform/board/bus.hpp"
#include "platform/board/sim_protocol.hpp"

namespace board {

class SimBus final : public Bus {
public:
    // `folder` holds the board's sockets.
    explicit SimBus(std::string folder);

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
    int connect(int bus, HandleKind kind) const;
    int reconnect(int handle) const;
    int transact(int handle, SimRequest &request, std::span<const std::uint8_t> out, SimReply &reply,
                 std::span<std::uint8_t> in) const;
    int phy(SimOp op, const char *interface, std::uint32_t phy, std::uint32_t reg,
            std::uint32_t &value) const;

    std::string socket_path_;
};

} // namespace board
