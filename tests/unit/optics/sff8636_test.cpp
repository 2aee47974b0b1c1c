// SPDX-License-Identifier: GPL-2.0-or-later
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "optics/render.hpp"
#include "optics/sff8024.hpp"
#include "tests/unit/optics/memories.hpp"

namespace {

using optics::Judgement;
using optics::Medium;
using optics::Quantity;
using optics::State;

TEST(Sff8636, identity)
{
    const auto module = Qsfp().decode();
    const auto &identity = module.identity;
    EXPECT_EQ(module.family, optics::Family::sff8636);
    EXPECT_EQ(optics::identifier_name(identity.identifier), "QSFP28");
    EXPECT_EQ(optics::connector_name(identity.connector), "LC");
    EXPECT_EQ(optics::encoding_name(identity.encoding, module.family), "64B/66B");
    EXPECT_EQ(optics::ext_compliance_name(identity.ext_compliance), "100GBASE-LR4 or 25GBASE-LR");
    EXPECT_EQ(identity.vendor.view(), "ACME OPTICS");
    EXPECT_EQ(identity.part.view(), "AC-100G-LR4");
    EXPECT_EQ(identity.revision.view(), "A1");
    EXPECT_EQ(identity.serial.view(), "SN0002");
    EXPECT_EQ(identity.rate_mbd, 25750U);
    EXPECT_DOUBLE_EQ(*identity.wavelength_nm, 1310);
    EXPECT_DOUBLE_EQ(*identity.wavelength_tolerance_nm, 6.5);
    EXPECT_EQ(identity.lengths.smf.metres, 10000);
    EXPECT_EQ(identity.medium, Medium::optical);
    EXPECT_TRUE(module.trusted());
}

TEST(Sff8636, values_of_four_lanes)
{
    const auto module = Qsfp().decode();
    EXPECT_DOUBLE_EQ(module.temperature.value, 30.5);
    EXPECT_DOUBLE_EQ(module.voltage.value, 3.29);
    ASSERT_EQ(module.lane_count, 4);
    const double rx_mw[] = {0.4643, 0.9012, 0.4913, 0.4626};
    const double bias_ma[] = {10.28, 8.738, 17.476, 26.214};
    const double tx_mw[] = {1.6705, 1.6962, 1.7219, 1.7476};
    for (std::size_t i = 0; i < 4; ++i) {
        EXPECT_DOUBLE_EQ(module.lanes[i].rx_power.value, rx_mw[i]);
        EXPECT_DOUBLE_EQ(module.lanes[i].bias.value, bias_ma[i]);
        EXPECT_DOUBLE_EQ(module.lanes[i].tx_power.value, tx_mw[i]);
    }
}

TEST(Sff8636, thresholds_of_page_03)
{
    const auto module = Qsfp().decode();
    EXPECT_DOUBLE_EQ(module.thresholds_of(Quantity::temperature_c).low_alarm, -5);
    EXPECT_DOUBLE_EQ(module.thresholds_of(Quantity::voltage_v).high_alarm, 3.63);
    EXPECT_DOUBLE_EQ(module.thresholds_of(Quantity::rx_power_mw).low_alarm, 0.0446);
    EXPECT_DOUBLE_EQ(module.thresholds_of(Quantity::bias_ma).high_warning, 38);
    EXPECT_DOUBLE_EQ(module.thresholds_of(Quantity::tx_power_mw).low_warning, 0.1259);
    EXPECT_EQ(module.lanes[3].bias.judgement, Judgement::normal);
}

TEST(Sff8636, without_page_03_nothing_is_judged)
{
    Qsfp qsfp;
    qsfp.finish();
    const auto module = optics::decode({.lower = qsfp.lower.bytes, .page00 = qsfp.page00.bytes});
    EXPECT_EQ(module.thresholds_of(Quantity::bias_ma).state, State::unsupported);
    EXPECT_EQ(module.temperature.judgement, Judgement::none);
    EXPECT_EQ(module.temperature.state, State::ok);
}

TEST(Sff8636, flags_and_status_of_each_lane)
{
    Qsfp qsfp;
    qsfp.lower.set(3, {0x48}).set(4, {0x02}).set(86, {0x01}); // TX LOS 3, RX LOS 4, fault 2, disabled 1
    qsfp.lower.set(6, {0x80, 0x10});                          // temperature high alarm, voltage low warning
    qsfp.lower.set(9, {0x48, 0x00}).set(11, {0x00, 0x21}); // RX 1 low alarm, 2 high alarm; bias 3, 4 warnings
    qsfp.lower.set(13, {0x01, 0x80});                      // TX 2 low warning, 3 high alarm
    const auto module = qsfp.decode();
    EXPECT_TRUE(module.temperature.flags.high_alarm);
    EXPECT_FALSE(module.temperature.flags.low_alarm);
    EXPECT_TRUE(module.voltage.flags.low_warning);
    EXPECT_TRUE(module.lanes[0].rx_power.flags.low_alarm);
    EXPECT_TRUE(module.lanes[1].rx_power.flags.high_alarm);
    EXPECT_TRUE(module.lanes[2].bias.flags.high_warning);
    EXPECT_TRUE(module.lanes[3].bias.flags.low_warning);
    EXPECT_TRUE(module.lanes[1].tx_power.flags.low_warning);
    EXPECT_TRUE(module.lanes[2].tx_power.flags.high_alarm);
    for (std::size_t i = 0; i < 4; ++i) {
        EXPECT_EQ(module.lanes[i].tx_los, i == 2);
        EXPECT_EQ(module.lanes[i].rx_los, i == 3);
        EXPECT_EQ(module.lanes[i].tx_fault, i == 1);
        EXPECT_EQ(module.lanes[i].tx_disabled, i == 0);
    }
}

TEST(Sff8636, the_256_bytes_at_one_address_are_lower_memory_and_page_00)
{
    Qsfp qsfp;
    qsfp.finish();
    std::array<std::uint8_t, 256> both{};
    std::copy(qsfp.lower.bytes.begin(), qsfp.lower.bytes.end(), both.begin());
    std::copy(qsfp.page00.bytes.begin(), qsfp.page00.bytes.end(), both.begin() + 128);
    const auto module = optics::decode({.a0 = both});
    EXPECT_EQ(module.family, optics::Family::sff8636);
    EXPECT_DOUBLE_EQ(module.lanes[1].rx_power.value, 0.9012);
}

TEST(Sff8636, unlike_identifiers_are_doubtful)
{
    Qsfp qsfp;
    qsfp.page00.set(128, {0x0d});
    EXPECT_TRUE(qsfp.decode().doubts.identifier_differs);
    EXPECT_THAT(optics::render_text(qsfp.decode()),
                testing::HasSubstr("lower memory and page 00h have different identifiers"));
}

} // namespace
