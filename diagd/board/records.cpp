// SPDX-License-Identifier: GPL-2.0-or-later
// Reading the board records.  A record that cannot be read ends the list.
#include "diagd/board/records.hpp"

#include <initializer_list>

namespace diagd {

namespace {
constexpr std::size_t port_entry_size = 28;
// Both counted from an entry's in-use word: the slot is the word before it.
constexpr std::size_t port_slot_back = 4;
constexpr std::size_t port_present_ahead = 20;

struct KindTable {
    std::uint32_t capability;
    PortTable table;
};

std::optional<KindTable> kind_table(PortKind kind) noexcept
{
    switch (kind) {
    case PortKind::gigabit_ethernet:
        return KindTable{BOARD_CAPABILITY_SFP, PortTable::sfp};
    case PortKind::gpon:
        return KindTable{BOARD_CAPABILITY_PON, PortTable::pon_first};
    case PortKind::xgpon:
        return KindTable{BOARD_CAPABILITY_PON, PortTable::pon_second};
    case PortKind::none:
        break;
    }
    return std::nullopt;
}

// Ports of the first board in service that has ports of these kinds; port k is listed under the first kind
// for which usable(board's entry k of the kind) holds.
template <typename Usable>
std::vector<ListedPort> list_ports(std::initializer_list<PortKind> kinds, Usable usable)
{
    std::vector<ListedPort> ports;
    const std::optional<BoardRecord> board = first_board_in_service(kind_table(*kinds.begin())->capability);
    for (unsigned k = 0; board && k < BOARD_PORT_ENTRIES; ++k) {
        for (const PortKind kind : kinds) {
            const BoardPort entry = board->port(kind_table(kind)->table, k);
            if (!usable(entry))
                continue;
            ports.push_back({kind, entry.slot, static_cast<int>(k)});
            break;
        }
    }
    return ports;
}
} // namespace

std::optional<BoardRecord> BoardRecord::read(int index) noexcept
{
    BoardRecord record;
    if (board_mmap_read(index, record.bytes_.data()) < 0)
        return std::nullopt;
    return record;
}

std::uint32_t BoardRecord::word(std::size_t offset) const noexcept
{
    std::uint32_t value = 0;
    for (std::size_t i = 4; i-- > 0;)
        value = value << 8 | bytes_[offset + i];
    return value;
}

BoardPort BoardRecord::port(PortTable table, unsigned k) const noexcept
{
    const std::size_t in_use = static_cast<std::size_t>(table) + k * port_entry_size;
    return {
        .slot = word(in_use - port_slot_back),
        .in_use = word(in_use),
        .present = bytes_[in_use + port_present_ahead] != 0,
    };
}

bool BoardRecord::has_capability(std::uint32_t bit) const noexcept
{
    return (word(board_offset_capability) & bit) != 0;
}

std::optional<BoardRecord> first_board_in_service(std::uint32_t capability_bit) noexcept
{
    std::optional<BoardRecord> found;
    for_each_board_record([&](const BoardRecord &record) {
        if (record.has_capability(capability_bit) && record.in_service())
            found = record;
        return !found;
    });
    return found;
}

std::vector<ListedPort> list_pon_ports()
{
    return list_ports({PortKind::gpon, PortKind::xgpon},
                      [](const BoardPort &entry) { return entry.in_use != 0; });
}

std::vector<ListedPort> list_gigabit_ports()
{
    return list_ports({PortKind::gigabit_ethernet},
                      [](const BoardPort &entry) { return entry.in_use != 0 && entry.present; });
}

bool is_slot_support_port(PortKind kind, SlotPort position) noexcept
{
    const std::optional<KindTable> in = kind_table(kind);
    if (!in || position.slot < 0 || position.port < 0 || position.port >= BOARD_PORT_ENTRIES)
        return false;
    const std::optional<BoardRecord> board = first_board_in_service(in->capability);
    if (!board)
        return false;
    const BoardPort entry = board->port(in->table, static_cast<unsigned>(position.port));
    return entry.in_use != 0 && entry.slot == static_cast<std::uint32_t>(position.slot);
}

} // namespace diagd
