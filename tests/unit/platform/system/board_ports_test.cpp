// SPDX-License-Identifier: GPL-2.0-or-later
// Board records, interface table and PON mode as the board description gives them.
#include "tests/unit/temporary_folder.hpp"
#include "tq_api.h"
#include "tq_board.h"

#include <cstring>
#include <gtest/gtest.h>

namespace {

// Named before the first call reads it.
const bool board_named = setenv("OLT_BOARD", OLT8_JSON, 1) == 0;

std::uint32_t word(const std::uint8_t *record, std::size_t offset)
{
    std::uint32_t value;
    std::memcpy(&value, record + offset, sizeof value);
    return value;
}

class BoardRecords : public testing::Test {
protected:
    void SetUp() override
    {
        ASSERT_TRUE(board_named);
        ASSERT_EQ(board_mmap_init(13, 2928), 0);
    }
    const std::uint8_t *read(int index)
    {
        EXPECT_EQ(board_mmap_read(index, record), 0);
        return record;
    }
    std::uint8_t record[2928];
};

tq_port_info_t port_record(std::uint8_t gpon, std::uint8_t xgpon)
{
    tq_port_info_t info{};
    info.b[10] = gpon;
    info.b[11] = xgpon;
    return info;
}

} // namespace

TEST_F(BoardRecords, the_pon_record_has_its_ports_in_both_tables)
{
    const std::uint8_t *pon = read(2);
    EXPECT_EQ(word(pon, 8), 0u);
    EXPECT_EQ(word(pon, 104), 1u << 3);
    EXPECT_EQ(word(pon, 108), 6u);
    for (unsigned k = 0; k < 32; ++k) {
        const bool in_use = k >= 1 && k <= 8;
        EXPECT_EQ(word(pon, 236 + 28 * k), 0u) << "slot of port " << k;
        EXPECT_EQ(word(pon, 240 + 28 * k) != 0, in_use) << k;
        EXPECT_EQ(word(pon, 1136 + 28 * k) != 0, in_use) << k;
        EXPECT_EQ(word(pon, 2032 + 28 * k), 0u) << k;
    }
}

TEST_F(BoardRecords, the_sfp_record_has_ports_that_are_in_use_and_present)
{
    const std::uint8_t *sfp = read(5);
    EXPECT_EQ(word(sfp, 104), 1u << 4);
    for (unsigned k = 0; k < 32; ++k) {
        const bool there = k >= 1 && k <= 4;
        EXPECT_EQ(word(sfp, 2032 + 28 * k) != 0, there) << k;
        EXPECT_EQ(sfp[2032 + 28 * k + 20] != 0, there) << k;
        EXPECT_EQ(word(sfp, 240 + 28 * k), 0u) << k;
    }
}

TEST_F(BoardRecords, a_record_that_is_not_described_is_no_board_for_register_commands)
{
    const std::uint8_t *none = read(0);
    EXPECT_NE(word(none, 8), 0u);
    EXPECT_EQ(word(none, 104), 0u);
    EXPECT_NE(word(none, 108), 6u);
}

TEST_F(BoardRecords, other_indexes_and_sizes_are_refused)
{
    EXPECT_LT(board_mmap_read(-1, record), 0);
    EXPECT_LT(board_mmap_read(13, record), 0);
    EXPECT_LT(board_mmap_read(0, nullptr), 0);
    EXPECT_LT(board_mmap_init(12, 2928), 0);
    EXPECT_LT(board_mmap_init(13, 2927), 0);
}

TEST(PonMode, is_the_boards)
{
    EXPECT_EQ(pon_mode_get(), 1);
}

TEST(InterfaceTable, runs_from_one_to_the_larger_number_of_pon_ports)
{
    tq_intf_table_t table;
    for (const auto &[gpon, xgpon, last] : {std::tuple{8, 8, 8u}, {4, 0, 4u}, {0, 16, 16u}, {31, 1, 31u}}) {
        const auto info = port_record(static_cast<std::uint8_t>(gpon), static_cast<std::uint8_t>(xgpon));
        std::memset(&table, 0xA5, sizeof table);
        EXPECT_EQ(port_init(&info, &table), 0);
        EXPECT_EQ(table.first_port, 1u);
        EXPECT_EQ(table.last_port, last);
    }
}

TEST(InterfaceTable, is_empty_without_pon_ports)
{
    tq_intf_table_t table;
    std::memset(&table, 0xA5, sizeof table);
    const auto info = port_record(0, 0);
    EXPECT_EQ(port_init(&info, &table), 0);
    EXPECT_EQ(table.first_port, 0u);
    EXPECT_EQ(table.last_port, 0u);
}

TEST(InterfaceTable, more_ports_than_a_board_can_have_are_refused)
{
    tq_intf_table_t table;
    const auto info = port_record(32, 4);
    EXPECT_LT(port_init(&info, &table), 0);
    EXPECT_EQ(table.last_port, 0u);
    EXPECT_LT(port_init(nullptr, &table), 0);
    EXPECT_LT(port_init(&info, nullptr), 0);
}
