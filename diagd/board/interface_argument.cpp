// SPDX-License-Identifier: GPL-2.0-or-later
// Interfaces named in commands (see interface_argument.hpp).  A board without records has no ports.
#include "diagd/board/interface_argument.hpp"

#include "diagd/board/records.hpp"
#include "diagd/core/text.hpp"

#include <array>
#include <cstdio>

namespace diagd {

namespace {

const char *name_word(PortKind kind) noexcept
{
    switch (kind) {
    case PortKind::gigabit_ethernet:
        return "GE";
    case PortKind::gpon:
        return "GPON";
    case PortKind::xgpon:
        return "XGPON";
    case PortKind::none:
        break;
    }
    return "";
}

} // namespace

PortKind port_kind(std::string_view word) noexcept
{
    if (word == "gigabitEthernet")
        return PortKind::gigabit_ethernet;
    if (word == "gpon")
        return PortKind::gpon;
    return word == "xgpon" ? PortKind::xgpon : PortKind::none;
}

std::string port_name(const InterfaceArgument &interface)
{
    std::array<char, 32> name{};
    std::snprintf(name.data(), name.size(), "%s %d/%d", name_word(interface.kind), interface.position.slot,
                  interface.position.port);
    return name.data();
}

std::optional<InterfaceArgument> find_interface(struct vty *vty, std::string_view kind_word,
                                                std::string_view position)
{
    const InterfaceArgument interface {
        port_kind(kind_word), parse_slot_port(position)
    };
    if (is_slot_support_port(interface.kind, interface.position))
        return interface;
    vty_out(vty, "%s not exist%s", port_name(interface).c_str(), line_end);
    return std::nullopt;
}

} // namespace diagd
