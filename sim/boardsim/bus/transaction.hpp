// SPDX-License-Identifier: GPL-2.0-or-later
// One transaction on the board's buses, as faults are matched against it and the log shows it.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <string_view>

#include "platform/board/sim_protocol.hpp"

namespace sim {

inline constexpr int no_channel = -1;

// Names of the operations, in the order of board::SimOp.
inline constexpr std::array<std::string_view, board::sim_op_count> op_names = {
    "open",   "i2c_read", "i2c_write", "cpld_read", "cpld_write",
    "select", "deselect", "phy_read",  "phy_write"};

struct Transaction {
    board::SimOp op{};
    std::uint8_t address = 0;
    std::uint8_t reg = 0;
    std::uint8_t data_size = 0;        // of `data`
    std::int16_t bus = 0;              // of the handle
    std::int16_t channel = no_channel; // selected on the handle, or asked for by a select
    std::uint32_t handle = 0;          // number of the connection
    std::uint32_t length = 0;          // bytes to transfer
    std::uint32_t phy = 0;
    std::uint32_t phy_reg = 0;
    std::array<char, 16> thread{};
    std::array<std::uint8_t, 8> data{}; // first bytes written or read, or the register's value
    std::int32_t result = 0;

    [[nodiscard]] std::string_view thread_name() const
    {
        const std::string_view all(thread.data(), thread.size());
        return all.substr(0, all.find('\0'));
    }
    // "OP ARGS -> RESULT"
    [[nodiscard]] std::string text() const;
};

} // namespace sim
