// SPDX-License-Identifier: GPL-2.0-or-later
// Cages of the board (see cage.hpp).
#include "diagd/board/cage.hpp"

#include "diagd/board/registers.hpp"

namespace diagd {

namespace {

constexpr int register_bits = 8;
constexpr int pon_channels = 8;

std::optional<CpldRegister> presence_register(PortKind kind) noexcept
{
    switch (kind) {
    case PortKind::gigabit_ethernet:
        return CpldRegister::sfp_presence;
    case PortKind::gpon:
    case PortKind::xgpon:
        return CpldRegister::pon_presence;
    case PortKind::none:
        break;
    }
    return std::nullopt;
}

} // namespace

ChannelSelect::ChannelSelect(const BoardSession &board, int channel, ChannelEnd end) noexcept
    : handle_(board.handle()), selected_(misc_cpld_channel_select(handle_, channel) >= 0),
      ends_(selected_ || end == ChannelEnd::always)
{
}

ChannelSelect::~ChannelSelect()
{
    if (ends_)
        misc_cpld_channel_select_end(handle_);
}

bool module_present(const BoardSession &board, PortKind kind, int port) noexcept
{
    const std::optional<CpldRegister> presence = presence_register(kind);
    if (!presence)
        return false;
    const std::uint8_t present = read_register(board.handle(), *presence);
    return port >= 1 && port <= register_bits && (present >> (port - 1) & 1) != 0;
}

int module_channel(PortKind kind, int port) noexcept
{
    return kind == PortKind::gigabit_ethernet ? port - 1 + pon_channels : port - 1;
}

ModuleSession::ModuleSession(const BoardSession &board, PortKind kind, int port) noexcept
    : handle_(static_cast<std::uint32_t>(board.handle()))
{
    if (module_present(board, kind, port))
        channel_.emplace(board, module_channel(kind, port));
}

} // namespace diagd
