// SPDX-License-Identifier: GPL-2.0-or-later
// Access to module memory: one transaction for each read or byte written, and what becomes of failures.
#include "diagd/transceiver/memory/access.hpp"
#include "tests/unit/transceiver/module_board_double.hpp"

#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

namespace {

constexpr std::uint32_t handle = 7;
using Lines = std::vector<std::string>;

class TransceiverAccess : public testing::Test {
protected:
    void SetUp() override
    {
        board_double.reset();
        board_double.plug_pon(1)[0x50];
        board_double.plug_pon(1)[0x51];
        board_double.handle.channel = 0;
        transceiver_debug_set(0);
    }

    Memory id_page() { return board_double.plug_pon(1)[0x50]; }
    Memory diagnostics_page() { return board_double.plug_pon(1)[0x51]; }

    std::string type_text()
    {
        std::array<char, 32> text{"untouched"};
        type_result = transceiver_type_get(handle, text.data(), text.size());
        return text.data();
    }
    int type_result = 1;
};

TEST_F(TransceiverAccess, a_word_has_the_lower_register_in_its_low_byte)
{
    id_page()[60] = 0x05;
    id_page()[61] = 0xD2;
    EXPECT_EQ(transceiver_read_word(handle, 0x50, 60), 0xD205);
    EXPECT_EQ(board_double.record, lines("I 50:60 2"));
}

TEST_F(TransceiverAccess, a_dword_is_one_read_of_four_bytes)
{
    for (std::uint8_t i = 0; i < 4; ++i)
        id_page()[100U + i] = static_cast<std::uint8_t>(i + 1);
    id_page()[103] = 0x84;
    EXPECT_EQ(transceiver_read_dword(handle, 0x50, 100), 0x84030201U);
    EXPECT_EQ(board_double.record, lines("I 50:100 4"));
}

TEST_F(TransceiverAccess, failed_reads_are_zero_and_not_retried)
{
    EXPECT_EQ(transceiver_read_byte(handle, 0x58, 1), 0);
    EXPECT_EQ(transceiver_read_word(handle, 0x58, 2), 0);
    EXPECT_EQ(transceiver_read_dword(handle, 0x58, 3), 0U);
    EXPECT_EQ(board_double.record, lines("I 58:1 1", "I 58:2 2", "I 58:3 4"));
}

TEST_F(TransceiverAccess, a_checked_read_tells_the_platforms_result)
{
    id_page()[92] = 0x20;
    std::uint8_t value = 0xFF;
    EXPECT_EQ(diagd::read_checked(handle, 0x50, 92, value), 1);
    EXPECT_EQ(value, 0x20);
    EXPECT_EQ(diagd::read_checked(handle, 0x58, 92, value), -5);
    EXPECT_EQ(value, 0);
    EXPECT_EQ(board_double.record, lines("I 50:92 1", "I 58:92 1"));
}

TEST_F(TransceiverAccess, a_block_is_read_byte_by_byte_and_a_failed_byte_costs_no_other)
{
    id_page()[10] = 0xAA;
    id_page()[11] = 0xBB;
    id_page()[12] = 0xCC;
    board_double.fail({"any", "addr=0x50", "reg=11"});
    std::array<std::uint8_t, 4> data{1, 2, 3, 4};
    EXPECT_EQ(transceiver_read_block(handle, 0x50, 10, data.data(), 3), 0);
    EXPECT_EQ(data, (std::array<std::uint8_t, 4>{0xAA, 0, 0xCC, 4}));
    EXPECT_EQ(board_double.record, byte_reads(0x50, 10, 12));
}

TEST_F(TransceiverAccess, a_block_without_length_reads_nothing)
{
    std::uint8_t untouched = 9;
    for (const std::int32_t length : {0, -1, INT32_MIN, INT32_MAX})
        EXPECT_EQ(transceiver_read_block(handle, 0x50, 10, &untouched, length), 0);
    EXPECT_EQ(untouched, 9);
    EXPECT_TRUE(board_double.record.empty());
}

TEST_F(TransceiverAccess, writing_a_byte_returns_what_the_platform_returns)
{
    EXPECT_EQ(transceiver_write_byte(handle, 0x51, 118, 0x40), 1);
    EXPECT_EQ(diagnostics_page()[118], 0x40);
    EXPECT_EQ(transceiver_write_byte(handle, 0x58, 118, 0x40), -5);
    EXPECT_EQ(board_double.record, lines("W 51:118=64", "W 58:118=64"));
}

TEST_F(TransceiverAccess, writing_data_of_one_byte_or_none_writes_nothing)
{
    const std::uint8_t byte = 1;
    EXPECT_EQ(transceiver_write_data(handle, 0x50, 10, &byte, 0), 0);
    EXPECT_EQ(transceiver_write_data(handle, 0x50, 10, &byte, 1), 0);
    EXPECT_TRUE(board_double.record.empty());
}

TEST_F(TransceiverAccess, writing_data_wraps_at_the_end_of_the_page)
{
    const std::array<std::uint8_t, 3> data{7, 8, 9};
    EXPECT_EQ(transceiver_write_data(handle, 0x50, 255, data.data(), 3), 1);
    EXPECT_EQ(board_double.record, lines("W 50:255=7", "W 50:0=8", "W 50:1=9"));
}

TEST_F(TransceiverAccess, writing_data_goes_on_after_a_failed_byte)
{
    transceiver_debug_set(1);
    board_double.fail({"any", "addr=0x50", "reg=21"});
    const std::array<std::uint8_t, 3> data{7, 8, 9};
    testing::internal::CaptureStdout();
    EXPECT_EQ(transceiver_write_data(handle, 0x50, 20, data.data(), 3), 1);
    EXPECT_EQ(testing::internal::GetCapturedStdout(),
              "i2c access slave addr 0x50 register 0x14 failed, ret -5\r\n"); // the first register, not 0x15
    EXPECT_EQ(board_double.record.size(), 3U);
    EXPECT_EQ(id_page()[22], 9);
}

TEST_F(TransceiverAccess, writing_data_returns_the_low_byte_of_the_last_result)
{
    board_double.fail({"any", "addr=0x50", "reg=21"});
    const std::array<std::uint8_t, 2> data{7, 8};
    EXPECT_EQ(transceiver_write_data(handle, 0x50, 20, data.data(), 2), 0xFB); // -5
}

TEST_F(TransceiverAccess, debug_reports_each_failed_access_on_standard_output)
{
    board_double.fail({"any", "addr=0x50", "reg=31"});
    board_double.fail({"any", "addr=0x50", "reg=33"});
    std::array<std::uint8_t, 4> data{};
    testing::internal::CaptureStdout();
    transceiver_read_block(handle, 0x50, 30, data.data(), 4); // switched off: silent
    transceiver_debug_set(1);
    transceiver_read_block(handle, 0x50, 30, data.data(), 4);
    transceiver_read_word(handle, 0x59, 60);
    transceiver_write_byte(handle, 0x59, 118, 1);
    EXPECT_EQ(testing::internal::GetCapturedStdout(),
              "i2c access slave addr 0x50 register 0x1f failed, ret -5\r\n"
              "i2c access slave addr 0x50 register 0x21 failed, ret -5\r\n"
              "i2c access slave addr 0x59 register 0x3c failed, ret -5\r\n"
              "i2c access slave addr 0x59 register 0x76 failed, ret -5\r\n");
}

TEST_F(TransceiverAccess, debug_is_one_byte)
{
    EXPECT_EQ(transceiver_debug_get(), 0);
    EXPECT_EQ(transceiver_debug_set(0xFF), 0);
    EXPECT_EQ(transceiver_debug_get(), 0xFF);
    EXPECT_EQ(transceiver_debug, 0xFF);
}

TEST_F(TransceiverAccess, page_select_writes_byte_127_and_ignores_failure)
{
    EXPECT_EQ(sff_8636_page_select(handle, 3), 0);
    board_double.fail({"any", "addr=0x50", "reg=127"});
    EXPECT_EQ(sff_8636_page_select(handle, 4), 0);
    EXPECT_EQ(board_double.record, lines("W 50:127=3", "W 50:127=4"));
}

TEST_F(TransceiverAccess, rssi_select_drives_bit_7_of_byte_118_only)
{
    EXPECT_EQ(transceiver_rssi_select_set(handle, 1), 0);
    EXPECT_EQ(diagnostics_page()[118], 0x80);
    diagnostics_page()[118] = 0xFF;
    EXPECT_EQ(transceiver_rssi_select_set(handle, 0), 0);
    EXPECT_EQ(diagnostics_page()[118], 0x7F);
    EXPECT_EQ(board_double.record, lines("I 51:118 1", "W 51:118=128", "I 51:118 1", "W 51:118=127"));
    board_double.handle.channel = -1;
    EXPECT_EQ(transceiver_rssi_select_set(handle, 1), 0);
}

TEST_F(TransceiverAccess, type_of_an_sfp_comes_from_bytes_3_to_10_and_36)
{
    id_page()[0] = 0x03;
    id_page()[6] = 0x02;
    EXPECT_EQ(type_text(), "1000BASE-LX");
    EXPECT_EQ(type_result, 0);
    EXPECT_EQ(board_double.record,
              byte_reads(0x50, 0, 0) + byte_reads(0x50, 3, 10) + byte_reads(0x50, 36, 36));
    id_page()[36] = 0x02;
    EXPECT_EQ(type_text(), "N/A (0)");
}

TEST_F(TransceiverAccess, type_of_a_qsfp_reads_byte_192_only_when_byte_131_is_exactly_0x80)
{
    id_page()[0] = 0x11;
    id_page()[131] = 0x80;
    id_page()[192] = 0x06;
    EXPECT_EQ(type_text(), "100G CWDM4)");
    EXPECT_EQ(board_double.record, lines("I 50:0 1", "I 50:131 1", "I 50:192 1"));
    board_double.record.clear();
    id_page()[131] = 0x81;
    EXPECT_EQ(type_text(), "N/A (129)");
    EXPECT_EQ(board_double.record, lines("I 50:0 1", "I 50:131 1"));
}

TEST_F(TransceiverAccess, type_of_an_unsupported_identifier_is_refused)
{
    id_page()[0] = 0x0E;
    EXPECT_EQ(type_text(), "untouched");
    EXPECT_EQ(type_result, -1);
    EXPECT_EQ(board_double.record, lines("I 50:0 1"));
}

TEST_F(TransceiverAccess, type_is_cut_to_the_buffer)
{
    id_page()[0] = 0x02; // soldered modules have QSFP memory here
    id_page()[131] = 0x02;
    std::array<char, 6> text{};
    EXPECT_EQ(transceiver_type_get(handle, text.data(), text.size()), 0);
    EXPECT_STREQ(text.data(), "40GBA");
}

} // namespace
