// SPDX-License-Identifier: GPL-2.0-or-later
// What the module's shared RSSI/TXDIS pin carries.
//
// Failure policy: a CPLD that cannot be opened and a module that cannot be reached leave everything as it is;
// reads and writes that fail are passed over.
#pragma once

#include "diagd/board/interface.hpp"

#include <cstdint>
#include <optional>
#include <string>

namespace diagd {

// The control byte of the module selected on a CPLD handle; it reads as 0 when it cannot be read.
[[nodiscard]] std::uint8_t read_extended_control(std::uint32_t handle) noexcept;
// Sets or clears one of its bits and leaves the others as they read.
void write_extended_control_bit(std::uint32_t handle, std::uint8_t bit, bool on) noexcept;

enum class SharedPin { txdis, rssi };

// Of the module in a port's cage; each has a session of its own with the board.
void select_shared_pin(PortKind kind, int port, SharedPin pin);
// The control byte, 0 when it cannot be read; empty when the module cannot be reached.
[[nodiscard]] std::optional<std::uint8_t> read_pin_control(PortKind kind, int port);

[[nodiscard]] std::string pin_control_text(std::uint8_t control);

} // namespace diagd
