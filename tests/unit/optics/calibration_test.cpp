// SPDX-License-Identifier: GPL-2.0-or-later
// External calibration, by vectors that were calculated by hand from SFF-8472.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "tests/unit/optics/memories.hpp"

namespace {

using optics::Quantity;
using optics::Reason;
using optics::State;

struct ExternalSfp : Sfp {
    ExternalSfp()
    {
        a0.set(92, {0x58});
        coefficients({0x00000000, 0x00000000, 0x00000000, 0x3f800000, 0x00000000}); // 1 * raw
        a2.word(76, {0x0100, 0, 0x0100, 0, 0x0100, 0, 0x0100, 0});
    }
    // Rx_PWR(4) first, as they are stored.
    void coefficients(std::initializer_list<std::uint32_t> singles)
    {
        std::size_t byte = 56;
        for (const std::uint32_t single : singles) {
            a2.word(byte, {static_cast<int>(single >> 16), static_cast<int>(single & 0xffff)});
            byte += 4;
        }
    }
};

// 2^-38, -2^-29, 2^-14, 1/2, -20.
constexpr std::initializer_list<std::uint32_t> all_five{0x2c800000, 0xb1000000, 0x38800000, 0x3f000000,
                                                        0xc1a00000};

TEST(ExternalCalibration, constants_of_a_real_module)
{
    ExternalSfp sfp;
    sfp.coefficients({0, 0, 0, 0x3dbcda2a, 0xc1fdc528});
    sfp.a2.word(104, {0x0a30});
    const auto value = sfp.decode().lanes[0].rx_power;
    EXPECT_EQ(value.state, State::ok);
    EXPECT_NEAR(value.value * 1000, 20.88, 0.005); // uW
    EXPECT_NEAR(optics::dbm(value.value), -16.80, 0.005);
}

TEST(ExternalCalibration, all_five_coefficients_count)
{
    ExternalSfp sfp;
    sfp.coefficients(all_five);
    sfp.a2.word(104, {1024});
    // 4 - 2 + 64 + 512 - 20 tenths of a microwatt
    EXPECT_DOUBLE_EQ(sfp.decode().lanes[0].rx_power.value, 0.0558);
    EXPECT_NEAR(optics::dbm(sfp.decode().lanes[0].rx_power.value), -12.5337, 0.00005);
}

TEST(ExternalCalibration, thresholds_of_received_power_take_the_polynomial)
{
    ExternalSfp sfp;
    sfp.coefficients(all_five);
    sfp.a2.word(32, {2048, 512, 1024, 1000});
    const auto thresholds = sfp.decode().thresholds_of(Quantity::rx_power_mw);
    // 64 - 16 + 256 + 1024 - 20; 1/4 - 1/4 + 16 + 256 - 20
    EXPECT_DOUBLE_EQ(thresholds.high_alarm, 0.1308);
    EXPECT_DOUBLE_EQ(thresholds.low_alarm, 0.0252);
    EXPECT_DOUBLE_EQ(thresholds.high_warning, 0.0558);
}

TEST(ExternalCalibration, offsets_are_signed_and_in_raw_units)
{
    ExternalSfp sfp;
    sfp.a2.word(84, {0x0180, -256}); // temperature: 1.5 and -256
    sfp.a2.word(88, {0x00ff, -100}); // voltage: 255/256
    sfp.a2.word(76, {0x0200, -50});  // bias: 2
    sfp.a2.word(80, {0x0140, -500}); // transmitted power: 1.25
    sfp.a2.word(96, {0x1a00, 33000, 5000, 6000, 5000});
    const auto module = sfp.decode();
    EXPECT_DOUBLE_EQ(module.temperature.value, 38);        // (1.5 * 6656 - 256) / 256
    EXPECT_DOUBLE_EQ(module.voltage.value, 3.277109375);   // (255/256 * 33000 - 100) / 10000
    EXPECT_DOUBLE_EQ(module.lanes[0].bias.value, 19.9);    // (2 * 5000 - 50) * 0.002
    EXPECT_DOUBLE_EQ(module.lanes[0].tx_power.value, 0.7); // (1.25 * 6000 - 500) / 10000
    EXPECT_DOUBLE_EQ(module.lanes[0].rx_power.value, 0.5);
    EXPECT_EQ(module.diagnostics.calibration, optics::Calibration::external);
}

TEST(ExternalCalibration, negative_temperature_stays_negative)
{
    ExternalSfp sfp;
    sfp.a2.word(84, {0x0180, -256}).word(96, {-2560});
    EXPECT_DOUBLE_EQ(sfp.decode().temperature.value, -16); // (1.5 * -2560 - 256) / 256
}

TEST(ExternalCalibration, thresholds_take_the_same_constants)
{
    ExternalSfp sfp;
    sfp.a2.word(84, {0x0180, -256}).word(0, {0x2000, -0x0a00, 0x1a00, -0x0800});
    sfp.a2.word(80, {0x0140, -500}).word(24, {6000, 400, 5000, 1200});
    const auto module = sfp.decode();
    const auto &temperature = module.thresholds_of(Quantity::temperature_c);
    EXPECT_DOUBLE_EQ(temperature.high_alarm, 47); // (1.5 * 8192 - 256) / 256
    EXPECT_DOUBLE_EQ(temperature.low_alarm, -16);
    EXPECT_DOUBLE_EQ(temperature.high_warning, 38);
    EXPECT_DOUBLE_EQ(temperature.low_warning, -13); // (1.5 * -2048 - 256) / 256
    const auto &power = module.thresholds_of(Quantity::tx_power_mw);
    EXPECT_DOUBLE_EQ(power.high_alarm, 0.7);
    EXPECT_DOUBLE_EQ(power.low_alarm, 0);
    EXPECT_DOUBLE_EQ(power.low_warning, 0.1);
}

TEST(ExternalCalibration, power_that_the_offset_takes_below_zero_is_no_light)
{
    ExternalSfp sfp;
    sfp.coefficients({0, 0, 0, 0x3dbcda2a, 0xc1fdc528});
    sfp.a2.word(104, {100});
    EXPECT_EQ(sfp.decode().lanes[0].rx_power.state, State::no_light);
}

TEST(ExternalCalibration, five_zeros_are_no_constants)
{
    ExternalSfp sfp;
    sfp.coefficients({0, 0, 0, 0, 0});
    const auto module = sfp.decode();
    EXPECT_EQ(module.lanes[0].rx_power.state, State::failed);
    EXPECT_EQ(module.lanes[0].rx_power.reason, Reason::bad_calibration);
    EXPECT_EQ(module.thresholds_of(Quantity::rx_power_mw).state, State::failed);
    EXPECT_EQ(module.lanes[0].tx_power.state, State::ok);
    EXPECT_TRUE(module.doubts.calibration_bad);
}

TEST(ExternalCalibration, infinite_and_undefined_coefficients_are_none)
{
    for (const std::uint32_t single : {0x7f800000U, 0xff800000U, 0x7fc00000U})
        for (std::size_t byte = 56; byte < 76; byte += 4) {
            ExternalSfp sfp;
            sfp.a2.word(byte, {static_cast<int>(single >> 16), 0});
            EXPECT_EQ(sfp.decode().lanes[0].rx_power.reason, Reason::bad_calibration) << byte;
        }
}

TEST(ExternalCalibration, slope_of_nothing_measures_nothing)
{
    ExternalSfp sfp;
    sfp.a2.word(88, {0, 100});
    EXPECT_EQ(sfp.decode().voltage.reason, Reason::bad_calibration);
    EXPECT_EQ(sfp.decode().temperature.state, State::ok);
}

TEST(ExternalCalibration, values_that_no_module_can_have_are_implausible)
{
    ExternalSfp sfp;
    sfp.coefficients({0, 0, 0x40000000, 0, 0}); // 2 * raw^2
    sfp.a2.word(84, {0xff00, 0}).word(80, {0x0100, 0});
    const auto module = sfp.decode();
    EXPECT_EQ(module.lanes[0].rx_power.reason, Reason::implausible);
    EXPECT_EQ(module.temperature.reason, Reason::implausible);
    EXPECT_EQ(module.lanes[0].tx_power.state, State::ok);
}

TEST(ExternalCalibration, constants_count_only_when_the_module_asks_for_them)
{
    Sfp sfp;
    sfp.a2.word(84, {0x0180, -256});
    EXPECT_DOUBLE_EQ(sfp.decode().temperature.value, 25.5);
}

TEST(ExternalCalibration, constants_that_were_not_read_leave_no_thresholds)
{
    Sfp sfp;
    sfp.a0.set(92, {0x58});
    sfp.finish();
    const auto module = optics::decode({.a0 = sfp.a0.bytes, .a2 = optics::Bytes(sfp.a2.bytes).first(56)});
    for (const auto &thresholds : module.thresholds)
        EXPECT_EQ(thresholds.state, State::unsupported);
    EXPECT_FALSE(module.doubts.calibration_bad);
}

TEST(ExternalCalibration, unclear_calibration_is_taken_for_internal_with_doubt)
{
    for (const unsigned type : {0x48U, 0x78U}) {
        Sfp sfp;
        sfp.a0.set(92, {type});
        const auto module = sfp.decode();
        EXPECT_DOUBLE_EQ(module.temperature.value, 25.5);
        EXPECT_TRUE(module.doubts.calibration_unknown);
    }
}

} // namespace
