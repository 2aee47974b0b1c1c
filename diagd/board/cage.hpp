// SPDX-License-Identifier: GPL-2.0-or-later
// Where pluggable modules sit: a presence bit in the CPLD, and a channel of the I2C multiplexer.
#pragma once

#include "diagd/board/session.hpp"
#include "diagd/board/slot_port.hpp"

#include <cstdint>
#include <optional>

namespace diagd {

// Whether the port's presence bit is set; false, too, when the register cannot be read.  Ports are numbered
// from 1; the number 0 and numbers beyond the register hold no module, and a kind that is none of the three
// is not even looked for.
[[nodiscard]] bool module_present(const BoardBracket &board, PortKind kind, int port) noexcept;

// The PON ports have the first eight channels, the gigabit Ethernet ports those behind.
[[nodiscard]] int module_channel(PortKind kind, int port) noexcept;

// Reaches one module: true when it is present and its channel could be selected.
class ModuleSelect {
public:
    ModuleSelect(const BoardBracket &board, PortKind kind, int port) noexcept;

    explicit operator bool() const noexcept { return channel_ && *channel_; }
    // For the transceiver functions.
    [[nodiscard]] std::uint32_t handle() const noexcept { return handle_; }

private:
    std::uint32_t handle_;
    std::optional<ChannelSelect> channel_;
};

} // namespace diagd
