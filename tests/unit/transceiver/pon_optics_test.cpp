// SPDX-License-Identifier: GPL-2.0-or-later
// Optical readings of a PON port: the order of the session, what is read, and what is written where.
#include "diagd/transceiver/memory/pon_optics.hpp"

#include "diagd/core/state.hpp"
#include "tests/unit/transceiver/module_board_double.hpp"
#include "util_cpld.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>
#include <vector>

namespace {

using Lines = std::vector<std::string>;
constexpr float untouched = -12345.0F;

class PonOptics : public testing::Test {
protected:
    void SetUp() override
    {
        board_double.reset();
        diagm.cpld_i2c_bus = 3;
    }
    void TearDown() override { board_double.expect_given_back(); }

    int get(int type, int port)
    {
        board_double.record.clear();
        return pon_intf_optical_transceiver_get(static_cast<std::uint8_t>(type),
                                                static_cast<std::uint8_t>(port), &temperature, &voltage,
                                                &bias, &tx, &rx);
    }
    void expect_untouched() const
    {
        for (const float value : {temperature, voltage, bias, tx, rx})
            EXPECT_EQ(value, untouched);
    }

    float temperature = untouched, voltage = untouched, bias = untouched, tx = untouched, rx = untouched;
    const Lines opening{"P", "RAISE pon_intf_optical_transceiver_get", "OPEN 3", "LOWER"};
    const Lines closing{"CHE", "CLOSE", "V"};
};

TEST_F(PonOptics, reads_an_internally_calibrated_path_in_ten_byte_reads)
{
    make_path(board_double.plug_pon(1), 0x50, 0x51);
    EXPECT_EQ(get(2, 1), 0);
    EXPECT_EQ(board_double.record, opening + lines("R 11", "CH 0", "I 50:0 1", "I 50:60 2", "I 50:92 1") +
                                       byte_reads(0x51, 96, 105) + lines("I 58:60 2") + closing);
    EXPECT_EQ(temperature, 25.0F);
    EXPECT_FLOAT_EQ(voltage, 3.3F);
    EXPECT_FLOAT_EQ(bias, 10.0F);
    EXPECT_EQ(tx, 0.0F);
    EXPECT_NEAR(rx, -3.0103F, 1e-4F);
}

// The switch is that of another display's readings; these are made every three seconds.
TEST_F(PonOptics, say_nothing_while_the_cplds_debugging_is_on)
{
    make_path(board_double.plug_pon(1), 0x50, 0x51);
    cpld_debug = 1;
    testing::internal::CaptureStdout();
    EXPECT_EQ(get(2, 1), 0);
    cpld_debug = 0;
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
}

TEST_F(PonOptics, reads_an_externally_calibrated_path_in_one_block_of_76_bytes)
{
    Module module = board_double.plug_pon(1);
    make_path(module, 0x50, 0x51, {.monitoring = 0x10});
    Memory page = module[0x51];
    // Slopes and offsets of bias, TX power, temperature, voltage and RX power.
    int reg = 76;
    for (const int word : {0x0200, 0x0A00, 0x0100, 0x0000, 0x0180, 0x4000, 0x0010, 0x0100, 0x0200, 0x0000}) {
        set_word(page, reg, word);
        reg += 2;
    }
    EXPECT_EQ(get(2, 1), 0);
    EXPECT_EQ(board_double.record, opening + lines("R 11", "CH 0", "I 50:0 1", "I 50:60 2", "I 50:92 1") +
                                       byte_reads(0x51, 76, 151) + lines("I 58:60 2") + closing);
    EXPECT_FLOAT_EQ(temperature, (6400 * 1.5F + 64) / 256);
    EXPECT_FLOAT_EQ(voltage, (33000 * 0.0625F + 1) / 10000);
    EXPECT_FLOAT_EQ(bias, (5000.0F * 2 + 10) * 2 / 1000);
    EXPECT_EQ(tx, 0.0F);
    EXPECT_EQ(rx, 0.0F);
}

TEST_F(PonOptics, internal_calibration_wins_over_external_and_without_either_nothing_is_written)
{
    Module module = board_double.plug_pon(1);
    make_path(module, 0x50, 0x51, {.monitoring = 0x30});
    EXPECT_EQ(get(2, 1), 0);
    EXPECT_EQ(temperature, 25.0F);
    module[0x50][92] = 0xCF;
    temperature = voltage = bias = tx = rx = untouched;
    EXPECT_EQ(get(2, 1), 0);
    expect_untouched();
    EXPECT_EQ(board_double.record,
              opening + lines("R 11", "CH 0", "I 50:0 1", "I 50:60 2", "I 50:92 1", "I 58:60 2") + closing);
}

TEST_F(PonOptics, each_type_reads_its_own_path_of_a_combo_module)
{
    Module module = board_double.plug_pon(2);
    make_path(module, 0x50, 0x51, {.wavelength_nm = 1490});
    make_path(module, 0x58, 0x59, {.wavelength_nm = 1577});
    EXPECT_EQ(get(2, 2), 0);
    EXPECT_EQ(board_double.record, opening + lines("R 11", "CH 1", "I 50:0 1", "I 50:60 2", "I 50:92 1") +
                                       byte_reads(0x51, 96, 105) + lines("I 58:60 2") + closing);
    EXPECT_FLOAT_EQ(bias, 10.0F);
    EXPECT_EQ(tx, 0.0F);
    EXPECT_EQ(get(3, 2), 0);
    EXPECT_EQ(board_double.record,
              opening + lines("R 11", "CH 1", "I 50:0 1", "I 50:60 2", "I 58:60 2", "I 58:92 1") +
                  byte_reads(0x59, 96, 105) + closing);
    EXPECT_FLOAT_EQ(bias, 20.0F);
    EXPECT_NEAR(tx, 3.0103F, 1e-4F);
    EXPECT_NEAR(rx, -3.0103F, 1e-4F);
}

TEST_F(PonOptics, of_two_paths_of_the_same_class_the_second_stands)
{
    Module module = board_double.plug_pon(1);
    make_path(module, 0x50, 0x51, {.temperature = 0x1900});
    make_path(module, 0x58, 0x59, {.wavelength_nm = 1535, .temperature = 0x2000});
    EXPECT_EQ(get(2, 1), 0);
    EXPECT_EQ(temperature, 32.0F);
    EXPECT_FLOAT_EQ(bias, 20.0F);
}

TEST_F(PonOptics, a_path_of_another_class_writes_nothing)
{
    make_path(board_double.plug_pon(1), 0x50, 0x51, {.wavelength_nm = 1490});
    EXPECT_EQ(get(3, 1), 0);
    expect_untouched();
    EXPECT_EQ(board_double.record,
              opening + lines("R 11", "CH 0", "I 50:0 1", "I 50:60 2", "I 58:60 2") + closing);
}

TEST_F(PonOptics, an_unknown_wavelength_matches_no_type_not_even_zero)
{
    make_path(board_double.plug_pon(1), 0x50, 0x51, {.wavelength_nm = 1550});
    EXPECT_EQ(get(0, 1), 0);
    expect_untouched();
}

TEST_F(PonOptics, gigabit_optics_are_looked_for_in_the_pon_cage)
{
    make_path(board_double.plug_pon(4), 0x50, 0x51, {.wavelength_nm = 1310});
    EXPECT_EQ(get(1, 4), 0);
    EXPECT_EQ(temperature, 25.0F);
    EXPECT_EQ(board_double.record[4], "R 11");
    EXPECT_EQ(board_double.record[5], "CH 3");
}

TEST_F(PonOptics, a_qsfp_gives_its_first_lane_whatever_the_type_and_no_rx_power)
{
    Memory memory = board_double.plug_pon(1)[0x50];
    memory[0] = 0x0D;
    set_word(memory, 22, 0xFB00);
    set_word(memory, 26, 33000);
    set_word(memory, 42, 5000);
    set_word(memory, 50, 5000);
    set_word(memory, 34, 5000);
    for (const int type : {2, 3}) {
        temperature = voltage = bias = tx = rx = untouched;
        EXPECT_EQ(get(type, 1), 0);
        EXPECT_EQ(board_double.record, opening + lines("R 11", "CH 0", "I 50:0 1") +
                                           byte_reads(0x50, 22, 23) + byte_reads(0x50, 26, 27) +
                                           byte_reads(0x50, 42, 43) + byte_reads(0x50, 50, 51) + closing);
        EXPECT_EQ(temperature, 5.0F);
        EXPECT_FLOAT_EQ(voltage, 3.3F);
        EXPECT_FLOAT_EQ(bias, 10.0F);
        EXPECT_NEAR(tx, -3.0103F, 1e-4F);
        EXPECT_EQ(rx, untouched);
    }
}

TEST_F(PonOptics, an_unsupported_module_is_reached_but_writes_nothing)
{
    board_double.plug_pon(1)[0x50][0] = 0x0E;
    EXPECT_EQ(get(2, 1), 0);
    expect_untouched();
    EXPECT_EQ(board_double.record, opening + lines("R 11", "CH 0", "I 50:0 1") + closing);
}

TEST_F(PonOptics, an_empty_cage_behind_a_set_presence_bit_writes_nothing)
{
    board_double.plug_pon(1);
    EXPECT_EQ(get(2, 1), 0);
    expect_untouched();
}

TEST_F(PonOptics, no_light_is_minus_infinity_and_negative_light_no_number)
{
    Module module = board_double.plug_pon(1);
    make_path(module, 0x50, 0x51, {.tx_power = 0, .rx_power = 0});
    EXPECT_EQ(get(2, 1), 0);
    EXPECT_EQ(tx, -std::numeric_limits<float>::infinity());
    EXPECT_EQ(rx, -std::numeric_limits<float>::infinity());

    make_path(module, 0x50, 0x51, {.monitoring = 0x10});
    set_word(module[0x51], 80, 0xFF00); // TX slope -1
    EXPECT_EQ(get(2, 1), 0);
    EXPECT_TRUE(std::isnan(tx));
}

TEST_F(PonOptics, a_cpld_that_does_not_open_gives_the_semaphore_back_without_a_close)
{
    board_double.fail({"open"});
    EXPECT_EQ(get(2, 1), -1);
    expect_untouched();
    EXPECT_EQ(board_double.record, opening + lines("V"));
}

TEST_F(PonOptics, an_absent_module_closes_the_session)
{
    EXPECT_EQ(get(2, 1), -1);
    EXPECT_EQ(board_double.record, opening + lines("R 11", "CLOSE", "V"));
    expect_untouched();
}

TEST_F(PonOptics, an_unreadable_presence_register_means_absent)
{
    board_double.plug_pon(1);
    board_double.fail({"cpld_read"});
    EXPECT_EQ(get(2, 1), -1);
}

TEST_F(PonOptics, a_channel_that_cannot_be_selected_is_not_ended)
{
    board_double.plug_pon(1);
    board_double.fail({"select"});
    EXPECT_EQ(get(2, 1), -1);
    EXPECT_EQ(board_double.record, opening + lines("R 11", "CH 0", "CLOSE", "V"));
    expect_untouched();
}

TEST_F(PonOptics, port_numbers_outside_of_the_register_hold_no_module)
{
    board_double.pretend_pons();
    for (const int port : {0, 9, 31, 32, 33, 255}) {
        EXPECT_EQ(get(2, port), -1) << "port " << port;
        EXPECT_EQ(board_double.record, opening + lines("R 11", "CLOSE", "V"));
    }
}

TEST_F(PonOptics, port_8_is_bit_7_and_channel_7)
{
    make_path(board_double.plug_pon(8), 0x50, 0x51);
    EXPECT_EQ(board_double.board->cpld.read(0x0B), 0x80);
    EXPECT_EQ(get(2, 8), 0);
    EXPECT_EQ(board_double.record[5], "CH 7");
    EXPECT_EQ(temperature, 25.0F);
}

} // namespace
