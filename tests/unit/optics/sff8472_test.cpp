// SPDX-License-Identifier: GPL-2.0-or-later
#include <gtest/gtest.h>

#include "optics/sff8024.hpp"
#include "tests/unit/optics/memories.hpp"

namespace {

using optics::Check;
using optics::Judgement;
using optics::Medium;
using optics::Quantity;
using optics::Reason;
using optics::State;

TEST(Sff8472, identity)
{
    const auto identity = Sfp().decode().identity;
    EXPECT_EQ(optics::identifier_name(identity.identifier), "SFP");
    EXPECT_EQ(optics::connector_name(identity.connector), "LC");
    EXPECT_EQ(optics::encoding_name(identity.encoding, optics::Family::sff8472), "64B/66B");
    EXPECT_EQ(identity.compliance[0], 0x20);
    EXPECT_EQ(identity.vendor.view(), "ACME OPTICS");
    EXPECT_EQ(identity.oui, (std::array<std::uint8_t, 3>{0x00, 0x90, 0x65}));
    EXPECT_EQ(identity.part.view(), "AC-10G-LR");
    EXPECT_EQ(identity.revision.view(), "B2");
    EXPECT_EQ(identity.serial.view(), "SN0001");
    EXPECT_EQ(identity.date.view(), "210304");
    EXPECT_EQ(identity.rate_mbd, 10300U);
    EXPECT_EQ(identity.wavelength_nm, 1310);
    EXPECT_EQ(identity.medium, Medium::optical);
    EXPECT_EQ(identity.lengths.smf.metres, 10000);
}

TEST(Sff8472, values_in_natural_units)
{
    const auto module = Sfp().decode();
    EXPECT_DOUBLE_EQ(module.temperature.value, 25.5);
    EXPECT_DOUBLE_EQ(module.voltage.value, 3.2545);
    EXPECT_DOUBLE_EQ(module.lanes[0].bias.value, 27.872);
    EXPECT_DOUBLE_EQ(module.lanes[0].tx_power.value, 0.6361);
    EXPECT_DOUBLE_EQ(module.lanes[0].rx_power.value, 0.5518);
    EXPECT_NEAR(optics::dbm(module.lanes[0].tx_power.value), -1.9647, 0.00005);
    EXPECT_EQ(module.lane_count, 1);
    EXPECT_FALSE(module.doubts.any());
}

TEST(Sff8472, thresholds_in_their_order)
{
    const auto module = Sfp().decode();
    const auto &temperature = module.thresholds_of(Quantity::temperature_c);
    EXPECT_DOUBLE_EQ(temperature.high_alarm, 90);
    EXPECT_DOUBLE_EQ(temperature.low_alarm, -25);
    EXPECT_DOUBLE_EQ(temperature.high_warning, 85);
    EXPECT_DOUBLE_EQ(temperature.low_warning, -20);
    EXPECT_DOUBLE_EQ(module.thresholds_of(Quantity::voltage_v).low_warning, 3.05);
    EXPECT_DOUBLE_EQ(module.thresholds_of(Quantity::bias_ma).high_alarm, 90);
    EXPECT_DOUBLE_EQ(module.thresholds_of(Quantity::tx_power_mw).low_alarm, 0.1995);
    EXPECT_DOUBLE_EQ(module.thresholds_of(Quantity::rx_power_mw).high_warning, 1.122);
}

TEST(Sff8472, values_are_judged_by_the_thresholds)
{
    const std::pair<int, Judgement> cases[] = {
        {91, Judgement::high_alarm},   {90, Judgement::high_warning}, {86, Judgement::high_warning},
        {85, Judgement::normal},       {-20, Judgement::normal},      {-21, Judgement::low_warning},
        {-25, Judgement::low_warning}, {-26, Judgement::low_alarm},
    };
    for (const auto &[degrees, judgement] : cases) {
        Sfp sfp;
        sfp.a2.word(96, {degrees * 256});
        EXPECT_EQ(sfp.decode().temperature.judgement, judgement) << degrees;
    }
}

TEST(Sff8472, thresholds_that_are_unset_or_out_of_order_judge_nothing)
{
    Sfp sfp;
    sfp.a2.word(0, {0, 0, 0, 0}).word(8, {30000, 36000, 35000, 30500});
    const auto module = sfp.decode();
    EXPECT_EQ(module.temperature.judgement, Judgement::none);
    EXPECT_EQ(module.voltage.judgement, Judgement::none);
    EXPECT_EQ(module.lanes[0].bias.judgement, Judgement::normal);
}

TEST(Sff8472, check_codes)
{
    Sfp sfp;
    const auto good = sfp.decode();
    ASSERT_EQ(good.check_count, 3);
    for (const Check &check : good.checks)
        EXPECT_EQ(check.result, Check::Result::good) << check.name;
    const std::pair<std::size_t, std::string_view> spoiled[] = {{20, "CC_BASE"}, {68, "CC_EXT"}};
    for (const auto &[byte, name] : spoiled) {
        Sfp bad = sfp;
        bad.a0.bytes[byte] ^= 0x01;
        const auto module = bad.decode_as_is();
        EXPECT_TRUE(module.doubts.check_failed);
        EXPECT_FALSE(module.trusted());
        for (const Check &check : module.checks)
            EXPECT_EQ(check.result, check.name == name ? Check::Result::bad : Check::Result::good)
                << check.name;
    }
    sfp.a2.bytes[10] ^= 0x80;
    EXPECT_EQ(sfp.decode_as_is().checks[2].result, Check::Result::bad);
}

TEST(Sff8472, status_bits_count_where_the_module_keeps_them)
{
    Sfp sfp;
    sfp.a2.set(110, {0x86});
    auto lane = sfp.decode().lanes[0];
    EXPECT_EQ(lane.tx_disabled, true);
    EXPECT_EQ(lane.tx_fault, true);
    EXPECT_EQ(lane.rx_los, true);
    sfp.a2.set(110, {0x00});
    lane = sfp.decode().lanes[0];
    EXPECT_EQ(lane.tx_disabled, false);
    EXPECT_EQ(lane.rx_los, false);
    sfp.a0.set(93, {0x80});
    lane = sfp.decode().lanes[0];
    EXPECT_EQ(lane.tx_disabled, std::nullopt);
    EXPECT_EQ(lane.tx_fault, std::nullopt);
    EXPECT_EQ(lane.rx_los, std::nullopt);
}

TEST(Sff8472, length_of_single_mode_fibre_is_the_finer_field_as_far_as_it_reaches)
{
    const std::pair<std::pair<unsigned, unsigned>, double> cases[] = {
        {{2, 20}, 2000}, {{0, 5}, 500}, {{80, 255}, 80000}, {{40, 0}, 40000}};
    for (const auto &[fields, metres] : cases) {
        Sfp sfp;
        sfp.a0.set(14, {fields.first, fields.second});
        EXPECT_EQ(sfp.decode().identity.lengths.smf.metres, metres);
    }
}

TEST(Sff8472, length_field_18_is_fibre_or_cable)
{
    Sfp sfp;
    sfp.a0.set(18, {40});
    EXPECT_EQ(sfp.decode().identity.lengths.om4.metres, 400);
    sfp.a0.set(6, {0x08}); // 1000BASE-T
    EXPECT_EQ(sfp.decode().identity.lengths.cable.metres, 40);
    EXPECT_EQ(sfp.decode().identity.medium, Medium::base_t);
}

TEST(Sff8472, short_memories_lack_what_they_lack)
{
    Sfp sfp;
    sfp.finish();
    const auto identity_only = optics::decode({.a0 = optics::Bytes(sfp.a0.bytes).first(64), .a2 = {}});
    EXPECT_EQ(identity_only.identity.part.view(), "AC-10G-LR");
    EXPECT_EQ(identity_only.identity.serial.view(), "");
    EXPECT_EQ(identity_only.checks[0].result, Check::Result::good);
    EXPECT_EQ(identity_only.checks[1].result, Check::Result::not_read);
    EXPECT_TRUE(identity_only.doubts.check_missing);
    EXPECT_EQ(identity_only.temperature.reason, Reason::not_read);

    const auto cut = optics::decode({.a0 = sfp.a0.bytes, .a2 = optics::Bytes(sfp.a2.bytes).first(101)});
    EXPECT_EQ(cut.voltage.state, State::ok);
    EXPECT_EQ(cut.lanes[0].bias.state, State::unsupported);
    EXPECT_EQ(cut.lanes[0].bias.reason, Reason::not_read);
}

TEST(Sff8472, diagnostics_without_an_identity_are_doubtful)
{
    Sfp sfp;
    sfp.finish();
    const auto module = optics::decode({.a2 = sfp.a2.bytes});
    EXPECT_TRUE(module.doubts.identity_missing);
    EXPECT_DOUBLE_EQ(module.temperature.value, 25.5);
    EXPECT_EQ(module.temperature.judgement, Judgement::none);
}

TEST(Sff8472, units_are_doubled_for_modules_in_the_table_of_quirks_alone)
{
    Sfp sfp;
    sfp.a0.word(60, {1577});
    EXPECT_DOUBLE_EQ(sfp.decode().lanes[0].bias.value, 27.872);
    sfp.a0.text(20, 16, "OPTOLUX").text(40, 16, "OLX-XGPON-N1");
    const auto module = sfp.decode();
    EXPECT_DOUBLE_EQ(module.lanes[0].bias.value, 55.744);
    EXPECT_DOUBLE_EQ(module.lanes[0].tx_power.value, 1.2722);
    EXPECT_DOUBLE_EQ(module.lanes[0].rx_power.value, 0.5518);
    EXPECT_DOUBLE_EQ(module.thresholds_of(Quantity::bias_ma).high_alarm, 180);
    EXPECT_TRUE(module.quirk);
}

TEST(Sff8472, kinds_of_other_standards_are_not_decoded)
{
    for (const unsigned identifier : {0x06U, 0x0eU, 0x1aU}) {
        Sfp sfp;
        sfp.a0.set(0, {identifier});
        const auto module = sfp.decode();
        EXPECT_EQ(module.family, optics::Family::unknown);
        EXPECT_EQ(module.identity.identifier, identifier);
    }
}

} // namespace
