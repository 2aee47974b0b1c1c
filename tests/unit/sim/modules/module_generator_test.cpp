// SPDX-License-Identifier: GPL-2.0-or-later
// The generated memories, read back the way the SFF documents tell a host to.
#include "sim/modules/generator.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <numeric>
#include <sstream>

#include "sim/modules/module_file.hpp"

namespace {

using testing::EndsWith;
using testing::HasSubstr;

sim::ModuleImage described(const std::string &name)
{
    return sim::read_module({std::string(MODULES) + "/" + name + ".json"}, false).image;
}

// Byte `reg` of 256, with page `page` in the upper half.
struct Memory {
    const sim::ModuleDevice &device;
    std::uint8_t page = 0;

    [[nodiscard]] unsigned byte(unsigned reg) const
    {
        return reg < 128 ? device.lower.at(reg) : device.pages.at(page).at(reg - 128);
    }
    [[nodiscard]] unsigned word(unsigned reg) const { return byte(reg) << 8 | byte(reg + 1); }
    [[nodiscard]] int signed_word(unsigned reg) const { return static_cast<std::int16_t>(word(reg)); }
    [[nodiscard]] double fixed(unsigned reg) const { return word(reg) / 256.0; } // unsigned 8.8
    [[nodiscard]] float real(unsigned reg) const
    {
        const std::uint32_t bits = word(reg) << 16 | word(reg + 2);
        float value = 0;
        std::memcpy(&value, &bits, sizeof value);
        return value;
    }
    [[nodiscard]] unsigned sum(unsigned first, unsigned last) const
    {
        unsigned total = 0;
        for (unsigned reg = first; reg <= last; ++reg)
            total += byte(reg);
        return total & 0xff;
    }
    [[nodiscard]] std::string text(unsigned reg, unsigned size) const
    {
        std::string text;
        for (unsigned i = 0; i < size; ++i)
            text += static_cast<char>(byte(reg + i));
        return text;
    }
};

Memory at(const sim::ModuleImage &image, std::uint8_t address, std::uint8_t page = 0)
{
    return {image.devices.at(address), page};
}

double dbm(double microwatts)
{
    return 10 * std::log10(microwatts / 1000);
}

std::vector<std::string> shipped()
{
    std::vector<std::string> names;
    for (const auto &entry : std::filesystem::directory_iterator(MODULES))
        if (entry.path().extension() == ".json")
            names.push_back(entry.path().stem());
    return names;
}

class Shipped : public testing::TestWithParam<std::string> {};

TEST_P(Shipped, has_valid_check_codes)
{
    const sim::ModuleImage image = described(GetParam());
    for (const auto &[address, device] : image.devices) {
        const Memory memory{device};
        if (sim::is_qsfp_identifier(static_cast<std::uint8_t>(memory.byte(0))) && address == 0x50) {
            EXPECT_EQ(memory.byte(191), memory.sum(128, 190));
            EXPECT_EQ(memory.byte(223), memory.sum(192, 222));
        } else if (address == 0x50 || address == 0x58) {
            EXPECT_EQ(memory.byte(63), memory.sum(0, 62));
            EXPECT_EQ(memory.byte(95), memory.sum(64, 94));
        } else {
            EXPECT_EQ(memory.byte(95), memory.sum(0, 94));
        }
    }
}

TEST_P(Shipped, survives_its_text_form)
{
    const sim::ModuleImage image = described(GetParam());
    const sim::ModuleImage again = sim::image_from_text(sim::to_text(image));
    EXPECT_EQ(again.name, GetParam());
    ASSERT_EQ(again.devices.size(), image.devices.size());
    for (const auto &[address, device] : image.devices) {
        EXPECT_EQ(again.devices.at(address).lower, device.lower);
        EXPECT_EQ(again.devices.at(address).pages, device.pages);
        EXPECT_EQ(again.devices.at(address).paged, device.paged);
    }
}

INSTANTIATE_TEST_SUITE_P(Modules, Shipped, testing::ValuesIn(shipped()), [](const auto &test) {
    std::string name = test.param;
    std::replace(name.begin(), name.end(), '-', '_');
    return name;
});

TEST(Generator, sfp_identification_stands_where_sff_8472_says)
{
    const sim::ModuleImage image = described("gpon-1490");
    const Memory a0 = at(image, 0x50);
    EXPECT_EQ(a0.byte(0), 0x03U);
    EXPECT_EQ(a0.byte(2), 0x01U);
    EXPECT_EQ(a0.byte(11), 3U);
    EXPECT_EQ(a0.byte(12), 25U);
    EXPECT_EQ(a0.byte(14), 20U);
    EXPECT_EQ(a0.text(20, 16), "OPTOLUX         ");
    EXPECT_EQ(a0.byte(37) << 16 | a0.word(38), 0x02a1c4U);
    EXPECT_EQ(a0.text(40, 16), "OLX-GPON-C+     ");
    EXPECT_EQ(a0.text(56, 4), "A1  ");
    EXPECT_EQ(a0.word(60), 1490U);
    EXPECT_EQ(a0.text(68, 16), "OLX25G000141    ");
    EXPECT_EQ(a0.text(84, 8), "250614  ");
    EXPECT_EQ(a0.byte(92) & 0x30U, 0x20U) << "internally calibrated";
}

TEST(Generator, internally_calibrated_values_read_back)
{
    const sim::ModuleImage image = described("gpon-1490");
    const Memory a2 = at(image, 0x51);
    EXPECT_NEAR(a2.signed_word(96) / 256.0, 38.5, 1 / 256.0);
    EXPECT_NEAR(a2.word(98) * 100e-6, 3.31, 1e-4);
    EXPECT_NEAR(a2.word(100) * 2e-3, 14.6, 2e-3);
    EXPECT_NEAR(dbm(a2.word(102) * 0.1), 4.2, 0.001);
    EXPECT_NEAR(dbm(a2.word(104) * 0.1), -18.5, 0.02);
}

TEST(Generator, thresholds_and_flags_agree_with_the_values)
{
    const sim::ModuleImage image = described("gpon-1490");
    const Memory a2 = at(image, 0x51);
    EXPECT_EQ(a2.signed_word(0) / 256, 85);
    EXPECT_EQ(a2.signed_word(2) / 256, -10);
    EXPECT_EQ(a2.word(8), 36000U);
    EXPECT_EQ(a2.word(20) * 2, 80000U);
    EXPECT_NEAR(dbm(a2.word(24) * 0.1), 7.5, 0.001);
    EXPECT_EQ(a2.word(112), 0U);
    EXPECT_EQ(a2.word(116), 0U);
    std::string hot =
        R"({"name": "hot", "class": "sfp", "wavelength_nm": 1310, "diagnostics": {"temperature_c": 99,
        "vcc_v": 3.3, "bias_ma": 10, "tx_dbm": 2, "rx_dbm": -40,
        "thresholds": {"temperature_c": [85, -10, 80, -5]}}})";
    const sim::ModuleImage other = sim::generate_module(hot, "hot.json");
    EXPECT_EQ(at(other, 0x51).word(112), 0x8000U | 0x0040U) << "temperature high, receive power low";
    EXPECT_EQ(at(other, 0x51).word(116), 0x8000U | 0x0040U);
}

TEST(Generator, externally_calibrated_values_read_back_through_their_constants)
{
    const sim::ModuleImage image = described("gpon-1490-external");
    const Memory a0 = at(image, 0x50);
    const Memory a2 = at(image, 0x51);
    EXPECT_EQ(a0.byte(92) & 0x30U, 0x10U);
    EXPECT_NEAR((a2.fixed(84) * a2.signed_word(96) + a2.signed_word(86)) / 256, 41.25, 0.005);
    EXPECT_NEAR((a2.fixed(88) * a2.word(98) + a2.signed_word(90)) * 100e-6, 3.28, 2e-4);
    EXPECT_NEAR((a2.fixed(76) * a2.word(100) + a2.signed_word(78)) * 2e-3, 16.2, 4e-3);
    EXPECT_NEAR(dbm((a2.fixed(80) * a2.word(102) + a2.signed_word(82)) * 0.1), 3.8, 0.001);
    double rx = 0;
    for (unsigned reg = 56; reg <= 72; reg += 4)
        rx = rx * a2.word(104) + static_cast<double>(a2.real(reg));
    EXPECT_NEAR(dbm(rx * 0.1), -21.0, 0.03);
    EXPECT_NE(a2.word(84), 0x0100U) << "the constants are worth applying";
    EXPECT_EQ(a2.fixed(92), 0.875) << "slope of the receive power for readers that take bytes 92-95";
}

TEST(Generator, xgpon_module_is_described_in_double_units)
{
    const sim::ModuleImage image = described("xgpon-1577");
    const Memory a2 = at(image, 0x51);
    EXPECT_NEAR(a2.word(100) * 4e-3, 72.4, 4e-3);
    EXPECT_NEAR(dbm(a2.word(102) * 0.2), 5.1, 0.001);
    EXPECT_NEAR(dbm(a2.word(104) * 0.1), -19.4, 0.02);
}

TEST(Generator, combo_module_answers_with_two_paths)
{
    const sim::ModuleImage image = described("combo-1490-1577");
    EXPECT_EQ(image.devices.size(), 4U);
    EXPECT_EQ(at(image, 0x50).word(60), 1490U);
    EXPECT_EQ(at(image, 0x58).word(60), 1577U);
    EXPECT_EQ(at(image, 0x58).text(40, 16), "OLX-COMBO-D2    ");
    EXPECT_NEAR(at(image, 0x51).word(100) * 2e-3, 15.8, 2e-3);
    EXPECT_NEAR(at(image, 0x59).word(100) * 4e-3, 81.2, 4e-3);
    EXPECT_NEAR(dbm(at(image, 0x59).word(102) * 0.2), 5.4, 0.001);
}

// 20 mA and 3 dBm (1995.3 uW), thresholds of 40 mA and 6 dBm (3981.1 uW) among them.
std::string path(int wavelength_nm, const std::string &units)
{
    return R"("wavelength_nm": )" + std::to_string(wavelength_nm) + R"(, "diagnostics": {)" + units +
           R"("temperature_c": 30, "vcc_v": 3.3, "bias_ma": 20, "tx_dbm": 3, "rx_dbm": -20, "thresholds": {
              "bias_ma": [40, 2, 38, 4], "tx_dbm": [6, 0, 5, 1], "rx_dbm": [-10, -30, -11, -29]}})";
}

sim::ModuleImage two_paths(const std::string &first, const std::string &second)
{
    return sim::generate_module(R"({"name": "twin", "class": "sfp", )" + first + R"(, "second_path": {)" +
                                    second + "}}",
                                "twin.json");
}

TEST(Generator, units_are_those_of_the_description_whatever_wavelength_and_path)
{
    for (const int nm : {850, 1490, 1577, 1791}) {
        const auto image = two_paths(path(nm, R"("units": "double", )"), path(nm, ""));
        const Memory doubled = at(image, 0x51), standard = at(image, 0x59);
        EXPECT_EQ(standard.word(100), 10000U) << nm;
        EXPECT_EQ(doubled.word(100), 5000U) << nm;
        EXPECT_EQ(standard.word(102), 19953U) << nm;
        EXPECT_EQ(doubled.word(102), 9976U) << nm;
        EXPECT_EQ(standard.word(16), 20000U) << nm;
        EXPECT_EQ(doubled.word(16), 10000U) << nm;
        EXPECT_EQ(standard.word(24), 39811U) << nm;
        EXPECT_EQ(doubled.word(24), 19905U) << nm;
        EXPECT_EQ(doubled.word(104), standard.word(104)) << "receive power has one unit";
        EXPECT_EQ(doubled.word(32), standard.word(32));
    }
}

TEST(Generator, a_second_path_without_diagnostics_has_none_of_the_first_ones)
{
    const auto image = two_paths(path(1490, ""), R"("wavelength_nm": 1577)");
    EXPECT_TRUE(image.devices.contains(0x51));
    EXPECT_TRUE(image.devices.contains(0x58));
    EXPECT_FALSE(image.devices.contains(0x59));
    EXPECT_EQ(at(image, 0x58).byte(92), 0U);
}

TEST(Generator, unknown_units_are_refused)
{
    EXPECT_THROW(two_paths(path(1490, R"("units": "half", )"), path(1490, "")), std::exception);
}

TEST(Generator, rates_and_lengths_are_counted_in_the_units_of_their_bytes)
{
    const std::string fast = R"("bit_rate_mbd": 25900, "length_om3_m": 100})";
    const auto sfp = sim::generate_module(R"({"name": "x", "class": "sfp", )" + fast, "x.json");
    EXPECT_EQ(at(sfp, 0x50).byte(12), 255U) << "more than hundreds can say";
    EXPECT_EQ(at(sfp, 0x50).byte(66), 104U) << "in 250 MBd, rounded";
    EXPECT_EQ(at(sfp, 0x50).byte(19), 10U) << "in 10 m";
    const auto qsfp = sim::generate_module(R"({"name": "x", "class": "qsfp", )" + fast, "x.json");
    EXPECT_EQ(at(qsfp, 0x50).byte(140), 255U);
    EXPECT_EQ(at(qsfp, 0x50).byte(222), 104U);
    EXPECT_EQ(at(qsfp, 0x50).byte(143), 50U) << "in 2 m";
}

TEST(Generator, module_without_diagnostics_has_no_second_memory)
{
    const sim::ModuleImage image = described("sfp-1310-no-diagnostics");
    EXPECT_EQ(image.devices.size(), 1U);
    EXPECT_EQ(at(image, 0x50).byte(92), 0U);
}

TEST(Generator, temperature_below_zero_keeps_its_sign)
{
    const sim::ModuleImage image = sim::generate_module(
        R"({"name": "cold", "class": "sfp", "wavelength_nm": 1490, "diagnostics": {"temperature_c": -5, "vcc_v": 3.3,
            "bias_ma": 20, "tx_dbm": 3}})",
        "cold.json");
    EXPECT_EQ(at(image, 0x51).word(96), 0xfb00U);
    EXPECT_EQ(at(image, 0x51).word(104), 0U) << "no light";
}

TEST(Generator, qsfp_values_of_four_lanes_read_back)
{
    const sim::ModuleImage image = described("qsfp28-lr4");
    EXPECT_EQ(image.devices.size(), 1U);
    const Memory memory = at(image, 0x50);
    EXPECT_EQ(memory.byte(0), 0x11U);
    EXPECT_EQ(memory.byte(128), 0x11U);
    EXPECT_EQ(memory.byte(2) & 0x04U, 0U) << "memory is paged";
    EXPECT_NEAR(memory.signed_word(22) / 256.0, 36.5, 1 / 256.0);
    EXPECT_NEAR(memory.word(26) * 100e-6, 3.27, 1e-4);
    const double bias[] = {38.2, 39.6, 37.4, 40.8};
    const double tx[] = {1.4, 1.1, 1.6, 0.9};
    const double rx[] = {-1.2, -1.9, -2.4, -1.5};
    for (unsigned lane = 0; lane < 4; ++lane) {
        EXPECT_NEAR(dbm(memory.word(34 + 2 * lane) * 0.1), rx[lane], 0.001);
        EXPECT_NEAR(memory.word(42 + 2 * lane) * 2e-3, bias[lane], 2e-3);
        EXPECT_NEAR(dbm(memory.word(50 + 2 * lane) * 0.1), tx[lane], 0.001);
    }
    EXPECT_EQ(memory.text(148, 16), "OPTOLUX         ");
    EXPECT_EQ(memory.word(186), 1302U * 20);
    EXPECT_EQ(memory.byte(131), 0x80U);
    EXPECT_EQ(memory.byte(192), 3U);
    const Memory thresholds = at(image, 0x50, 3);
    EXPECT_EQ(thresholds.signed_word(128) / 256, 80);
    EXPECT_EQ(thresholds.word(144), 36300U);
    EXPECT_NEAR(dbm(thresholds.word(176) * 0.1), 6.5, 0.001);
    EXPECT_EQ(thresholds.word(184) * 2, 75000U);
    EXPECT_NEAR(dbm(thresholds.word(192) * 0.1), 6.5, 0.001);
}

TEST(Generator, mistakes_name_file_and_field)
{
    const auto complaint = [](const std::string &text) -> std::string {
        try {
            sim::generate_module(text, "m.json");
        } catch (const std::exception &error) {
            return error.what();
        }
        return "accepted";
    };
    EXPECT_EQ(complaint("{}"), "m.json: name: missing");
    EXPECT_EQ(complaint(R"({"name": "x", "class": "xfp"})"), "m.json: class: neither \"sfp\" nor \"qsfp\"");
    EXPECT_EQ(complaint(R"({"name": "x", "class": "sfp", "wavelenght_nm": 1310})"),
              "m.json: wavelenght_nm: unknown field");
    EXPECT_EQ(complaint(R"({"name": "x", "class": "sfp", "diagnostics": {"temperature_c": 300}})"),
              "m.json: diagnostics.temperature_c: not in -128..127.9");
    EXPECT_EQ(complaint(R"({"name": "x", "class": "sfp", "vendor": "A NAME OF TOO MANY LETTERS"})"),
              "m.json: vendor: longer than 16 characters");
    EXPECT_EQ(complaint(R"({"name": "x", "class": "qsfp", "revision": "ABC"})"),
              "m.json: revision: longer than 2 characters");
    EXPECT_THAT(complaint(R"({"name": "x", "class": "sfp", "diagnostics":
        {"temperature_c": 30, "vcc_v": 3.3, "bias_ma": 200, "tx_dbm": 3}})"),
                HasSubstr("m.json: bias_ma does not fit its field"));
    EXPECT_THAT(complaint(R"({"name": "x", "class": "qsfp", "diagnostics":
        {"temperature_c": 30, "vcc_v": 3.3, "lanes": [{"bias_ma": 20, "tx_dbm": 3}]}})"),
                EndsWith("diagnostics.lanes: not four"));
}

} // namespace
