// SPDX-License-Identifier: GPL-2.0-or-later
// Cages, which hold pluggable modules: a presence bit in the CPLD, and a channel of the I2C multiplexer.
// Failure policy: a presence register that cannot be read holds no module.
#pragma once

#include "diagd/board/interface.hpp"
#include "diagd/board/session.hpp"

#include <cstdint>
#include <optional>

namespace diagd {

// Which channels are ended: those that were selected, or every one that was to be.
enum class ChannelEnd { when_selected, always };

// Connects a session's handle to one module channel.  Failure is only reported: whether it means absence or
// is passed over differs between the callers, and with it what is ended.
class ChannelSelect {
public:
    ChannelSelect(const BoardSession &board, int channel,
                  ChannelEnd end = ChannelEnd::when_selected) noexcept;
    ~ChannelSelect();
    ChannelSelect(const ChannelSelect &) = delete;
    ChannelSelect &operator=(const ChannelSelect &) = delete;

    explicit operator bool() const noexcept { return selected_; }

private:
    int handle_;
    bool selected_;
    bool ends_;
};

// Whether the port's presence bit is set.  Ports are numbered from 1; the number 0 and numbers beyond the
// register hold no module, and a kind that is none of the three is not even looked for.
[[nodiscard]] bool module_present(const BoardSession &board, PortKind kind, int port) noexcept;

// The PON ports have the first eight channels, the gigabit Ethernet ports those behind.
[[nodiscard]] int module_channel(PortKind kind, int port) noexcept;

// Reaches one module: true when it is present and its channel could be selected.
class ModuleSession {
public:
    ModuleSession(const BoardSession &board, PortKind kind, int port) noexcept;

    explicit operator bool() const noexcept { return channel_ && *channel_; }
    // For the transceiver functions.
    [[nodiscard]] std::uint32_t handle() const noexcept { return handle_; }

private:
    std::uint32_t handle_;
    std::optional<ChannelSelect> channel_;
};

} // namespace diagd
