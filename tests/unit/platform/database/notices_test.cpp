// SPDX-License-Identifier: GPL-2.0-or-later
// Changes by others, and change callbacks.
#include "tests/unit/platform/database/sandbox.hpp"

#include <sysrepo.h>
#include <sysrepo/values.h>

#include <mutex>

using namespace sandbox;

namespace {

struct Heard {
    std::string xpath;
    int event;
    int operation;
    std::string old_value, new_value;
    bool operator==(const Heard &) const = default;
};

std::mutex mutex;
std::vector<Heard> heard; // what the callbacks were told
int refusal = 0;

std::string value_of(const void *value)
{
    char *text = value ? sr_val_to_str(static_cast<const sr_val_t *>(value)) : nullptr;
    const std::string result = text ? text : "";
    std::free(text);
    return result;
}

int on_change(void *session, const char *, const char *xpath, int event, uint32_t, void *)
{
    const std::lock_guard lock(mutex);
    void *iterator = nullptr, *before = nullptr, *after = nullptr;
    int operation = -1;
    while (tq_db_get_change_next(session, &iterator, &operation, &before, &after) == 0)
        heard.push_back({xpath, event, operation, value_of(before), value_of(after)});
    sr_free_change_iter(static_cast<sr_change_iter_t *>(iterator));
    sr_free_val(static_cast<sr_val_t *>(before));
    sr_free_val(static_cast<sr_val_t *>(after));
    return refusal;
}

int on_get(void *, const char *, const char *, uint32_t, void **, void *)
{
    return 0;
}

constexpr const char *address = "/olt-alarm-log:alarm-log/remote-server-ipv4/ipv4-addr";
constexpr const char *port = "/olt-alarm-log:alarm-log/remote-server-ipv4/port";

class Notices : public DatabaseTest {
protected:
    void SetUp() override
    {
        DatabaseTest::SetUp();
        static const tq_db_entry entries[] = {{address, on_change, on_get}, {port, on_change, on_get}, {}};
        static const tq_db_module module = {"olt-alarm-log", entries};
        static const tq_db_module *const modules[] = {&module, nullptr};
        ASSERT_EQ(db_database_init(&db, modules), 0);
    }
    std::vector<Heard> taken()
    {
        const std::lock_guard lock(mutex);
        return std::exchange(heard, {});
    }
    bool hear(std::size_t count)
    {
        return wait_until([&] {
            const std::lock_guard lock(mutex);
            return heard.size() >= count;
        });
    }
};

} // namespace

TEST_F(Notices, a_callback_hears_of_its_own_setting_before_and_after_the_change)
{
    ASSERT_EQ(db_olt_alarm_log_set_remote_server_ipv4_ipv4_addr(&db, "10.0.0.1", 16, 1), 0);
    ASSERT_TRUE(hear(2));
    EXPECT_EQ(taken(),
              (std::vector<Heard>{{address, 1, 0, "", "10.0.0.1"}, {address, 2, 0, "", "10.0.0.1"}}));
    ASSERT_EQ(db_olt_alarm_log_set_remote_server_ipv4_ipv4_addr(&db, "10.0.0.2", 16, 1), 0);
    ASSERT_TRUE(hear(2));
    EXPECT_EQ(taken(), (std::vector<Heard>{{address, 1, 1, "10.0.0.1", "10.0.0.2"},
                                           {address, 2, 1, "10.0.0.1", "10.0.0.2"}}));
    ASSERT_EQ(db_olt_alarm_log_del_remote_server_ipv4_ipv4_addr(&db), 0);
    ASSERT_TRUE(hear(2));
    EXPECT_EQ(taken(),
              (std::vector<Heard>{{address, 1, 2, "10.0.0.2", ""}, {address, 2, 2, "10.0.0.2", ""}}));
}

TEST_F(Notices, a_callback_hears_of_changes_by_another_program)
{
    ASSERT_EQ(edit("<remote-server-ipv4><port>1514</port></remote-server-ipv4>"), 0);
    ASSERT_TRUE(hear(2));
    EXPECT_EQ(taken(), (std::vector<Heard>{{port, 1, 0, "", "1514"}, {port, 2, 0, "", "1514"}}));
}

TEST_F(Notices, a_callback_can_refuse_a_change)
{
    refusal = SR_ERR_VALIDATION_FAILED;
    EXPECT_NE(db_olt_alarm_log_set_remote_server_ipv4_ipv4_addr(&db, "10.0.0.1", 16, 1), 0);
    EXPECT_EQ(text(db_olt_alarm_log_get_remote_server_ipv4_ipv4_addr), "code -2");
    refusal = 0;
    EXPECT_EQ(db_olt_alarm_log_set_remote_server_ipv4_ipv4_addr(&db, "10.0.0.1", 16, 1), 0);
}

TEST_F(Notices, a_callback_with_nothing_to_add_does_not_hide_the_setting)
{
    ASSERT_EQ(db_olt_alarm_log_set_remote_server_ipv4_ipv4_addr(&db, "10.0.0.1", 16, 1), 0);
    const std::string file = folder() + "/operational.xml";
    ASSERT_EQ(
        sysrepocfg({"--export=" + file, "--datastore=operational", "--module=olt-alarm-log", "--format=xml"}),
        0);
    EXPECT_EQ(Program({"grep", "-q", "<ipv4-addr>10.0.0.1</ipv4-addr>", file}).wait(), 0);
}

TEST_F(Notices, a_change_by_another_program_reaches_the_getter)
{
    ASSERT_EQ(edit("<alarm><id>7</id><level>alert</level><action><trap>true</trap></action></alarm>"), 0);
    EXPECT_TRUE(wait_until([&] { return level(7) == "alert"; }));
    uint8_t trap = 0;
    int len = 1;
    EXPECT_EQ(db_olt_alarm_log_get_action_trap(7, &db, &trap, &len), 0);
    EXPECT_EQ(trap, 1);
}

TEST_F(Notices, an_alarm_that_another_program_removes_is_gone_whole)
{
    ASSERT_EQ(db_olt_alarm_log_set_alarm_level(7, &db, "alert", 16, 1), 0);
    ASSERT_EQ(db_olt_alarm_log_set_alarm_name(7, &db, "x", 32, 1), 0);
    ASSERT_EQ(edit("<alarm nc:operation=\"delete\"><id>7</id></alarm>"), 0);
    EXPECT_TRUE(wait_until([&] {
        return xml(db_olt_alarm_log_show_xml_alarm_id) ==
               "<alarm-log xmlns=\"urn:norvale:yang:olt-alarm-log\"/>\n";
    }));
}

TEST_F(Notices, a_value_set_right_after_a_change_by_another_program_wins)
{
    for (int round = 0; round < 20; ++round) {
        ASSERT_EQ(db_olt_alarm_log_set_alarm_level(7, &db, "info", 16, 1), 0);
        Program other = peer({"level", "7", "alert"});
        ASSERT_EQ(other.line(), "ready");
        ASSERT_EQ(other.line(), "0");
        // The same value as before the other's change: it must be written nevertheless.
        ASSERT_EQ(db_olt_alarm_log_set_alarm_level(7, &db, "info", 16, 1), 0);
        EXPECT_EQ(level(7), "info");
        EXPECT_EQ(other.wait(), 0);
        EXPECT_EQ(level(7), "info");
    }
}

TEST_F(Notices, two_processes_see_each_others_changes)
{
    Program listener = peer({"hear", "9", "major"});
    ASSERT_EQ(listener.line(), "ready");
    ASSERT_EQ(db_olt_alarm_log_set_alarm_level(9, &db, "major", 16, 1), 0);
    EXPECT_EQ(listener.line(), "heard");
    Program writer = peer({"level", "9", "notice"});
    ASSERT_EQ(writer.line(), "ready");
    EXPECT_EQ(writer.line(), "0");
    EXPECT_TRUE(wait_until([&] { return level(9) == "notice"; }));
}

TEST_F(Notices, a_notice_that_was_lost_is_made_up_for_by_the_next)
{
    Program listener = peer({"hear", "9", "major"});
    ASSERT_EQ(listener.line(), "ready");
    listener.signal(SIGSTOP);
    // The stopped process has not taken the first notice when the second change wants to give its own.
    ASSERT_EQ(db_olt_alarm_log_set_alarm_level(9, &db, "major", 16, 1), 0);
    // sysrepo's own limit for that is 15 seconds.
    EXPECT_LT(seconds_of([&] { db_olt_alarm_log_set_alarm_level(10, &db, "major", 16, 1); }), 20);
    listener.signal(SIGCONT);
    ASSERT_TRUE(wait_until([&] { return db_olt_alarm_log_set_alarm_level(11, &db, "major", 16, 1) == 0; }));
    EXPECT_EQ(listener.line(), "heard");
}
