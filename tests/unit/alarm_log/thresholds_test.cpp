// SPDX-License-Identifier: GPL-2.0-or-later
// The threshold alarms against the platform's catalogue, and how optical thresholds read.
#include "diagd/alarm_log/thresholds/thresholds.hpp"

#include "tq_api.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <limits>
#include <set>
#include <string>

using namespace diagd;

constinit State diagm{};

TEST(ThresholdAlarms, are_the_catalogues)
{
    const auto check = [](const auto &alarms) {
        for (const ThresholdAlarm &alarm : alarms) {
            ASSERT_LT(alarm.id, TQ_ALARM_COUNT);
            EXPECT_STREQ(tq_alarm_log_info[alarm.id].name, alarm.name);
            EXPECT_EQ(get_alarm_id_by_name(alarm.name), alarm.id);
            EXPECT_EQ(alarm.direction == Direction::high, std::string_view{alarm.name}.ends_with("-high"));
        }
    };
    check(board_alarms);
    check(pon_alarms_with_threshold);
}

TEST(ThresholdAlarms, have_their_ids_and_units_in_order)
{
    const char *const board_units[] = {".C", ".C", "%", "%"};
    for (std::size_t i = 0; i < board_alarms.size(); ++i) {
        EXPECT_EQ(board_alarms[i].id, 102 + i);
        EXPECT_STREQ(board_alarms[i].unit, board_units[i]);
    }
    const char *const pon_units[] = {"dBm", "dBm", "mA", "mA", "V", "V", ".C", ".C"};
    for (std::size_t i = 0; i < pon_alarms_with_threshold.size(); ++i) {
        EXPECT_EQ(pon_alarms_with_threshold[i].id, 9 + i);
        EXPECT_STREQ(pon_alarms_with_threshold[i].unit, pon_units[i]);
    }
}

TEST(ThresholdAlarms, each_has_database_functions_of_its_own)
{
    std::set<StoredThresholds::Getter> getters;
    std::set<StoredThresholds::Deleter> deleters;
    for (const StoredThresholds &stored : stored_thresholds) {
        getters.insert({stored.get_alarm, stored.get_clear});
        deleters.insert({stored.delete_alarm, stored.delete_clear});
    }
    EXPECT_EQ(getters.size(), 8u);
    EXPECT_EQ(deleters.size(), 8u);
}

TEST(ThresholdAlarms, older_words_stand_in_the_same_order)
{
    EXPECT_EQ(index_of("tx_power_high", pon_optical_names), 0u);
    EXPECT_EQ(index_of("vcc_low", pon_optical_names), 5u);
    EXPECT_EQ(index_of("temp_low", pon_optical_names), 7u);
    EXPECT_EQ(index_of("pon-vcc-low", pon_alarm_names_with_threshold), 5u);
    EXPECT_EQ(index_of("mem-usage-high", board_alarm_names), 3u);
}

TEST(ThresholdText, has_two_decimals)
{
    EXPECT_STREQ(ThresholdText{3.1F}.c_str(), "3.10");
    EXPECT_STREQ(ThresholdText{-12.345F}.c_str(), "-12.35");
    EXPECT_STREQ(ThresholdText{0.0F}.c_str(), "0.00");
}

TEST(ThresholdText, is_cut_to_31_characters)
{
    EXPECT_EQ(std::string{ThresholdText{1e35F}.c_str()}.size(), 31u);
    EXPECT_STREQ(ThresholdText{std::numeric_limits<float>::infinity()}.c_str(), "inf");
}

TEST(WholeThreshold, is_cut_towards_zero)
{
    EXPECT_EQ(whole_threshold(70.9F), 70);
    EXPECT_EQ(whole_threshold(-70.9F), -70);
    EXPECT_EQ(whole_threshold(0.0F), 0);
}

TEST(WholeThreshold, beyond_all_numbers_is_the_nearest)
{
    using Limits = std::numeric_limits<float>;
    EXPECT_GT(whole_threshold(Limits::infinity()), std::int64_t{1} << 60);
    EXPECT_LT(whole_threshold(-Limits::max()), -(std::int64_t{1} << 60));
}

TEST(WholeThreshold, of_what_is_no_number_is_0)
{
    // Made at run time: compilers have a 0 of their own.
    EXPECT_EQ(whole_threshold(std::strtof("nan", nullptr)), 0);
}
