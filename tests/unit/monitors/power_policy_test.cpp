// SPDX-License-Identifier: GPL-2.0-or-later
// Supplies and over-temperature flag: reading the status byte, and what is reported of a change.
#include "diagd/monitors/power/power_policy.hpp"

#include <gtest/gtest.h>

#include <string>
#include <vector>

using diagd::PowerStates;

namespace {

std::vector<std::string> report(std::uint8_t status, PowerStates &last_seen)
{
    const auto now = diagd::read_power_status(status);
    if (!now)
        return {"no status"};
    const diagd::PowerReport found = diagd::report_power(last_seen, *now);
    last_seen = *now;
    std::vector<std::string> texts;
    for (const char *text : {found.supply1, found.supply2, found.temperature})
        if (text != nullptr)
            texts.emplace_back(text);
    return texts;
}

using Texts = std::vector<std::string>;
const std::string hot = "Device temperature is too high,";

} // namespace

TEST(PowerPolicy, the_flag_is_kept_as_0_or_2)
{
    for (unsigned status = 1; status < 256; ++status) {
        const auto states = diagd::read_power_status(static_cast<std::uint8_t>(status));
        ASSERT_TRUE(states);
        EXPECT_EQ(states->supply1, (status & 1) != 0 ? 1 : 0);
        EXPECT_EQ(states->supply2, (status & 2) != 0 ? 1 : 0);
        EXPECT_EQ(states->too_hot, (status & 4) != 0 ? 2 : 0);
    }
}

TEST(PowerPolicy, a_status_without_a_bit_is_none)
{
    PowerStates last_seen{.supply1 = 1, .supply2 = 1, .too_hot = 2};
    EXPECT_EQ(report(0, last_seen), Texts{"no status"});
    EXPECT_EQ(last_seen.supply1 + last_seen.supply2 + last_seen.too_hot, 4);
}

TEST(PowerPolicy, the_first_look_reports_what_is_up)
{
    for (auto [status, expected] : std::vector<std::pair<int, Texts>>{
             {0x01, {"Power1 Up"}},
             {0x02, {"Power2 Up"}},
             {0x03, {"Power1 Up", "Power2 Up"}},
             {0x04, {hot}},
             {0x07, {"Power1 Up", "Power2 Up", hot}},
             {0xF8, {}},
         }) {
        PowerStates last_seen;
        EXPECT_EQ(report(static_cast<std::uint8_t>(status), last_seen), expected) << status;
        EXPECT_EQ(report(static_cast<std::uint8_t>(status), last_seen), Texts{}) << "nothing while unchanged";
    }
}

TEST(PowerPolicy, every_change_is_reported_and_the_flag_alike_in_both_directions)
{
    PowerStates last_seen{.supply1 = 1, .supply2 = 1};
    EXPECT_EQ(report(0x02, last_seen), Texts{"Power1 Down"});
    EXPECT_EQ(report(0x01, last_seen), (Texts{"Power1 Up", "Power2 Down"}));
    EXPECT_EQ(report(0x05, last_seen), Texts{hot});
    EXPECT_EQ(report(0x01, last_seen), Texts{hot});
}
