// SPDX-License-Identifier: GPL-2.0-or-later
#include "shell/port_modules.hpp"

#include <gtest/gtest.h>

using diagsh::parse_port_modules;

TEST(PortModules, kind_is_the_one_that_has_values)
{
    const auto modules = parse_port_modules(
        R"({"PON 0/1": [{"temperature": "38.5", "voltage": "3.3", "xgTemperature": "", "xgVoltage": ""}],
            "PON 0/2": [{"temperature": "", "voltage": "", "xgTemperature": "46.0", "xgVoltage": "3.3"}],
            "PON 0/3": [{"temperature": "44", "voltage": "3.3", "xgTemperature": "47", "xgVoltage": "3.3"}],
            "GE 0/1": [{"temperature": "33", "voltage": "3.3"}]})");
    ASSERT_EQ(modules.size(), 3U);
    EXPECT_EQ(modules[0].port, "0/1");
    EXPECT_TRUE(modules[0].gpon && !modules[0].xgpon);
    EXPECT_TRUE(!modules[1].gpon && modules[1].xgpon);
    EXPECT_TRUE(modules[2].gpon && modules[2].xgpon);
}

TEST(PortModules, empty_cage_and_module_without_diagnostics_are_told_apart)
{
    const auto modules = parse_port_modules(
        R"({"PON 0/1": [{"temperature": "", "voltage": "", "vendorName": "", "wavelength": ""}],
            "PON 0/2": [{"temperature": "", "voltage": "", "vendorName": "OPTOLUX ", "wavelength": 1310}]})");
    ASSERT_EQ(modules.size(), 2U);
    EXPECT_FALSE(modules[0].plugged);
    EXPECT_TRUE(modules[1].plugged && !modules[1].gpon && !modules[1].xgpon);
}

TEST(PortModules, what_is_no_answer_has_no_ports)
{
    EXPECT_TRUE(parse_port_modules("% Unknown command").empty());
    EXPECT_TRUE(parse_port_modules(R"({"PON 0/1": 5})").empty());
    EXPECT_TRUE(parse_port_modules("").empty());
}
