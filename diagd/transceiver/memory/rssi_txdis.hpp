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

enum class SharedPin { txdis, rssi };

// Each has a session of its own with the board.
void select_shared_pin(PortKind kind, int port, SharedPin pin);
// The control byte, 0 when it cannot be read; empty when the module cannot be reached.
[[nodiscard]] std::optional<std::uint8_t> read_pin_control(PortKind kind, int port);

[[nodiscard]] std::string pin_control_text(std::uint8_t control);

} // namespace diagd
