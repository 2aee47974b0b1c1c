// SPDX-License-Identifier: GPL-2.0-or-later
#include <gtest/gtest.h>

#include "optics/sff8024.hpp"
#include "tests/unit/optics/memories.hpp"

namespace {

using optics::Judgement;
using optics::Medium;
using optics::Quantity;
using optics::Reason;
using optics::State;

// QSFP-DD with four lanes of light.
struct Cmis {
    Cmis()
    {
        lower.set(0, {0x18, 0x50, 0x00, 0x06}).word(14, {0x2380, 33100}).set(85, {0x02}).set(88, {0x84});
        page00.set(128, {0x18})
            .text(129, 16, "ACME OPTICS")
            .set(145, {0x00, 0x90, 0x65})
            .text(148, 16, "AC-400G-FR4");
        page00.text(164, 2, "1A")
            .text(166, 16, "SN0003")
            .text(182, 8, "230607")
            .set(203, {0x07})
            .set(212, {0x04});
        page01.set(132, {0x42}).word(138, {26220, 1300}).set(159, {0x03, 0x0f}); // bias in 4 uA
        page02.word(128, {80 * 256, -5 * 256, 75 * 256, 0}).word(136, {34650, 31350, 34000, 32000});
        page02.word(176, {25119, 2512, 19953, 3162})
            .word(184, {30000, 5000, 28000, 6000})
            .word(192, {22387, 631, 17783, 1000});
        page11.word(154, {12000, 12100, 12200, 12300})
            .word(170, {20000, 20100, 20200, 20300})
            .word(186, {8000, 8100, 0, 8300});
    }
    optics::Module decode()
    {
        page00.sum(128, 221, 222);
        page01.sum(130, 254, 255);
        page02.sum(128, 254, 255);
        return optics::decode({.lower = lower.bytes,
                               .page00 = page00.bytes,
                               .page01 = page01.bytes,
                               .page02 = page02.bytes,
                               .page11 = page11.bytes});
    }
    MemoryPart<128, 0> lower;
    MemoryPart<128, 128> page00, page01, page02, page11;
};

TEST(Cmis, identifiers_are_recognised_and_named)
{
    const std::pair<unsigned, std::string_view> kinds[] = {
        {0x18, "QSFP-DD"}, {0x19, "OSFP"}, {0x1e, "QSFP+ with CMIS"}};
    for (const auto &[identifier, name] : kinds) {
        Cmis cmis;
        cmis.lower.set(0, {identifier});
        const auto module = cmis.decode();
        EXPECT_EQ(module.family, optics::Family::cmis);
        EXPECT_EQ(optics::identifier_name(module.identity.identifier), name);
    }
}

TEST(Cmis, identity)
{
    const auto module = Cmis().decode();
    EXPECT_EQ(module.identity.vendor.view(), "ACME OPTICS");
    EXPECT_EQ(module.identity.part.view(), "AC-400G-FR4");
    EXPECT_EQ(module.identity.revision.view(), "1A");
    EXPECT_EQ(module.identity.serial.view(), "SN0003");
    EXPECT_EQ(module.identity.date.view(), "230607");
    EXPECT_DOUBLE_EQ(*module.identity.wavelength_nm, 1311);
    EXPECT_DOUBLE_EQ(*module.identity.wavelength_tolerance_nm, 6.5); // counted in 0.005 nm
    EXPECT_EQ(module.identity.lengths.smf.metres, 2000);
    EXPECT_EQ(module.diagnostics.module_state, 3); // ready
    EXPECT_TRUE(module.trusted());
}

TEST(Cmis, values)
{
    const auto module = Cmis().decode();
    EXPECT_DOUBLE_EQ(module.temperature.value, 35.5);
    EXPECT_DOUBLE_EQ(module.voltage.value, 3.31);
    ASSERT_EQ(module.lane_count, 4);
    EXPECT_DOUBLE_EQ(module.lanes[0].tx_power.value, 1.2);
    EXPECT_DOUBLE_EQ(module.lanes[3].bias.value, 81.2);
    EXPECT_DOUBLE_EQ(module.lanes[1].rx_power.value, 0.81);
    EXPECT_EQ(module.lanes[2].rx_power.state, State::no_light);
}

TEST(Cmis, unit_of_bias_is_told_by_page_01)
{
    const std::pair<unsigned, double> scales[] = {{0x07, 40}, {0x0f, 80}, {0x17, 160}};
    for (const auto &[byte, bias_ma] : scales) {
        Cmis cmis;
        cmis.page01.set(160, {byte});
        const auto module = cmis.decode();
        EXPECT_DOUBLE_EQ(module.lanes[0].bias.value, bias_ma);
        EXPECT_DOUBLE_EQ(module.thresholds_of(Quantity::bias_ma).high_alarm, bias_ma * 1.5);
    }
}

TEST(Cmis, thresholds_of_page_02)
{
    const auto module = Cmis().decode();
    EXPECT_DOUBLE_EQ(module.thresholds_of(Quantity::temperature_c).low_alarm, -5);
    EXPECT_DOUBLE_EQ(module.thresholds_of(Quantity::voltage_v).high_warning, 3.4);
    EXPECT_DOUBLE_EQ(module.thresholds_of(Quantity::tx_power_mw).low_warning, 0.3162);
    EXPECT_DOUBLE_EQ(module.thresholds_of(Quantity::rx_power_mw).low_alarm, 0.0631);
    EXPECT_EQ(module.lanes[2].rx_power.judgement, Judgement::low_alarm);
}

TEST(Cmis, flags_and_status)
{
    Cmis cmis;
    cmis.lower.set(9, {0x21}); // temperature high alarm, voltage low alarm
    cmis.page11.set(135, {0x01, 0x02}).set(147, {0x04}).set(139, {0x08}).set(146, {0x01}).set(150, {0x04});
    const auto module = cmis.decode();
    EXPECT_TRUE(module.temperature.flags.high_alarm);
    EXPECT_TRUE(module.voltage.flags.low_alarm);
    EXPECT_EQ(module.lanes[0].tx_fault, true);
    EXPECT_EQ(module.lanes[1].tx_los, true);
    EXPECT_EQ(module.lanes[2].rx_los, true);
    EXPECT_EQ(module.lanes[0].rx_los, false);
    EXPECT_TRUE(module.lanes[3].tx_power.flags.high_alarm);
    EXPECT_TRUE(module.lanes[0].bias.flags.low_warning);
    EXPECT_TRUE(module.lanes[2].rx_power.flags.low_alarm);
}

TEST(Cmis, flat_memory_is_told_by_bit_7_and_has_no_lanes)
{
    Cmis cmis;
    cmis.lower.set(2, {0x80});
    const auto module = cmis.decode();
    EXPECT_TRUE(module.diagnostics.flat_memory);
    EXPECT_EQ(module.lanes[0].rx_power.state, State::unsupported);
    EXPECT_EQ(module.thresholds_of(Quantity::temperature_c).state, State::unsupported);
    EXPECT_DOUBLE_EQ(module.temperature.value, 35.5);
    Cmis paged;
    paged.lower.set(2, {0x04}); // what SFF-8636 calls flat
    EXPECT_EQ(paged.decode().lanes[0].rx_power.state, State::ok);
}

TEST(Cmis, copper_has_a_length_and_attenuations)
{
    Cmis cmis;
    cmis.lower.set(2, {0x80}).set(85, {0x03});
    cmis.page00.set(212, {0x0a}).set(202, {0x45}).set(204, {5, 6, 11, 16}); // 5 m
    const auto module = cmis.decode();
    EXPECT_EQ(module.identity.medium, Medium::passive_copper);
    EXPECT_EQ(module.identity.lengths.cable.metres, 5);
    EXPECT_EQ(module.identity.wavelength_nm, std::nullopt);
    ASSERT_TRUE(module.identity.attenuation_db);
    EXPECT_EQ((*module.identity.attenuation_db)[2], 11);
    EXPECT_EQ(module.lanes[0].tx_power.reason, Reason::copper);
    cmis.page00.set(202, {0x05}); // tenths of a metre
    EXPECT_EQ(cmis.decode().identity.lengths.cable.metres, 0.5);
    cmis.page00.set(202, {0x3f}); // the longest in this unit, and no more
    EXPECT_DOUBLE_EQ(cmis.decode().identity.lengths.cable.metres, 6.3);
    EXPECT_FALSE(cmis.decode().identity.lengths.cable.more);
    cmis.page00.set(202, {0xff});
    EXPECT_EQ(cmis.decode().identity.lengths.cable.metres, 6300);
    EXPECT_TRUE(cmis.decode().identity.lengths.cable.more);
}

TEST(Cmis, wrong_check_code_is_told)
{
    Cmis cmis;
    cmis.decode();
    cmis.page00.bytes[5] ^= 0x40;
    const auto module = optics::decode({.lower = cmis.lower.bytes, .page00 = cmis.page00.bytes});
    EXPECT_TRUE(module.doubts.check_failed);
    EXPECT_EQ(module.temperature.judgement, Judgement::none);
}

} // namespace
