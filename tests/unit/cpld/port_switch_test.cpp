// SPDX-License-Identifier: GPL-2.0-or-later
// Bits of a port register, and which ports of hand-made board records they are switched for.
#include "diagd/cpld/port_switch.hpp"

#include "util_cpld.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <cstdio>
#include <cstring>
#include <map>
#include <string>
#include <vector>

using diagd::CpldRegister;
using diagd::PortGroup;
using diagd::RecordTest;
using diagd::with_port_bit;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

using Bytes = std::array<std::uint8_t, BOARD_REC_SIZE>;
std::map<int, Bytes> records;
std::vector<int> read_indexes;
int fail_from;
std::vector<std::string> accesses;
std::uint8_t cell;
int read_result;

constexpr int handle = 9;
constexpr std::size_t first_pon = 240;
constexpr std::size_t second_pon = 1136;
constexpr std::size_t sfp = 2032;

void put_word(Bytes &bytes, std::size_t offset, std::uint32_t value)
{
    for (std::size_t i = 0; i < 4; ++i)
        bytes[offset + i] = static_cast<std::uint8_t>(value >> (8 * i));
}

Bytes &record(int index, std::uint32_t capability, std::uint32_t state = 0, std::uint32_t service = 6)
{
    Bytes &bytes = records[index];
    put_word(bytes, 8, state);
    put_word(bytes, 104, capability);
    put_word(bytes, 108, service);
    return bytes;
}

void add_pon(Bytes &bytes, unsigned k, std::size_t table = first_pon)
{
    put_word(bytes, table + 28 * k, 1);
}

void add_sfp(Bytes &bytes, unsigned k)
{
    put_word(bytes, sfp + 28 * k, 1);
    bytes[sfp + 28 * k + 20] = 1;
}

std::string access(const char *what, std::uint8_t reg, unsigned value)
{
    char text[32];
    std::snprintf(text, sizeof text, "%s%u %02x", what, reg, value);
    return text;
}

} // namespace

extern "C" {
int board_mmap_read(int index, void *target)
{
    read_indexes.push_back(index);
    if (index >= fail_from)
        return -1;
    std::memcpy(target, records[index].data(), BOARD_REC_SIZE);
    return 0;
}
int misc_cpld_i2c_read_byte(int used, std::uint8_t reg, std::uint8_t *value)
{
    EXPECT_EQ(used, handle);
    if (read_result == 0)
        *value = cell;
    accesses.push_back(access("R", reg, cell));
    return read_result;
}
int misc_cpld_i2c_set_byte(int used, std::uint8_t reg, std::uint8_t value)
{
    EXPECT_EQ(used, handle);
    cell = value;
    accesses.push_back(access("W", reg, value));
    return -1; // nobody asks
}
}

class PortSwitch : public testing::Test {
protected:
    void SetUp() override
    {
        records.clear();
        read_indexes.clear();
        accesses.clear();
        fail_from = BOARD_REGIONS;
        cell = 0;
        read_result = 0;
    }

    static void pon_led(bool on)
    {
        diagd::switch_every_port(handle, CpldRegister::pon_led, PortGroup::pon,
                                 RecordTest::in_service_and_ready, on);
    }
    static void sfp_power(RecordTest test = RecordTest::in_service_and_ready)
    {
        diagd::switch_every_port(handle, CpldRegister::sfp_power, PortGroup::sfp, test, true);
    }
};

TEST(PortBit, of_port_n_is_bit_n_minus_1)
{
    EXPECT_EQ(with_port_bit(0xff, 3, false), 0xfb);
    EXPECT_EQ(with_port_bit(0x00, 8, true), 0x80);
    EXPECT_EQ(with_port_bit(0x00, 1, true), 0x01);
    EXPECT_EQ(with_port_bit(0xa5, 1, true), 0xa5) << "set already";
    EXPECT_EQ(with_port_bit(0xa5, 2, false), 0xa5) << "clear already";
}

TEST(PortBit, outside_the_register_changes_nothing)
{
    for (const unsigned port : {0u, 9u, 16u, 31u}) {
        EXPECT_EQ(with_port_bit(0x5a, port, true), 0x5a) << port;
        EXPECT_EQ(with_port_bit(0x5a, port, false), 0x5a) << port;
    }
}

TEST_F(PortSwitch, one_port_is_one_read_and_one_write)
{
    cell = 0xff;
    diagd::switch_port(handle, CpldRegister::pon_led, 3, false);
    EXPECT_THAT(accesses, ElementsAre("R10 ff", "W10 fb"));
}

TEST_F(PortSwitch, a_register_that_cannot_be_read_counts_as_0)
{
    cell = 0xff;
    read_result = -1;
    diagd::switch_port(handle, CpldRegister::pon_transmitter, 2, true);
    EXPECT_EQ(accesses.back(), "W8 02");
}

TEST_F(PortSwitch, every_port_is_one_read_and_one_write_each)
{
    Bytes &board = record(2, 0x08);
    for (const unsigned k : {1u, 2u, 3u, 4u})
        add_pon(board, k);
    pon_led(true);
    EXPECT_THAT(accesses,
                ElementsAre("R10 00", "W10 01", "R10 01", "W10 03", "R10 03", "W10 07", "R10 07", "W10 0f"));
    accesses.clear();
    pon_led(false);
    EXPECT_THAT(accesses,
                ElementsAre("R10 0f", "W10 0e", "R10 0e", "W10 0c", "R10 0c", "W10 08", "R10 08", "W10 00"));
}

TEST_F(PortSwitch, a_port_of_either_pon_table_counts_once)
{
    Bytes &board = record(0, 0x08);
    add_pon(board, 1);
    add_pon(board, 1, second_pon);
    add_pon(board, 5, second_pon);
    pon_led(true);
    EXPECT_THAT(accesses, ElementsAre("R10 00", "W10 01", "R10 01", "W10 11"));
}

TEST_F(PortSwitch, entries_outside_the_register_are_read_and_written_unchanged)
{
    Bytes &board = record(0, 0x08);
    for (const unsigned k : {0u, 9u, 31u})
        add_pon(board, k);
    cell = 0x42;
    pon_led(true);
    EXPECT_THAT(accesses, ElementsAre("R10 42", "W10 42", "R10 42", "W10 42", "R10 42", "W10 42"));
}

TEST_F(PortSwitch, every_record_counts_not_only_the_first)
{
    add_pon(record(1, 0x08), 1);
    add_pon(record(12, 0x08 | 0x10), 2);
    pon_led(true);
    EXPECT_THAT(accesses, ElementsAre("R10 00", "W10 01", "R10 01", "W10 03"));
    EXPECT_EQ(read_indexes.size(), 13u);
}

TEST_F(PortSwitch, records_of_other_boards_are_skipped)
{
    add_pon(record(0, 0x10), 1);       // no PON
    add_pon(record(1, 0x08, 0, 5), 2); // not in service
    add_pon(record(2, 0x08, 1), 3);    // takes no register commands
    add_sfp(record(3, 0x08), 4);       // no SFP
    pon_led(true);
    sfp_power();
    EXPECT_THAT(accesses, IsEmpty());
}

TEST_F(PortSwitch, a_record_that_cannot_be_read_ends_the_walk)
{
    add_pon(record(1, 0x08), 1);
    add_pon(record(4, 0x08), 2);
    fail_from = 2;
    pon_led(true);
    EXPECT_THAT(accesses, ElementsAre("R10 00", "W10 01"));
    EXPECT_THAT(read_indexes, ElementsAre(0, 1, 2));
}

TEST_F(PortSwitch, an_sfp_port_must_be_in_use_and_present)
{
    Bytes &board = record(5, 0x10);
    put_word(board, sfp + 28 * 1, 1); // in use only
    board[sfp + 28 * 2 + 20] = 1;     // present only
    add_sfp(board, 3);
    sfp_power();
    EXPECT_THAT(accesses, ElementsAre("R12 00", "W12 04"));
}

TEST_F(PortSwitch, at_the_start_a_board_need_not_take_register_commands)
{
    add_sfp(record(5, 0x10, 1), 1);
    add_sfp(record(6, 0x10, 1, 5), 2); // but must be in service
    sfp_power(RecordTest::in_service);
    EXPECT_THAT(accesses, ElementsAre("R12 00", "W12 01"));
}
