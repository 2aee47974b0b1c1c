// SPDX-License-Identifier: GPL-2.0-or-later
// Ports listed from hand-made board records.
#include "diagd/board/interface.hpp"
#include "diagd/board/records.hpp"

#include <gtest/gtest.h>

#include <array>
#include <climits>
#include <cstring>
#include <map>
#include <vector>

namespace {

using Bytes = std::array<std::uint8_t, BOARD_REC_SIZE>;
std::map<int, Bytes> records;
std::vector<int> read_indexes;
int fail_from;

void put_word(Bytes &bytes, std::size_t offset, std::uint32_t value)
{
    for (std::size_t i = 0; i < 4; ++i)
        bytes[offset + i] = static_cast<std::uint8_t>(value >> (8 * i));
}

Bytes &board(int index, std::uint32_t capability, std::uint32_t service)
{
    Bytes &bytes = records[index];
    put_word(bytes, 104, capability);
    put_word(bytes, 108, service);
    return bytes;
}

} // namespace

extern "C" int board_mmap_read(int index, void *record)
{
    read_indexes.push_back(index);
    if (index >= fail_from)
        return -1;
    std::memcpy(record, records[index].data(), BOARD_REC_SIZE);
    return 0;
}

class BoardRecords : public testing::Test {
protected:
    void SetUp() override
    {
        records.clear();
        read_indexes.clear();
        fail_from = BOARD_REGIONS;
    }
};

TEST_F(BoardRecords, a_pon_port_is_listed_from_either_table_and_the_first_one_gives_the_slot)
{
    Bytes &bytes = board(2, 0x08, 6);
    put_word(bytes, 240 + 28 * 1, 1); // in both tables
    put_word(bytes, 236 + 28 * 1, 4);
    put_word(bytes, 1136 + 28 * 1, 1);
    put_word(bytes, 1132 + 28 * 1, 5);
    put_word(bytes, 1136 + 28 * 31, 9); // in the second only
    put_word(bytes, 1132 + 28 * 31, 2);

    const auto ports = diagd::list_interfaces();
    ASSERT_EQ(ports.size(), 2u);
    EXPECT_EQ(ports[0].port, 1);
    EXPECT_EQ(ports[0].slot, 4);
    EXPECT_EQ(ports[0].kind, diagd::PortKind::gpon);
    EXPECT_EQ(ports[1].port, 31);
    EXPECT_EQ(ports[1].slot, 2);
    EXPECT_EQ(ports[1].kind, diagd::PortKind::xgpon);
}

TEST_F(BoardRecords, only_the_first_board_in_service_with_the_capability_counts)
{
    put_word(board(0, 0x08, 5), 240 + 28, 1); // not in service
    put_word(board(1, 0x10, 6), 240 + 28, 1); // no PON
    put_word(board(4, 0x08 | 0x10, 6), 240 + 28 * 3, 1);
    put_word(board(5, 0x08, 6), 240 + 28 * 7, 1);

    const auto ports = diagd::list_interfaces();
    ASSERT_EQ(ports.size(), 1u);
    EXPECT_EQ(ports[0].port, 3);
    EXPECT_EQ(read_indexes, (std::vector<int>{0, 1, 2, 3, 4, 0, 1})) << "PON, then gigabit Ethernet";
}

TEST_F(BoardRecords, entry_0_is_port_0)
{
    put_word(board(0, 0x08, 6), 240, 1);
    const auto ports = diagd::list_interfaces();
    ASSERT_EQ(ports.size(), 1u);
    EXPECT_EQ(ports[0].port, 0);
}

TEST_F(BoardRecords, a_gigabit_port_must_be_in_use_and_present)
{
    Bytes &bytes = board(5, 0x10, 6);
    put_word(bytes, 2032 + 28 * 1, 1); // in use, not present
    bytes[2032 + 28 * 2 + 20] = 1;     // present, not in use
    put_word(bytes, 2032 + 28 * 3, 1);
    bytes[2032 + 28 * 3 + 20] = 1;

    const auto ports = diagd::list_interfaces();
    ASSERT_EQ(ports.size(), 1u);
    EXPECT_EQ(ports[0].port, 3);
}

TEST_F(BoardRecords, a_record_that_cannot_be_read_ends_the_search)
{
    put_word(board(4, 0x08, 6), 240 + 28, 1);
    fail_from = 3;
    EXPECT_TRUE(diagd::list_interfaces().empty());
    EXPECT_EQ(read_indexes, (std::vector<int>{0, 1, 2, 3, 0, 1, 2, 3}));
}

TEST_F(BoardRecords, no_more_than_13_records_are_read)
{
    fail_from = 100;
    EXPECT_TRUE(diagd::list_interfaces().empty());
    EXPECT_EQ(read_indexes.size(), 2 * 13);
}

using diagd::is_slot_support_port;
using diagd::PortKind;

TEST_F(BoardRecords, a_port_exists_when_the_table_of_its_kind_has_it_in_use_in_that_slot)
{
    Bytes &pon = board(2, 0x08, 6);
    put_word(pon, 240 + 28 * 3, 1);
    put_word(pon, 1136 + 28 * 4, 1);
    put_word(pon, 1132 + 28 * 4, 2);
    put_word(board(5, 0x10, 6), 2032 + 28 * 31, 7);

    EXPECT_TRUE(is_slot_support_port({PortKind::gpon, 0, 3}));
    EXPECT_FALSE(is_slot_support_port({PortKind::xgpon, 0, 3}));
    EXPECT_TRUE(is_slot_support_port({PortKind::xgpon, 2, 4}));
    EXPECT_FALSE(is_slot_support_port({PortKind::xgpon, 0, 4}));
    EXPECT_FALSE(is_slot_support_port({PortKind::gpon, 2, 4}));
    EXPECT_TRUE(is_slot_support_port({PortKind::gigabit_ethernet, 0, 31}));
    EXPECT_FALSE(is_slot_support_port({PortKind::gigabit_ethernet, 0, 3}));
}

TEST_F(BoardRecords, a_position_beyond_the_tables_is_no_port)
{
    Bytes &pon = board(2, 0x08, 6);
    for (unsigned k = 0; k < BOARD_PORT_ENTRIES; ++k)
        put_word(pon, 240 + 28 * k, 1);
    for (const int port : {-1, 32, 1 << 20, INT_MAX, INT_MIN})
        EXPECT_FALSE(is_slot_support_port({PortKind::gpon, 0, port})) << port;
    put_word(pon, 236 + 28, 0xFFFFFFFF);
    EXPECT_FALSE(is_slot_support_port({PortKind::gpon, -1, 1}));
    for (const auto kind : {PortKind::none, static_cast<PortKind>(4)})
        EXPECT_FALSE(is_slot_support_port({kind, 0, 1}));
    EXPECT_FALSE(is_slot_support_port({PortKind::gigabit_ethernet, 0, 1})) << "a board without such ports";
}
