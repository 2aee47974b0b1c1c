// SPDX-License-Identifier: GPL-2.0-or-later
// Reading the board records.  A record that cannot be read ends the list.
#include "board_records.hpp"

namespace diagd {

namespace {
constexpr std::size_t port_entry_size = 28;
// Both counted from an entry's in-use word: the slot is the word before it.
constexpr std::size_t port_slot_back = 4;
constexpr std::size_t port_present_ahead = 20;

// Ports of the first board in service with the capability for which entry(board, k) has an entry.
template <typename Entry>
std::vector<ListedPort> list_ports(std::uint32_t capability_bit, Entry entry)
{
    std::vector<ListedPort> ports;
    const std::optional<BoardRecord> board = first_board_in_service(capability_bit);
    for (unsigned k = 0; board && k < BOARD_PORT_ENTRIES; ++k) {
        if (const std::optional<BoardPort> found = entry(*board, k))
            ports.push_back({found->slot, static_cast<int>(k)});
    }
    return ports;
}

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
    return list_ports(BOARD_CAPABILITY_PON,
                      [](const BoardRecord &board, unsigned k) -> std::optional<BoardPort> {
                          for (const PortTable table : {PortTable::pon_first, PortTable::pon_second}) {
                              const BoardPort entry = board.port(table, k);
                              if (entry.in_use != 0)
                                  return entry;
                          }
                          return std::nullopt;
                      });
}

std::vector<ListedPort> list_gigabit_ports()
{
    return list_ports(BOARD_CAPABILITY_SFP,
                      [](const BoardRecord &board, unsigned k) -> std::optional<BoardPort> {
                          const BoardPort entry = board.port(PortTable::sfp, k);
                          return entry.in_use != 0 && entry.present ? std::optional{entry} : std::nullopt;
                      });
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
