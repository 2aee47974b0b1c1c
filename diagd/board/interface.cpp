// SPDX-License-Identifier: GPL-2.0-or-later
// Interfaces of the board (see interface.hpp).
#include "diagd/board/interface.hpp"

#include "diagd/board/records.hpp"
#include "diagd/core/frr.hpp"
#include "diagd/core/text.hpp"

#include <array>
#include <charconv>
#include <cstdio>
#include <initializer_list>
#include <limits>

namespace diagd {

namespace {

struct KindTraits {
    const char *word; // as operators type it
    const char *name; // as displays have it
    std::uint32_t capability;
    PortTable table;
};

// Of a kind that there is; NULL of any other number.
const KindTraits *traits(PortKind kind) noexcept
{
    static constexpr std::array<KindTraits, 3> kinds{{
        {"gigabitEthernet", "GE", BOARD_CAPABILITY_SFP, PortTable::sfp},
        {"gpon", "GPON", BOARD_CAPABILITY_PON, PortTable::pon_first},
        {"xgpon", "XGPON", BOARD_CAPABILITY_PON, PortTable::pon_second},
    }};
    const auto index = static_cast<std::size_t>(kind) - 1;
    return index < kinds.size() ? &kinds[index] : nullptr;
}

int number(std::string_view digits) noexcept
{
    int value = 0;
    const auto result = std::from_chars(digits.data(), digits.data() + digits.size(), value);
    return result.ec == std::errc::result_out_of_range ? std::numeric_limits<int>::max() : value;
}

std::string name_of(const char *word, const Interface &interface)
{
    std::array<char, 32> name{};
    std::snprintf(name.data(), name.size(), "%s %d/%d", word, interface.slot, interface.port);
    return name.data();
}

// Appends the ports of the first board in service that has ports of these kinds; port k is listed under the
// first kind for which usable(board's entry k of the kind) holds.
template <typename Usable>
void list_ports(std::vector<Interface> &interfaces, std::initializer_list<PortKind> kinds, Usable usable)
{
    const std::optional<BoardRecord> board = first_board_in_service(traits(*kinds.begin())->capability);
    for (unsigned k = 0; board && k < BOARD_PORT_ENTRIES; ++k) {
        for (const PortKind kind : kinds) {
            const BoardPort entry = board->port(traits(kind)->table, k);
            if (!usable(entry))
                continue;
            interfaces.push_back({kind, static_cast<int>(entry.slot), static_cast<int>(k)});
            break;
        }
    }
}

} // namespace

PortKind port_kind(std::string_view word) noexcept
{
    for (const PortKind kind : {PortKind::gigabit_ethernet, PortKind::gpon, PortKind::xgpon}) {
        if (word == traits(kind)->word)
            return kind;
    }
    return PortKind::none;
}

Interface parse_interface(PortKind kind, std::string_view position) noexcept
{
    const std::size_t slash = position.find('/');
    if (slash == std::string_view::npos)
        return {kind, number(position), 0};
    return {kind, number(position.substr(0, slash)), number(position.substr(slash + 1))};
}

std::string interface_name(const Interface &interface)
{
    const KindTraits *const kind = traits(interface.kind);
    return name_of(kind != nullptr ? kind->name : "", interface);
}

std::string interface_name(const Interface &interface, const char *pon_word)
{
    const bool pon = interface.kind == PortKind::gpon || interface.kind == PortKind::xgpon;
    return pon ? name_of(pon_word, interface) : interface_name(interface);
}

std::vector<Interface> list_interfaces()
{
    std::vector<Interface> interfaces;
    list_ports(interfaces, {PortKind::gpon, PortKind::xgpon},
               [](const BoardPort &entry) { return entry.in_use != 0; });
    list_ports(interfaces, {PortKind::gigabit_ethernet},
               [](const BoardPort &entry) { return entry.in_use != 0 && entry.present; });
    return interfaces;
}

bool is_slot_support_port(const Interface &interface) noexcept
{
    const KindTraits *const kind = traits(interface.kind);
    if (kind == nullptr || interface.slot < 0 || interface.port < 0 || interface.port >= BOARD_PORT_ENTRIES)
        return false;
    const std::optional<BoardRecord> board = first_board_in_service(kind->capability);
    if (!board)
        return false;
    const BoardPort entry = board->port(kind->table, static_cast<unsigned>(interface.port));
    return entry.in_use != 0 && entry.slot == static_cast<std::uint32_t>(interface.slot);
}

std::optional<Interface> find_interface(struct vty *vty, std::string_view kind_word,
                                        std::string_view position)
{
    const Interface interface = parse_interface(port_kind(kind_word), position);
    if (is_slot_support_port(interface))
        return interface;
    vty_out(vty, "%s not exist%s", interface_name(interface).c_str(), line_end);
    return std::nullopt;
}

} // namespace diagd
