// SPDX-License-Identifier: GPL-2.0-or-later
// What the daemon registers with the configuration database, and its callbacks.
#include "diagd/alarm_log/servers/remote_server.hpp"
#include "diagd/core/state.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

using testing::ElementsAre;

void alarm_log_database_init(void);
void alarm_log_database_free(void);

namespace {

std::vector<std::string> calls;
tq_db_vty_cb connect_hook;
tq_db_vty_cb disconnect_hook;
const tq_db_module *const *registered;
int connect_result;
int debug_flag;
int debug_function;

struct vty *const session_vty = reinterpret_cast<struct vty *>(&debug_flag);

// Changes to hand out, by operation; after the last the iterator is at its end.
std::vector<int> operations;
std::size_t next_operation;
int iterator_object;
int values_alive;
int iterators_freed;

} // namespace

extern "C" {
void tq_db_cb_init_func(tq_db_vty_cb cb, tq_database_t *db)
{
    EXPECT_EQ(db, &g_diagd_db);
    connect_hook = cb;
    calls.emplace_back("tq_db_cb_init_func");
}
void tq_db_cb_free_func(tq_db_vty_cb cb, tq_database_t *db)
{
    EXPECT_EQ(db, &g_diagd_db);
    disconnect_hook = cb;
    calls.emplace_back("tq_db_cb_free_func");
}
int db_database_init(tq_database_t *db, const struct tq_db_module *const modules[])
{
    EXPECT_EQ(db, &g_diagd_db);
    registered = modules;
    calls.emplace_back("db_database_init");
    return -1;
}
void *db_debug_flag_return(void)
{
    return &debug_flag;
}
void db_debug_flag_reg(void *flag)
{
    EXPECT_EQ(flag, &debug_flag);
    calls.emplace_back("db_debug_flag_reg");
}
void *sysrepo_debug_func_return(void)
{
    return &debug_function;
}
void sysrepo_debug_fun_reg(void *function)
{
    EXPECT_EQ(function, &debug_function);
    calls.emplace_back("sysrepo_debug_fun_reg");
}
int db_connect_init_with_vty(struct vty *vty, tq_database_t *db)
{
    EXPECT_EQ(vty, session_vty);
    EXPECT_EQ(db, &g_diagd_db);
    return connect_result;
}
int db_disconnect_free_with_vty(struct vty *vty, tq_database_t *db)
{
    EXPECT_EQ(vty, session_vty);
    EXPECT_EQ(db, &g_diagd_db);
    calls.emplace_back("db_disconnect_free_with_vty");
    return 4;
}
void database_disconnect(tq_database_t *db)
{
    EXPECT_EQ(db, &g_diagd_db);
    calls.emplace_back("database_disconnect");
}
int tq_db_get_change_next(void *, void **iter, int *op, void **old_value, void **new_value)
{
    *iter = &iterator_object;
    if (next_operation == operations.size())
        return 1;
    *op = operations[next_operation++];
    *old_value = new int;
    *new_value = new int;
    values_alive += 2;
    return 0;
}
void sr_free_val(void *value)
{
    if (value == nullptr)
        return;
    delete static_cast<int *>(value);
    --values_alive;
}
void sr_free_change_iter(void *iter)
{
    EXPECT_EQ(iter, &iterator_object);
    ++iterators_freed;
}
}

class AlarmLogDatabase : public testing::Test {
protected:
    void SetUp() override
    {
        calls.clear();
        connect_result = 0;
        next_operation = 0;
        values_alive = iterators_freed = 0;
        alarm_log_database_init();
    }
};

TEST_F(AlarmLogDatabase, registers_hooks_subscriptions_and_debug_in_order_whatever_fails)
{
    EXPECT_THAT(calls, ElementsAre("tq_db_cb_init_func", "tq_db_cb_free_func", "db_database_init",
                                   "db_debug_flag_reg", "sysrepo_debug_fun_reg"));
}

TEST_F(AlarmLogDatabase, subscribes_to_address_and_port_of_the_ipv4_server)
{
    ASSERT_NE(registered[0], nullptr);
    EXPECT_EQ(registered[1], nullptr);
    EXPECT_STREQ(registered[0]->name, "olt-alarm-log");
    const tq_db_entry *const entries = registered[0]->entries;
    EXPECT_STREQ(entries[0].xpath, "/olt-alarm-log:alarm-log/remote-server-ipv4/ipv4-addr");
    EXPECT_EQ(entries[0].change, alarm_log_remote_server_ip_addr_change_cb);
    EXPECT_EQ(entries[0].get, alarm_log_remote_server_ip_addr_get_cb);
    EXPECT_STREQ(entries[1].xpath, "/olt-alarm-log:alarm-log/remote-server-ipv4/port");
    EXPECT_EQ(entries[1].change, alarm_log_remote_server_port_change_cb);
    EXPECT_EQ(entries[1].get, alarm_log_remote_server_port_get_cb);
    EXPECT_EQ(entries[2].xpath, nullptr);
    EXPECT_EQ(entries[2].change, nullptr);
    EXPECT_EQ(entries[2].get, nullptr);
}

TEST_F(AlarmLogDatabase, a_session_without_connection_is_told_on_standard_output)
{
    connect_result = -4;
    testing::internal::CaptureStdout();
    const int result = connect_hook(session_vty, &g_diagd_db);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "DIAG Msg: vty connect to database failed!\n");
    EXPECT_EQ(result, 42);
}

TEST_F(AlarmLogDatabase, a_session_with_connection_is_silent)
{
    testing::internal::CaptureStdout();
    EXPECT_EQ(connect_hook(session_vty, &g_diagd_db), 0);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
}

TEST_F(AlarmLogDatabase, a_session_that_ends_gives_its_connection_back)
{
    EXPECT_EQ(disconnect_hook(session_vty, &g_diagd_db), 4);
    EXPECT_EQ(calls.back(), "db_disconnect_free_with_vty");
}

TEST_F(AlarmLogDatabase, closing_disconnects)
{
    alarm_log_database_free();
    EXPECT_EQ(calls.back(), "database_disconnect");
}

TEST_F(AlarmLogDatabase, a_change_is_drained_freed_and_accepted)
{
    operations = {0, 1, 1};
    EXPECT_EQ(alarm_log_remote_server_ip_addr_change_cb(nullptr, "", "", 1, 0, nullptr), 0);
    EXPECT_EQ(next_operation, 3u);
    EXPECT_EQ(values_alive, 0);
    EXPECT_EQ(iterators_freed, 1);
}

TEST_F(AlarmLogDatabase, draining_stops_at_a_deletion)
{
    operations = {1, 2, 1};
    EXPECT_EQ(alarm_log_remote_server_port_change_cb(nullptr, "", "", 1, 0, nullptr), 0);
    EXPECT_EQ(next_operation, 2u);
    EXPECT_EQ(values_alive, 0);
    EXPECT_EQ(iterators_freed, 1);
}

TEST_F(AlarmLogDatabase, other_events_are_accepted_untouched)
{
    operations = {1};
    for (const int event : {0, 2, 3, 4}) {
        EXPECT_EQ(alarm_log_remote_server_ip_addr_change_cb(nullptr, "", "", event, 0, nullptr), 0);
        EXPECT_EQ(alarm_log_remote_server_port_change_cb(nullptr, "", "", event, 0, nullptr), 0);
    }
    EXPECT_EQ(next_operation, 0u);
    EXPECT_EQ(iterators_freed, 0);
}

TEST_F(AlarmLogDatabase, get_callbacks_provide_nothing)
{
    void *parent = nullptr;
    EXPECT_EQ(alarm_log_remote_server_ip_addr_get_cb(nullptr, "", "", 0, &parent, nullptr), 0);
    EXPECT_EQ(alarm_log_remote_server_port_get_cb(nullptr, "", "", 0, &parent, nullptr), 0);
    EXPECT_EQ(parent, nullptr);
}
