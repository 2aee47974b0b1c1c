// SPDX-License-Identifier: GPL-2.0-or-later
// The board records: up to 13 records of 2928 bytes which say what ports a board has.  They are read by byte
// offset (32-bit little-endian words); which of the words must match differs between the users, so the tests
// are the callers' and the offsets are here.
#pragma once

#include "tq_board.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>

namespace diagd {

// Word that must be zero on a board which takes register commands.
inline constexpr std::size_t board_offset_state = 8;
inline constexpr std::size_t board_offset_capability = 104; // BOARD_CAPABILITY_ bits
// Word that is `board_in_service` on a board in service.
inline constexpr std::size_t board_offset_service = 108;
inline constexpr std::uint32_t board_in_service = 6;

// Port tables of a record, by the offset of entry 0's in-use word.
enum class PortTable : std::size_t { pon_first = 240, pon_second = 1136, sfp = 2032 };

struct BoardPort {
    std::uint32_t slot;
    std::uint32_t in_use; // non-zero: the port exists
    bool present;         // meaningful in the SFP table only
};

class BoardRecord {
public:
    // Record `index` (0 to 12); empty when there is none.
    [[nodiscard]] static std::optional<BoardRecord> read(int index) noexcept;

    [[nodiscard]] std::uint32_t word(std::size_t offset) const noexcept;
    // Entry k (0 to 31) stands for port k.
    [[nodiscard]] BoardPort port(PortTable table, unsigned k) const noexcept;
    [[nodiscard]] bool has_capability(std::uint32_t bit) const noexcept;
    [[nodiscard]] bool in_service() const noexcept { return word(board_offset_service) == board_in_service; }

private:
    std::array<std::uint8_t, BOARD_REC_SIZE> bytes_{};
};

// Calls `visit(record)` for each record from 0 on, until there is none or `visit` returns false.
template <typename Visit>
void for_each_board_record(Visit visit)
{
    for (int index = 0; index < BOARD_REGIONS; ++index) {
        const std::optional<BoardRecord> record = BoardRecord::read(index);
        if (!record || !visit(*record))
            return;
    }
}

// First record in service that has the capability; empty when there is none.
[[nodiscard]] std::optional<BoardRecord> first_board_in_service(std::uint32_t capability_bit) noexcept;

} // namespace diagd
