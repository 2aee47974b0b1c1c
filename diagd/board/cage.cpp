// SPDX-License-Identifier: GPL-2.0-or-later
// Module sockets (see cage.hpp).  A presence register that cannot be read holds no module.
#include "diagd/board/cage.hpp"

#include "util_cpld.h"

namespace diagd {

namespace {
constexpr std::uint8_t pon_presence_register = 0x0B;
constexpr std::uint8_t gigabit_presence_register = 0x0C;
constexpr int register_bits = 8;
constexpr int pon_channels = 8;

std::optional<std::uint8_t> presence_register(PortKind kind) noexcept
{
    switch (kind) {
    case PortKind::gigabit_ethernet:
        return gigabit_presence_register;
    case PortKind::gpon:
    case PortKind::xgpon:
        return pon_presence_register;
    case PortKind::none:
        break;
    }
    return std::nullopt;
}
} // namespace

bool module_present(const BoardBracket &board, PortKind kind, int port) noexcept
{
    const std::optional<std::uint8_t> presence = presence_register(kind);
    if (!presence)
        return false;
    std::uint8_t present = 0;
    misc_cpld_i2c_read_byte(board.handle(), *presence, &present);
    return port >= 1 && port <= register_bits && (present >> (port - 1) & 1) != 0;
}

int module_channel(PortKind kind, int port) noexcept
{
    return kind == PortKind::gigabit_ethernet ? port - 1 + pon_channels : port - 1;
}

ModuleSelect::ModuleSelect(const BoardBracket &board, PortKind kind, int port) noexcept
    : handle_(static_cast<std::uint32_t>(board.handle()))
{
    if (module_present(board, kind, port))
        channel_.emplace(board, module_channel(kind, port));
}

} // namespace diagd
