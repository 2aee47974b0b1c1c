// SPDX-License-Identifier: GPL-2.0-or-later
// Reading the board records.  A record that cannot be read ends the list.
#include "board_records.hpp"

namespace diagd {

namespace {
constexpr std::size_t port_entry_size = 28;
// Both counted from an entry's in-use word: the slot is the word before it.
constexpr std::size_t port_slot_back = 4;
constexpr std::size_t port_present_ahead = 20;
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
    std::vector<ListedPort> ports;
    const std::optional<BoardRecord> board = first_board_in_service(BOARD_CAPABILITY_PON);
    if (!board)
        return ports;
    for (unsigned k = 0; k < BOARD_PORT_ENTRIES; ++k) {
        for (const PortTable table : {PortTable::pon_first, PortTable::pon_second}) {
            const BoardPort entry = board->port(table, k);
            if (entry.in_use == 0)
                continue;
            ports.push_back({entry.slot, static_cast<int>(k)});
            break;
        }
    }
    return ports;
}

std::vector<ListedPort> list_gigabit_ports()
{
    std::vector<ListedPort> ports;
    const std::optional<BoardRecord> board = first_board_in_service(BOARD_CAPABILITY_SFP);
    if (!board)
        return ports;
    for (unsigned k = 0; k < BOARD_PORT_ENTRIES; ++k) {
        const BoardPort entry = board->port(PortTable::sfp, k);
        if (entry.in_use != 0 && entry.present)
            ports.push_back({entry.slot, static_cast<int>(k)});
    }
    return ports;
}

} // namespace diagd
