// SPDX-License-Identifier: GPL-2.0-or-later
// Start-up sets nine values of 106 alarms, each alarm in one transaction.
#include "tests/unit/platform/database/sandbox.hpp"

#include <algorithm>

using namespace sandbox;

namespace {

class Defaults : public DatabaseTest {
protected:
    void set_all(unsigned variant)
    {
        for (uint16_t id = 0; id < TQ_ALARM_COUNT; ++id) {
            const std::string name = "alarm-" + std::to_string(id) + "-" + std::to_string(variant);
            const uint8_t action = variant % 2;
            ASSERT_EQ(db_olt_alarm_log_set_alarm_name(id, &db, name.c_str(), 32, 0), 0);
            ASSERT_EQ(db_olt_alarm_log_set_alarm_desc(id, &db, "description of the alarm", 32, 0), 0);
            ASSERT_EQ(db_olt_alarm_log_set_alarm_level(id, &db, "major", 16, 0), 0);
            ASSERT_EQ(db_olt_alarm_log_set_alarm_type(id, &db, "environment", 16, 0), 0);
            ASSERT_EQ(db_olt_alarm_log_set_alarm_class(id, &db, "alarm", 8, 0), 0);
            ASSERT_EQ(db_olt_alarm_log_set_action_print(id, &db, &action, 1, 0), 0);
            ASSERT_EQ(db_olt_alarm_log_set_action_record(id, &db, &action, 1, 0), 0);
            ASSERT_EQ(db_olt_alarm_log_set_action_trap(id, &db, &action, 1, 0), 0);
            ASSERT_EQ(db_olt_alarm_log_set_action_remote(id, &db, &action, 1, 1), 0);
        }
    }
};

} // namespace

TEST_F(Defaults, all_values_are_there_afterwards)
{
    ASSERT_NO_FATAL_FAILURE(set_all(1));
    const std::string all = xml(db_olt_alarm_log_show_xml_alarm_id);
    EXPECT_EQ(std::count(all.begin(), all.end(), '\n'), 2 + 106 * (2 + 6 + 2 + 4));
    for (uint16_t id = 0; id < TQ_ALARM_COUNT; ++id)
        EXPECT_EQ(level(id), "major");
}
