// SPDX-License-Identifier: GPL-2.0-or-later
// Messages of the service bus, over a unix stream socket: u16 length of the whole message, u16 command, body;
// all numbers in network order.
#pragma once

#include <cstddef>
#include <cstdint>

namespace board {

inline constexpr char service_bus_socket[] = "bus.sock";

inline constexpr std::size_t service_bus_header_size = 4;
inline constexpr std::size_t service_bus_max_message = 0xffff;

enum class ServiceBusCommand : std::uint16_t {
    hello = 1,         // client's first: u16 client type, u16 instance
    system_reset = 45, // client: the system is about to reset; no body
    monitoring = 46,   // broker: u32, 0 resumes hardware monitoring, all else suspends it
};

} // namespace board
