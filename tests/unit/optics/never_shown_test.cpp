// SPDX-License-Identifier: GPL-2.0-or-later
// What memories in the field hold that must not be taken for what it looks like.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "base/json_writer.hpp"
#include "optics/render.hpp"
#include "tests/unit/optics/memories.hpp"

namespace {

using optics::Judgement;
using optics::Medium;
using optics::Reason;
using optics::State;
using optics::Value;
using testing::HasSubstr;
using testing::Not;

std::string json_of(const optics::Module &module)
{
    base::JsonWriter json;
    optics::render_json(module, json);
    return json.text();
}

// Neither form shows a number for what is not there.
void expect_no_infinity(const optics::Module &module)
{
    EXPECT_THAT(optics::render_text(module), Not(HasSubstr("inf")));
    EXPECT_THAT(json_of(module), Not(HasSubstr("inf")));
    EXPECT_THAT(optics::render_text(module), Not(HasSubstr("nan")));
}

std::vector<Value> values_of(const optics::Module &module)
{
    std::vector<Value> values{module.temperature, module.voltage};
    for (std::size_t i = 0; i < module.lane_count; ++i)
        values.insert(values.end(),
                      {module.lanes[i].bias, module.lanes[i].tx_power, module.lanes[i].rx_power});
    return values;
}

void expect_unsupported(const optics::Module &module, Reason reason)
{
    for (const Value &value : values_of(module)) {
        EXPECT_EQ(value.state, State::unsupported);
        EXPECT_EQ(value.reason, reason);
        EXPECT_EQ(value.judgement, Judgement::none);
    }
    expect_no_infinity(module);
}

TEST(NeverShown, numbers_of_an_sfp_without_diagnostics)
{
    Sfp sfp;
    sfp.a0.set(92, {0x00});
    expect_unsupported(sfp.decode(), Reason::no_diagnostics);
    EXPECT_FALSE(sfp.decode().doubts.any());
}

TEST(NeverShown, numbers_of_diagnostics_that_do_not_answer)
{
    Sfp sfp;
    sfp.finish();
    expect_unsupported(optics::decode({.a0 = sfp.a0.bytes}), Reason::not_read);
}

TEST(NeverShown, numbers_of_flat_copper)
{
    Qsfp qsfp; // with numbers where there can be none
    qsfp.lower.set(2, {0x04});
    qsfp.page00.set(147, {0xa0});
    expect_unsupported(qsfp.decode(), Reason::flat_copper);
}

TEST(NeverShown, numbers_of_a_qsfp_that_measures_nothing)
{
    Qsfp qsfp;
    qsfp.lower.word(22, {0}).word(26, {0}).word(34, {0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0});
    qsfp.page00.set(220, {0x08});
    expect_unsupported(qsfp.decode(), Reason::no_diagnostics);
}

TEST(NeverShown, a_live_qsfp_as_silent)
{
    for (const unsigned type : {0x00U, 0x08U})
        for (const unsigned revision : {0x00U, 0x07U, 0x08U}) {
            Qsfp qsfp;
            qsfp.page00.set(220, {type});
            qsfp.lower.set(1, {revision});
            for (const Value &value : values_of(qsfp.decode()))
                EXPECT_EQ(value.state, State::ok);
        }
}

TEST(NeverShown, transmitted_power_that_is_neither_claimed_nor_there)
{
    Qsfp qsfp;
    qsfp.page00.set(220, {0x38});
    qsfp.lower.word(50, {0, 0, 0, 0});
    EXPECT_EQ(qsfp.decode().lanes[0].tx_power.reason, Reason::not_measured);
    qsfp.lower.word(50, {0, 0, 7, 0}); // one lane proves it for all
    EXPECT_EQ(qsfp.decode().lanes[0].tx_power.state, State::no_light);
    EXPECT_EQ(qsfp.decode().lanes[2].tx_power.state, State::ok);
    qsfp.lower.word(50, {0, 0, 0, 0});
    qsfp.page00.set(220, {0x3c});
    EXPECT_EQ(qsfp.decode().lanes[0].tx_power.state, State::no_light);
}

TEST(NeverShown, zeros_of_a_temperature_before_modules_told_whether_they_have_one)
{
    Qsfp qsfp;
    qsfp.lower.set(1, {0x07}).word(22, {0});
    EXPECT_EQ(qsfp.decode().temperature.reason, Reason::not_measured);
    EXPECT_EQ(qsfp.decode().voltage.state, State::ok);
    qsfp.lower.set(1, {0x08}); // now bit 5 of byte 220 counts
    EXPECT_EQ(qsfp.decode().temperature.state, State::ok);
    EXPECT_EQ(qsfp.decode().temperature.value, 0);
}

TEST(NeverShown, zeros_of_a_voltage_before_modules_told_whether_they_have_one)
{
    Qsfp qsfp;
    qsfp.lower.set(1, {0x07}).word(26, {0});
    EXPECT_EQ(qsfp.decode().voltage.reason, Reason::not_measured);
    EXPECT_EQ(qsfp.decode().temperature.state, State::ok);
    qsfp.lower.set(1, {0x08}); // now bit 4 of byte 220 counts
    EXPECT_EQ(qsfp.decode().voltage.state, State::ok);
    EXPECT_EQ(qsfp.decode().voltage.value, 0);
}

TEST(NeverShown, values_behind_an_address_change)
{
    Sfp sfp;
    sfp.a0.set(92, {0x6c});
    expect_unsupported(sfp.decode(), Reason::address_change);
    EXPECT_THAT(optics::render_text(sfp.decode()), HasSubstr("address change"));
    EXPECT_THAT(json_of(sfp.decode()), HasSubstr(R"("address_change":true)"));
}

TEST(NeverShown, darkness_as_minus_infinity)
{
    Sfp sfp;
    sfp.a2.word(102, {0, 0});
    const auto module = sfp.decode();
    for (const Value &value : {module.lanes[0].tx_power, module.lanes[0].rx_power}) {
        EXPECT_EQ(value.state, State::no_light);
        EXPECT_EQ(value.judgement, Judgement::low_alarm);
    }
    expect_no_infinity(module);
    EXPECT_THAT(optics::render_text(module), HasSubstr("RX power          < -40 dBm"));
    EXPECT_THAT(json_of(module),
                HasSubstr(R"("rx_power":{"value":null,"unit":"dBm","state":"no-light","reason":"no-light")"));
    Qsfp qsfp;
    qsfp.lower.word(34, {0, 9012, 0, 4626});
    EXPECT_EQ(qsfp.decode().lanes[0].rx_power.state, State::no_light);
    EXPECT_EQ(qsfp.decode().lanes[1].rx_power.state, State::ok);
    expect_no_infinity(qsfp.decode());
}

TEST(NeverShown, thresholds_of_no_power_as_minus_infinity)
{
    Sfp sfp;
    sfp.a2.word(34, {0});
    expect_no_infinity(sfp.decode());
    EXPECT_THAT(json_of(sfp.decode()), HasSubstr(R"("low_alarm":null,"low_alarm_mw":0)"));
}

TEST(NeverShown, memories_that_were_never_written_as_sound)
{
    for (const std::uint8_t fill : {std::uint8_t{0x00}, std::uint8_t{0xff}}) {
        std::array<std::uint8_t, 256> bytes{};
        bytes.fill(fill);
        const auto flat = optics::decode({.a0 = bytes, .a2 = bytes});
        EXPECT_TRUE(flat.doubts.check_failed);
        EXPECT_FALSE(flat.trusted());
        const auto half = optics::Bytes(bytes).first(128);
        const auto paged = optics::decode({.lower = half, .page00 = half});
        EXPECT_TRUE(paged.doubts.check_failed);
        EXPECT_FALSE(paged.trusted());
    }
}

TEST(NeverShown, diagnostics_that_were_never_written_as_sound)
{
    Sfp sfp;
    sfp.finish();
    const std::array<std::uint8_t, 256> zeros{};
    EXPECT_FALSE(optics::decode({.a0 = sfp.a0.bytes, .a2 = zeros}).trusted());
    // Without thresholds and constants, but with values: nothing is wrong with the sum of zeros.
    Sfp bare = sfp;
    std::fill_n(bare.a2.bytes.begin(), 96, std::uint8_t{0});
    EXPECT_TRUE(bare.decode_as_is().trusted());
}

TEST(NeverShown, judgements_of_a_memory_with_a_wrong_check_code)
{
    for (const std::size_t byte : {std::size_t{63}, std::size_t{95}}) {
        Sfp sfp;
        sfp.finish().a0.bytes[byte] ^= 0xff;
        const auto module = sfp.decode_as_is();
        EXPECT_FALSE(module.trusted());
        EXPECT_EQ(module.temperature.state, State::ok);
        for (const Value &value : values_of(module))
            EXPECT_EQ(value.judgement, Judgement::none);
        EXPECT_THAT(json_of(module), HasSubstr(R"("trusted":false)"));
        EXPECT_THAT(optics::render_text(module), HasSubstr("doubtful\n"));
    }
    Sfp sfp;
    sfp.finish().a2.bytes[95] ^= 0xff;
    EXPECT_EQ(sfp.decode_as_is().temperature.judgement, Judgement::none);
    Qsfp qsfp;
    qsfp.finish().page00.bytes[95] ^= 0xff;
    EXPECT_EQ(qsfp.decode_as_is().temperature.judgement, Judgement::none);
}

TEST(NeverShown, a_qsfp_with_an_unwritten_identifier_as_an_sfp)
{
    Qsfp qsfp;
    qsfp.lower.set(0, {0x00});
    const auto module = qsfp.decode();
    EXPECT_EQ(module.family, optics::Family::sff8636);
    EXPECT_EQ(module.identity.identifier, 0x11);
    EXPECT_DOUBLE_EQ(module.lanes[0].rx_power.value, 0.4643);
    std::array<std::uint8_t, 256> both{};
    std::copy(qsfp.lower.bytes.begin(), qsfp.lower.bytes.end(), both.begin());
    std::copy(qsfp.page00.bytes.begin(), qsfp.page00.bytes.end(), both.begin() + 128);
    EXPECT_EQ(optics::decode({.a0 = both}).identity.identifier, 0x11);
}

TEST(NeverShown, an_sfp_with_an_unwritten_identifier_as_a_qsfp)
{
    Sfp sfp;
    sfp.a0.set(0, {0x00}).set(128, {0x11}); // vendor specific there
    EXPECT_EQ(sfp.decode().family, optics::Family::sff8472);
}

TEST(NeverShown, codes_of_an_sfp_cable_as_wavelength)
{
    for (const unsigned technology : {0x04U, 0x08U}) {
        Sfp sfp;
        sfp.a0.set(2, {0x21}).set(8, {technology}).set(18, {3}).set(60, {0x01, 0x00});
        const auto module = sfp.decode();
        EXPECT_EQ(module.identity.wavelength_nm, std::nullopt);
        EXPECT_EQ(module.identity.cable_compliance, 0x0100);
        EXPECT_EQ(module.identity.medium, technology == 4 ? Medium::passive_copper : Medium::active_copper);
        EXPECT_EQ(module.identity.lengths.cable.metres, 3);
        EXPECT_EQ(module.lanes[0].tx_power.reason, Reason::copper);
        EXPECT_EQ(module.lanes[0].rx_power.reason, Reason::copper);
        EXPECT_THAT(optics::render_text(module), Not(HasSubstr(" nm")));
    }
}

TEST(NeverShown, attenuations_of_a_qsfp_cable_as_wavelength)
{
    for (unsigned technology = 0xa0; technology <= 0xf0; technology += 0x10) {
        Qsfp qsfp;
        qsfp.page00.set(130, {0x23}).set(146, {3, technology}).set(186, {5, 7, 9, 13});
        const auto module = qsfp.decode();
        EXPECT_EQ(module.identity.wavelength_nm, std::nullopt);
        EXPECT_EQ(module.identity.wavelength_tolerance_nm, std::nullopt);
        EXPECT_EQ(module.identity.attenuation_db, (std::array<std::uint8_t, 4>{5, 7, 9, 13}));
        EXPECT_EQ(module.identity.lengths.cable.metres, 3);
        EXPECT_EQ(module.lanes[0].rx_power.reason, Reason::copper);
        EXPECT_EQ(module.temperature.state, State::ok); // it has a thermometer
    }
}

TEST(NeverShown, rate_byte_255_as_a_rate)
{
    Sfp sfp;
    sfp.a0.set(12, {255}).set(66, {103});
    EXPECT_EQ(sfp.decode().identity.rate_mbd, 25750U);
    sfp.a0.set(66, {0});
    EXPECT_EQ(sfp.decode().identity.rate_mbd, std::nullopt);
    Qsfp qsfp;
    qsfp.page00.set(222, {106});
    EXPECT_EQ(qsfp.decode().identity.rate_mbd, 26500U);
}

TEST(NeverShown, bytes_that_a_terminal_obeys)
{
    Sfp sfp;
    sfp.a0.text(20, 16, "A\x1b[2J\a\r\n\x9b\\").set(40, {0xff, 0xff, 'B', 0x00, 'C'});
    const auto module = sfp.decode();
    const std::string text = optics::render_text(module);
    EXPECT_THAT(text, HasSubstr(R"(A\x1b[2J\x07\x0d\x0a\x9b\x5c)"));
    EXPECT_THAT(text, HasSubstr(R"(\xff\xffB\x00C)"));
    EXPECT_THAT(json_of(module), HasSubstr(R"("vendor":"A\\x1b[2J\\x07\\x0d\\x0a\\x9b\\x5c")"));
    for (const std::string &shown : {text, json_of(module)})
        for (const char c : shown)
            EXPECT_TRUE((c >= ' ' && c <= '~') || c == '\n') << static_cast<int>(c);
}

TEST(NeverShown, a_quiet_module_that_raises_flags)
{
    Sfp sfp;
    sfp.a2.word(112, {0x8040})
        .word(116, {0x2080}); // alarms: temperature high, RX low; warnings: voltage high, RX high
    const auto module = sfp.decode();
    EXPECT_TRUE(module.temperature.flags.high_alarm);
    EXPECT_TRUE(module.lanes[0].rx_power.flags.low_alarm);
    EXPECT_TRUE(module.voltage.flags.high_warning);
    EXPECT_TRUE(module.lanes[0].rx_power.flags.high_warning);
    EXPECT_FALSE(module.lanes[0].bias.flags.high_alarm || module.lanes[0].tx_power.flags.low_warning);
    EXPECT_THAT(optics::render_text(module),
                HasSubstr("temperature       25.50 C         normal; flags: high-alarm"));
    EXPECT_THAT(json_of(module), HasSubstr(R"("flags":["high-warning","low-alarm"])"));
    sfp.a0.set(93, {0x70}); // it keeps none
    EXPECT_FALSE(sfp.decode().temperature.flags.known);
    EXPECT_FALSE(sfp.decode().temperature.flags.high_alarm);
}

TEST(NeverShown, numbers_of_a_module_that_is_still_starting)
{
    Sfp sfp;
    sfp.a2.set(110, {0x01});
    Qsfp qsfp;
    qsfp.lower.set(2, {0x01});
    for (const auto &module : {sfp.decode(), qsfp.decode()}) {
        for (const Value &value : values_of(module)) {
            EXPECT_EQ(value.state, State::failed);
            EXPECT_EQ(value.reason, Reason::data_not_ready);
        }
        EXPECT_TRUE(module.doubts.data_not_ready);
    }
}

TEST(NeverShown, cold_as_heat)
{
    Sfp sfp;
    sfp.a2.word(96, {-10 * 256 - 128});
    EXPECT_DOUBLE_EQ(sfp.decode().temperature.value, -10.5);
    EXPECT_THAT(optics::render_text(sfp.decode()), HasSubstr("-10.50 C"));
    Qsfp qsfp;
    qsfp.lower.word(22, {-1});
    EXPECT_DOUBLE_EQ(qsfp.decode().temperature.value, -1.0 / 256);
}

} // namespace
