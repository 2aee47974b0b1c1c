// SPDX-License-Identifier: GPL-2.0-or-later
// Reading the board records.  A record that cannot be read ends the list.
#include "diagd/board/records.hpp"

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

} // namespace diagd
