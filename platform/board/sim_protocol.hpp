// SPDX-License-Identifier: GPL-2.0-or-later
// Transactions between the board libraries and a simulated board: one packet each way on a SOCK_SEQPACKET
// socket.  A packet is the structure below, followed by `length` data bytes (write requests and read
// replies).  Both ends run on one machine: host byte order.
#pragma once

#include <array>
#include <cstdint>

namespace board {

enum class SimOp : std::uint16_t {
    open,       // number: bus; address: HandleKind.  First packet of a connection
    i2c_read,   // address, reg, value: bytes wanted
    i2c_write,  // address, reg; data
    cpld_read,  // reg
    cpld_write, // reg, value
    select,     // number: channel
    deselect,
    phy_read,  // name: interface; number: PHY; value: register
    phy_write, // the same, data value in `extra`
};
inline constexpr std::size_t sim_op_count = 9;

struct SimRequest {
    std::uint32_t sequence; // repeated in the reply: tells a late reply from the awaited one
    SimOp op;
    std::uint8_t address;
    std::uint8_t reg;
    std::int32_t number;
    std::uint32_t value;
    std::uint32_t extra;
    std::uint32_t length;
    std::array<char, 16> name;
    std::array<char, 16> thread; // caller, for the transaction log
};
static_assert(sizeof(SimRequest) == 56);

struct SimReply {
    std::uint32_t sequence;
    std::int32_t result; // 0 or a negative errno value
    std::uint32_t value;
    std::uint32_t length;
};
static_assert(sizeof(SimReply) == 16);

inline constexpr char sim_bus_socket[] = "board.sock";
inline constexpr char sim_control_socket[] = "ctl.sock";

} // namespace board
