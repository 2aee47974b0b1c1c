// SPDX-License-Identifier: GPL-2.0-or-later
// Module families, wavelengths, units, calibration words and conversions of raw diagnostic fields.
#include "diagd/transceiver/decode/optical_values.hpp"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <cstdint>
#include <limits>
#include <map>
#include <set>

using namespace diagd;

namespace {

TEST(ModuleFamily, every_identifier_has_the_family_of_its_memory_map)
{
    const std::set<int> sfp{0x00, 0x03};
    const std::set<int> qsfp{0x02, 0x0C, 0x0D, 0x11};
    for (int id = 0; id < 256; ++id) {
        const auto expected = sfp.contains(id)    ? ModuleFamily::sff8472
                              : qsfp.contains(id) ? ModuleFamily::sff8636
                                                  : ModuleFamily::unsupported;
        EXPECT_EQ(module_family(static_cast<std::uint8_t>(id)), expected) << "identifier " << id;
    }
}

TEST(Wavelength, only_the_exact_wavelengths_have_a_class)
{
    const std::map<int, int> classes{{850, 1},  {1310, 1}, {1311, 1}, {1490, 2},
                                     {1535, 2}, {1577, 3}, {1791, 3}};
    for (int nm = 0; nm <= 0xFFFF; ++nm) {
        const auto row = classes.find(nm);
        ASSERT_EQ(static_cast<int>(transceiver_type_by_wavelength(static_cast<std::uint16_t>(nm))),
                  row == classes.end() ? 0 : row->second)
            << nm << " nm";
    }
}

struct UnitRow {
    int address, wavelength_nm;
    float tx_power_uw, bias_ua;
};

class Units : public testing::TestWithParam<UnitRow> {};

TEST_P(Units, depend_on_the_wavelength_and_for_gpon_on_the_path)
{
    const auto [address, nm, tx, bias] = GetParam();
    const auto a = static_cast<std::uint8_t>(address);
    const auto w = static_cast<std::uint16_t>(nm);
    EXPECT_EQ(tx_power_unit_by_wavelength(a, w), tx);
    EXPECT_EQ(bias_current_unit_by_wavelength(a, w), bias);
}

INSTANTIATE_TEST_SUITE_P(Rows, Units,
                         testing::Values(UnitRow{0x51, 1490, 0.1F, 2}, UnitRow{0x51, 1535, 0.1F, 2},
                                         UnitRow{0x59, 1490, 0.2F, 4}, UnitRow{0x59, 1535, 0.2F, 4},
                                         UnitRow{0x50, 1490, 0.2F, 4}, UnitRow{0x00, 1535, 0.2F, 4},
                                         UnitRow{0x51, 1577, 0.2F, 4}, UnitRow{0x51, 1791, 0.2F, 4},
                                         UnitRow{0x59, 1577, 0.2F, 4}, UnitRow{0x59, 1791, 0.2F, 4},
                                         UnitRow{0x51, 850, 0.1F, 2}, UnitRow{0x59, 850, 0.1F, 2},
                                         UnitRow{0x59, 1310, 0.1F, 2}, UnitRow{0x59, 1311, 0.1F, 2},
                                         UnitRow{0x59, 1550, 0.1F, 2}, UnitRow{0x59, 0, 0.1F, 2}));

TEST(CalibrationValue, known_words)
{
    const std::map<int, float> words{{0x0100, 1.0F},    {0x0108, 1.0F},    {0x0180, 1.5F},
                                     {0x0010, 0.0625F}, {0xFF00, -1.0F},   {0x0090, 0.5625F},
                                     {0x0000, 0.0F},    {0x8080, -127.5F}, {0x7F70, 127.4375F}};
    for (const auto &[word, value] : words)
        EXPECT_EQ(calibration_value(static_cast<std::uint16_t>(word)), value) << std::hex << word;
}

// Reads the word as a signed number of 1/256ths, negated as a whole when bit 7 is set, and drops the lowest
// four bits by an arithmetic shift: another way to the same 16ths.
TEST(CalibrationValue, every_word_is_a_number_of_sixteenths)
{
    for (int word = 0; word <= 0xFFFF; ++word) {
        const bool negated = (word & 0x80) != 0;
        const auto fixed_point = static_cast<std::int16_t>(negated ? -word : word);
        const int sixteenths = (fixed_point >> 4) * (negated ? -1 : 1);
        ASSERT_EQ(calibration_value(static_cast<std::uint16_t>(word)), static_cast<float>(sixteenths) / 16)
            << std::hex << word;
    }
}

TEST(CalibrationConstants, stand_in_the_order_of_the_diagnostics_page)
{
    std::array<std::uint8_t, 20> bytes{};
    for (unsigned i = 0; i < 10; ++i)
        bytes[2 * i] = static_cast<std::uint8_t>(i + 1);
    const CalibrationConstants c = calibration_constants(bytes);
    EXPECT_EQ(c.bias.slope, 1);
    EXPECT_EQ(c.bias.offset, 2);
    EXPECT_EQ(c.tx_power.slope, 3);
    EXPECT_EQ(c.tx_power.offset, 4);
    EXPECT_EQ(c.temperature.slope, 5);
    EXPECT_EQ(c.temperature.offset, 6);
    EXPECT_EQ(c.voltage.slope, 7);
    EXPECT_EQ(c.voltage.offset, 8);
    EXPECT_EQ(c.rx_power.slope, 9);
    EXPECT_EQ(c.rx_power.offset, 10);
}

TEST(RawDiagnostics, are_big_endian_and_only_the_temperature_is_signed)
{
    const std::array<std::uint8_t, 10> bytes{0xFB, 0x00, 0x80, 0x01, 0xFF, 0xFE, 0x27, 0x10, 0x13, 0x88};
    const RawDiagnostics raw = raw_diagnostics(bytes);
    EXPECT_EQ(raw.temperature, -1280);
    EXPECT_EQ(raw.voltage, 0x8001);
    EXPECT_EQ(raw.bias, 0xFFFE);
    EXPECT_EQ(raw.tx_power, 10000);
    EXPECT_EQ(raw.rx_power, 5000);
}

TEST(Temperature, has_no_sign)
{
    EXPECT_EQ(temperature_c(static_cast<std::int16_t>(0xFB00)), 5.0F);
    EXPECT_EQ(temperature_c(0x1980), 25.5F);
    EXPECT_EQ(temperature_c(std::numeric_limits<std::int16_t>::min()), 128.0F);
    // The sign is dropped before the correction, so the correction can bring one back.
    EXPECT_EQ(temperature_c(-256, {.slope = 1, .offset = -127}), (256.0F - 127.0F) / 256.0F);
    EXPECT_EQ(temperature_c(0, {.slope = 1, .offset = -128}), -0.5F);
}

TEST(OpticalPower, no_light_is_minus_infinity)
{
    EXPECT_EQ(optical_power_dbm(0, 0.1F), -std::numeric_limits<float>::infinity());
}

TEST(OpticalPower, calibrated_below_zero_is_not_a_number)
{
    EXPECT_TRUE(std::isnan(optical_power_dbm(1, 0.1F, {.slope = -1, .offset = 0})));
    EXPECT_EQ(optical_power_dbm(1, 0.1F, {.slope = 1, .offset = -1}),
              -std::numeric_limits<float>::infinity());
}

TEST(OpticalPower, the_unit_weighs_the_count)
{
    EXPECT_EQ(optical_power_dbm(10000, 0.1F), 0.0F);
    EXPECT_EQ(optical_power_dbm(5000, 0.2F), 0.0F);
    EXPECT_NEAR(optical_power_dbm(10000, 0.2F), 3.0103F, 1e-4F);
    EXPECT_NEAR(optical_power_dbm(5000, 0.1F), -3.0103F, 1e-4F);
    EXPECT_NEAR(optical_power_dbm(1, 0.1F), -40.0F, 1e-5F);
}

constexpr RawDiagnostics sample{
    .temperature = 0x1900, .voltage = 33000, .bias = 5000, .tx_power = 10000, .rx_power = 5000};

TEST(OpticalValues, internally_calibrated_gpon_path)
{
    const OpticalValues v = optical_values(sample, 0x51, 1490);
    EXPECT_EQ(v.temperature_c, 25.0F);
    EXPECT_FLOAT_EQ(v.voltage_v, 3.3F);
    EXPECT_FLOAT_EQ(v.bias_ma, 10.0F);
    EXPECT_EQ(v.tx_power_dbm, 0.0F);
    EXPECT_NEAR(v.rx_power_dbm, -3.0103F, 1e-4F);
}

TEST(OpticalValues, xgpon_path_counts_bias_and_tx_power_double_but_not_rx_power)
{
    const OpticalValues v = optical_values(sample, 0x51, 1577);
    EXPECT_FLOAT_EQ(v.bias_ma, 20.0F);
    EXPECT_NEAR(v.tx_power_dbm, 3.0103F, 1e-4F);
    EXPECT_NEAR(v.rx_power_dbm, -3.0103F, 1e-4F);
}

TEST(OpticalValues, externally_calibrated_path_corrects_each_field_with_its_own_pair)
{
    const CalibrationConstants cal{.bias = {2, 10},
                                   .tx_power = {0.5F, 100},
                                   .temperature = {1.5F, 64},
                                   .voltage = {0.5F, -100},
                                   .rx_power = {3, -5000}};
    const OpticalValues v = optical_values(sample, 0x59, 1490, cal);
    EXPECT_FLOAT_EQ(v.temperature_c, (6400.0F * 1.5F + 64) / 256);
    EXPECT_FLOAT_EQ(v.voltage_v, (33000 * 0.5F - 100) / 10000);
    EXPECT_FLOAT_EQ(v.bias_ma, (5000.0F * 2 + 10) * 4 / 1000);
    EXPECT_NEAR(v.tx_power_dbm, 10 * std::log10(5100.0 / 5000), 1e-5);
    EXPECT_NEAR(v.rx_power_dbm, 0.0, 1e-5);
}

} // namespace
