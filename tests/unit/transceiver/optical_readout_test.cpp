// SPDX-License-Identifier: GPL-2.0-or-later
// The readout of one module: which bytes it reads in which order, what it makes of them, and in which half of
// the record the values land.
#include "diagd/transceiver/memory/optical_readout.hpp"
#include "tests/unit/transceiver/module_board_double.hpp"

#include "util_cpld.h"

#include <gtest/gtest.h>

#include <cmath>

using namespace diagd;

namespace {

constexpr std::uint32_t handle = 7;
using Lines = std::vector<std::string>;

const Lines opening_a0 = lines("I 50:0 1", "I 50:60 2", "I 50:92 1");
const Lines opening_b0 = lines("I 58:0 1", "I 58:60 2", "I 58:92 1");

Lines lower_memory(int address)
{
    Lines all;
    for (const int first : {22, 26, 42, 50, 34})
        all = std::move(all) + byte_reads(address, first, first + 1);
    return all;
}

void expect_values(const OpticalValues &values, float temperature, float voltage, float bias, float tx,
                   float rx)
{
    EXPECT_FLOAT_EQ(values.temperature_c, temperature);
    EXPECT_FLOAT_EQ(values.voltage_v, voltage);
    EXPECT_FLOAT_EQ(values.bias_ma, bias);
    EXPECT_NEAR(values.tx_power_dbm, tx, 1e-4);
    EXPECT_NEAR(values.rx_power_dbm, rx, 1e-4);
}

class OpticalReadoutTest : public testing::Test {
protected:
    void SetUp() override
    {
        board_double.reset();
        board_double.handle.channel = 0;
        cpld_debug = 0;
    }
    void TearDown() override { cpld_debug = 0; }

    Module module() { return board_double.plug_pon(1); }

    OpticalReadout read(PathAddress path = first_path)
    {
        OpticalReadout readout{};
        read_optical_path(handle, path, readout);
        return readout;
    }

    std::string debug_text(PathAddress path = first_path)
    {
        cpld_debug = 1;
        testing::internal::CaptureStdout();
        read(path);
        return testing::internal::GetCapturedStdout();
    }
};

TEST_F(OpticalReadoutTest, an_internally_calibrated_path_is_read_byte_by_byte)
{
    make_path(module(), 0x50, 0x51);
    expect_values(read().plain, 25.0F, 3.3F, 10.0F, 0.0F, -3.0103F);
    EXPECT_EQ(board_double.record, opening_a0 + byte_reads(0x51, 96, 105));
}

TEST_F(OpticalReadoutTest, the_internal_bit_wins_over_the_external_one)
{
    make_path(module(), 0x50, 0x51, {.monitoring = 0x30});
    read();
    EXPECT_EQ(board_double.record, opening_a0 + byte_reads(0x51, 96, 105));
}

TEST_F(OpticalReadoutTest, an_externally_calibrated_path_is_read_with_its_constants)
{
    make_path(module(), 0x50, 0x51, {.monitoring = 0x10});
    Memory page = module()[0x51];
    // slope and offset of bias, TX power, temperature, voltage, RX power
    int at = 76;
    for (const int word : {0x0200, 0x0A00, 0x0100, 0x0000, 0x0180, 0x4000, 0x0010, 0x0100, 0x0200, 0x0000}) {
        set_word(page, at, word);
        at += 2;
    }
    // 6400 * 1.5 + 64, 33000 / 16 + 1, 5000 * 2 + 10, 10000, 5000 * 2
    expect_values(read().plain, 37.75F, 0.20635F, 20.02F, 0.0F, 0.0F);
    EXPECT_EQ(board_double.record, opening_a0 + byte_reads(0x51, 76, 105));
}

TEST_F(OpticalReadoutTest, an_externally_calibrated_second_path_counts_double)
{
    make_path(module(), 0x58, 0x59, {.monitoring = 0x10});
    for (int at = 76; at < 96; at += 4)
        set_word(module()[0x59], at, 0x0100); // slopes of 1
    expect_values(read(second_path).plain, 25.0F, 3.3F, 20.0F, 3.0103F, -3.0103F);
    EXPECT_EQ(board_double.record, opening_b0 + byte_reads(0x59, 76, 105));
}

TEST_F(OpticalReadoutTest, a_module_without_calibration_is_read_from_lower_memory_whatever_it_is)
{
    for (const int identifier : {0x03, 0x0D, 0x11, 0x0E, 0xFF}) {
        board_double.record.clear();
        Memory memory = module()[0x50];
        memory[0] = static_cast<std::uint8_t>(identifier);
        set_word(memory, 22, -0x1980);
        set_word(memory, 26, 33000);
        set_word(memory, 34, 1000);
        set_word(memory, 42, 5000);
        set_word(memory, 50, 10000);
        expect_values(read().plain, 25.5F, 3.3F, 10.0F, 0.0F, -10.0F);
        EXPECT_EQ(board_double.record, opening_a0 + lower_memory(0x50));
    }
}

TEST_F(OpticalReadoutTest, lower_memory_has_the_units_of_the_paths_wavelength)
{
    Memory memory = module()[0x50];
    set_word(memory, 60, 1577);
    set_word(memory, 34, 10000);
    set_word(memory, 42, 5000);
    set_word(memory, 50, 10000);
    expect_values(read().xg, 0.0F, 0.0F, 20.0F, 3.0103F, 0.0F);

    set_word(module()[0x58], 60, 1490);
    set_word(module()[0x58], 34, 10000);
    set_word(module()[0x58], 42, 5000);
    set_word(module()[0x58], 50, 10000);
    expect_values(read(second_path).plain, 0.0F, 0.0F, 20.0F, 3.0103F, 0.0F);
}

TEST_F(OpticalReadoutTest, xgpon_wavelengths_fill_the_xg_half_and_all_others_the_plain_one)
{
    for (const int wavelength : {850, 1310, 1311, 1490, 1535, 1550, 0, 1577, 1791}) {
        make_path(module(), 0x50, 0x51, {.wavelength_nm = wavelength});
        const OpticalReadout readout = read();
        const bool is_xg = wavelength == 1577 || wavelength == 1791;
        const float bias = is_xg ? 20.0F : 10.0F;
        expect_values(is_xg ? readout.xg : readout.plain, 25.0F, 3.3F, bias, is_xg ? 3.0103F : 0.0F,
                      -3.0103F);
        EXPECT_EQ(is_xg ? readout.plain : readout.xg, OpticalValues{}) << wavelength;
    }
}

TEST_F(OpticalReadoutTest, a_path_leaves_the_other_half_as_it_was)
{
    make_path(module(), 0x50, 0x51);
    make_path(module(), 0x58, 0x59, {.wavelength_nm = 1577});
    OpticalReadout readout{};
    read_optical_path(handle, first_path, readout);
    read_optical_path(handle, second_path, readout);
    expect_values(readout.plain, 25.0F, 3.3F, 10.0F, 0.0F, -3.0103F);
    expect_values(readout.xg, 25.0F, 3.3F, 20.0F, 3.0103F, -3.0103F);
}

TEST_F(OpticalReadoutTest, temperatures_below_zero_lose_their_sign)
{
    make_path(module(), 0x50, 0x51, {.temperature = -0x0500});
    EXPECT_FLOAT_EQ(read().plain.temperature_c, 5.0F);
}

TEST_F(OpticalReadoutTest, a_dead_module_gives_zeroes_and_minus_infinity)
{
    const OpticalReadout readout = read();
    EXPECT_EQ(readout.plain.temperature_c, 0.0F);
    EXPECT_EQ(readout.plain.voltage_v, 0.0F);
    EXPECT_EQ(readout.plain.bias_ma, 0.0F);
    EXPECT_TRUE(std::isinf(readout.plain.tx_power_dbm) && readout.plain.tx_power_dbm < 0);
    EXPECT_TRUE(std::isinf(readout.plain.rx_power_dbm) && readout.plain.rx_power_dbm < 0);
    EXPECT_EQ(board_double.record, opening_a0 + lower_memory(0x50)) << "read as without calibration";
}

TEST_F(OpticalReadoutTest, calibration_below_zero_gives_no_number)
{
    make_path(module(), 0x50, 0x51, {.monitoring = 0x10});
    set_word(module()[0x51], 80, 0xFF00); // TX power slope -1
    set_word(module()[0x51], 92, 0xFF00); // RX power slope -1
    const OpticalReadout readout = read();
    EXPECT_TRUE(std::isnan(readout.plain.tx_power_dbm));
    EXPECT_TRUE(std::isnan(readout.plain.rx_power_dbm));
}

// --- debugging

TEST_F(OpticalReadoutTest, without_debugging_nothing_is_said)
{
    make_path(module(), 0x50, 0x51);
    testing::internal::CaptureStdout();
    read();
    read(second_path); // does not answer
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
}

TEST_F(OpticalReadoutTest, debugging_says_what_an_internally_calibrated_path_holds)
{
    make_path(module(), 0x58, 0x59);
    EXPECT_EQ(
        debug_text(second_path),
        "cpld i2c read 0x58 register 0x5c value 0x20\r\n"
        "interAdjust cpld i2c read 0x59 register 0x60 value 0x19 0x0 0x80 0xe8 0x13 0x88 0x27 0x10 0x13 "
        "0x88\r\n");
}

TEST_F(OpticalReadoutTest, debugging_says_what_an_externally_calibrated_path_holds)
{
    make_path(module(), 0x50, 0x51, {.monitoring = 0x10});
    for (int reg = 76; reg < 96; ++reg)
        module()[0x51][static_cast<std::size_t>(reg)] = static_cast<std::uint8_t>(reg);
    EXPECT_EQ(debug_text(),
              "cpld i2c read 0x50 register 0x5c value 0x10\r\n"
              "outerAdjust cpld i2c read 0x51 register 0x4c value 0x4c 0x4d 0x4e 0x4f 0x50 0x51 "
              "0x52 0x53 0x54 0x55 0x56 0x57 0x58 0x59 0x5a 0x5b 0x5c 0x5d 0x5e 0x5f 0x19 0x0 "
              "0x80 0xe8 0x13 0x88 0x27 0x10 0x13 0x88\r\n");
}

TEST_F(OpticalReadoutTest, debugging_says_what_lower_memory_holds_in_the_order_of_reading)
{
    Memory memory = module()[0x50];
    for (std::size_t reg = 22; reg < 52; ++reg)
        memory[reg] = static_cast<std::uint8_t>(reg);
    EXPECT_EQ(debug_text(), "cpld i2c read 0x50 register 0x5c value 0x0\r\n"
                            "cpld i2c read 0x50 register 0x16 value 0x16 0x17 0x1a 0x1b 0x2a 0x2b 0x32 0x33 "
                            "0x22 0x23\r\n");
}

TEST_F(OpticalReadoutTest, debugging_says_that_the_monitoring_type_cannot_be_read)
{
    make_path(module(), 0x50, 0x51);
    board_double.fail({"any", "addr=0x50", "reg=92"});
    const std::string text = debug_text();
    EXPECT_TRUE(text.starts_with("cpld i2c 7 from 92  read 1 bytes failed, ret -5\r\n")) << text;
    EXPECT_EQ(text.find("register 0x5c"), std::string::npos) << text;
}

// --- the cage

Lines in_session(const Lines &work)
{
    return lines("P", "RAISE test", "OPEN 0", "LOWER") + work + lines("CLOSE", "V");
}

std::optional<OpticalReadout> read_port(PortKind kind, int port,
                                        SelectFailure on_failure = SelectFailure::no_module)
{
    board_double.handle.channel = -1;
    board_double.record.clear();
    const BoardSession board{"test", SessionPolicy::lower_then_release};
    return read_optics(board, kind, port, on_failure);
}

TEST_F(OpticalReadoutTest, a_cage_is_reached_on_its_channel_and_its_second_path_is_asked_for)
{
    make_path(board_double.plug_pon(8), 0x50, 0x51);
    const auto readout = read_port(PortKind::gpon, 8);
    ASSERT_TRUE(readout);
    expect_values(readout->plain, 25.0F, 3.3F, 10.0F, 0.0F, -3.0103F);
    EXPECT_EQ(readout->xg, OpticalValues{});
    EXPECT_EQ(board_double.record, in_session(lines("R 11", "CH 7") + opening_a0 + byte_reads(0x51, 96, 105) +
                                              lines("I 58:60 2", "CHE")));
    board_double.expect_given_back();
}

TEST_F(OpticalReadoutTest, a_gigabit_cage_has_a_register_of_its_own_and_the_channels_behind)
{
    make_path(board_double.plug_gigabit(1), 0x50, 0x51, {.wavelength_nm = 850});
    EXPECT_TRUE(read_port(PortKind::gigabit_ethernet, 1));
    EXPECT_EQ(board_double.record, in_session(lines("R 12", "CH 8") + opening_a0 + byte_reads(0x51, 96, 105) +
                                              lines("I 58:60 2", "CHE")));
}

TEST_F(OpticalReadoutTest, a_second_path_with_a_wavelength_is_read_into_the_same_record)
{
    Module combo = board_double.plug_pon(3);
    make_path(combo, 0x50, 0x51);
    make_path(combo, 0x58, 0x59, {.wavelength_nm = 1577});
    const auto readout = read_port(PortKind::xgpon, 3);
    ASSERT_TRUE(readout);
    expect_values(readout->plain, 25.0F, 3.3F, 10.0F, 0.0F, -3.0103F);
    expect_values(readout->xg, 25.0F, 3.3F, 20.0F, 3.0103F, -3.0103F);
    EXPECT_EQ(board_double.record,
              in_session(lines("R 11", "CH 2") + opening_a0 + byte_reads(0x51, 96, 105) + lines("I 58:60 2") +
                         opening_b0 + byte_reads(0x59, 96, 105) + lines("CHE")));
}

TEST_F(OpticalReadoutTest, of_two_paths_of_one_class_the_second_ones_values_stand)
{
    Module module = board_double.plug_pon(1);
    make_path(module, 0x50, 0x51);
    make_path(module, 0x58, 0x59, {.wavelength_nm = 1535, .temperature = 0x2000});
    const auto readout = read_port(PortKind::gpon, 1);
    ASSERT_TRUE(readout);
    expect_values(readout->plain, 32.0F, 3.3F, 20.0F, 3.0103F, -3.0103F);
    EXPECT_EQ(readout->xg, OpticalValues{});
}

TEST_F(OpticalReadoutTest, an_empty_cage_is_not_selected)
{
    board_double.plug_pon(2);
    for (const int port : {1, 0, 9, -1})
        EXPECT_FALSE(read_port(PortKind::gpon, port)) << port;
    EXPECT_FALSE(read_port(PortKind::gigabit_ethernet, 2));
    EXPECT_EQ(board_double.record, in_session(lines("R 12")));
    board_double.fail({"cpld_read"});
    EXPECT_FALSE(read_port(PortKind::gpon, 2)) << "a register that cannot be read";
}

TEST_F(OpticalReadoutTest, a_channel_that_cannot_be_selected_is_an_empty_cage)
{
    make_path(board_double.plug_pon(1), 0x50, 0x51);
    board_double.fail({"select"});
    EXPECT_FALSE(read_port(PortKind::gpon, 1));
    EXPECT_EQ(board_double.record, in_session(lines("R 11", "CH 0")));
}

TEST_F(OpticalReadoutTest, a_channel_that_cannot_be_selected_is_read_and_ended_where_that_is_wanted)
{
    make_path(board_double.plug_pon(1), 0x50, 0x51);
    board_double.fail({"select"});
    cpld_debug = 1;
    testing::internal::CaptureStdout();
    const auto readout = read_port(PortKind::gpon, 1, SelectFailure::read_on);
    EXPECT_TRUE(testing::internal::GetCapturedStdout().starts_with(
        "choose channel 0\r\ncpld i2c 7 set register 119 failed\r\n"));
    ASSERT_TRUE(readout);
    EXPECT_EQ(readout->plain.voltage_v, 0.0F);
    EXPECT_EQ(board_double.record, in_session(lines("R 11", "CH 0") + opening_a0 + lower_memory(0x50) +
                                              lines("I 58:60 2", "CHE")));
}

} // namespace
