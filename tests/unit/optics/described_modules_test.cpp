// SPDX-License-Identifier: GPL-2.0-or-later
// The modules that the simulator makes of descriptions say by the standards what their descriptions say.
#include <gtest/gtest.h>

#include "optics/decode.hpp"
#include "sim/modules/module_file.hpp"

namespace {

// Both halves of the 256 bytes at one address.
std::vector<std::uint8_t> bytes_at(const module_files::ModuleImage &image, std::uint8_t address)
{
    const auto found = image.devices.find(address);
    if (found == image.devices.end())
        return {};
    const module_files::ModuleDevice &device = found->second;
    std::vector<std::uint8_t> bytes(device.lower.begin(), device.lower.end());
    bytes.insert(bytes.end(), device.pages.at(0).begin(), device.pages.at(0).end());
    return bytes;
}

module_files::ModuleImage described(const std::string &name)
{
    return sim::read_module({std::string(MODULES) + "/" + name + ".json"}, false).image;
}

struct Path {
    const char *name;
    std::uint8_t a0;
    double temperature_c, vcc_v, bias_ma, tx_dbm, rx_dbm;
};

class DescribedPath : public testing::TestWithParam<Path> {};

TEST_P(DescribedPath, is_read_as_described)
{
    const Path &path = GetParam();
    const auto image = described(path.name);
    const auto a0 = bytes_at(image, path.a0);
    const auto a2 = bytes_at(image, static_cast<std::uint8_t>(path.a0 + 1));
    const auto module = optics::decode({.a0 = a0, .a2 = a2});
    EXPECT_TRUE(module.trusted());
    EXPECT_NEAR(module.temperature.value, path.temperature_c, 0.01);
    EXPECT_NEAR(module.voltage.value, path.vcc_v, 0.0002);
    EXPECT_NEAR(module.lanes[0].bias.value, path.bias_ma, 0.005);
    EXPECT_NEAR(optics::dbm(module.lanes[0].tx_power.value), path.tx_dbm, 0.01);
    EXPECT_NEAR(optics::dbm(module.lanes[0].rx_power.value), path.rx_dbm, 0.06);
    EXPECT_EQ(module.temperature.judgement, optics::Judgement::normal);
    EXPECT_EQ(module.lanes[0].tx_power.judgement, optics::Judgement::normal);
}

INSTANTIATE_TEST_SUITE_P(Optics, DescribedPath,
                         testing::Values(Path{"gpon-1490-external", 0x50, 41.25, 3.28, 16.2, 3.8, -21.0},
                                         Path{"xgpon-1577", 0x50, 46.0, 3.3, 72.4, 5.1, -19.4},
                                         Path{"combo-1490-1577", 0x50, 44.0, 3.32, 15.8, 4.6, -17.2},
                                         Path{"combo-1490-1577", 0x58, 47.5, 3.29, 81.2, 5.4, -20.3}));

TEST(DescribedModules, without_diagnostics_have_no_values)
{
    const auto image = described("sfp-1310-no-diagnostics");
    const auto a0 = bytes_at(image, 0x50);
    const auto module = optics::decode({.a0 = a0});
    EXPECT_EQ(module.temperature.reason, optics::Reason::no_diagnostics);
    EXPECT_FALSE(module.doubts.any());
}

TEST(DescribedModules, qsfp_is_sound)
{
    const auto image = described("qsfp28-lr4");
    const auto &pages = image.devices.at(0x50);
    const auto module =
        optics::decode({.lower = pages.lower, .page00 = pages.pages.at(0), .page03 = pages.pages.at(3)});
    EXPECT_EQ(module.family, optics::Family::sff8636);
    EXPECT_FALSE(module.doubts.any());
    for (std::size_t i = 0; i < 4; ++i)
        EXPECT_NE(module.lanes[i].tx_power.judgement, optics::Judgement::none);
}

} // namespace
