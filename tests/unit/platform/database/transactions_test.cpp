// SPDX-License-Identifier: GPL-2.0-or-later
// Pending changes, what is applied together, the apply lock.
#include "tests/unit/platform/database/sandbox.hpp"

#include <sysrepo.h>

#include <atomic>

using namespace sandbox;

namespace {
class Transactions : public DatabaseTest {
protected:
    int set_print(uint16_t id, uint8_t value, int apply)
    {
        return db_olt_alarm_log_set_action_print(id, &db, &value, 1, apply);
    }
    int print_of(uint16_t id)
    {
        uint8_t value = 0;
        int len = 1;
        const int code = db_olt_alarm_log_get_action_print(id, &db, &value, &len);
        return code == 0 ? value : code;
    }
};
} // namespace

TEST_F(Transactions, a_pending_value_is_not_seen_until_it_is_applied)
{
    ASSERT_EQ(set_print(3, 0, 1), 0);
    ASSERT_EQ(set_print(3, 1, 0), 0);
    EXPECT_EQ(print_of(3), 0);
    ASSERT_EQ(db_apply_changes(db.conn), 0);
    EXPECT_EQ(print_of(3), 1);
}

TEST_F(Transactions, discarded_changes_are_gone)
{
    ASSERT_EQ(set_print(3, 0, 1), 0);
    ASSERT_EQ(set_print(3, 1, 0), 0);
    ASSERT_EQ(db_discard_changes(db.conn), 0);
    ASSERT_EQ(db_apply_changes(db.conn), 0);
    EXPECT_EQ(print_of(3), 0);
}

TEST_F(Transactions, the_last_of_several_pending_values_counts)
{
    for (const uint8_t value : {uint8_t{0}, uint8_t{1}, uint8_t{0}, uint8_t{1}})
        ASSERT_EQ(set_print(3, value, 0), 0);
    ASSERT_EQ(db_olt_alarm_log_del_temp_high_alarm_threshold(&db), 0);
    ASSERT_EQ(db_olt_alarm_log_set_temp_high_alarm_threshold(&db, "70", 32, 0), 0);
    ASSERT_EQ(db_apply_changes(db.conn), 0);
    EXPECT_EQ(print_of(3), 1);
    EXPECT_EQ(text(db_olt_alarm_log_get_temp_high_alarm_threshold), "70");
}

TEST_F(Transactions, applying_a_value_applies_what_is_pending_for_the_same_alarm_only)
{
    ASSERT_EQ(set_print(3, 1, 0), 0);
    ASSERT_EQ(set_print(4, 1, 0), 0);
    ASSERT_EQ(db_olt_alarm_log_set_alarm_level(3, &db, "major", 16, 1), 0);
    EXPECT_EQ(print_of(3), 1);
    EXPECT_EQ(print_of(4), TQ_ERR_NOT_FOUND);
    ASSERT_EQ(db_apply_changes(db.conn), 0);
    EXPECT_EQ(print_of(4), 1);
}

TEST_F(Transactions, a_refused_value_does_not_spoil_the_others)
{
    ASSERT_EQ(set_print(3, 1, 0), 0);
    EXPECT_EQ(db_olt_alarm_log_set_alarm_level(3, &db, "loud", 16, 0), TQ_ERR_INVALID);
    ASSERT_EQ(db_apply_changes(db.conn), 0);
    EXPECT_EQ(print_of(3), 1);
}

TEST_F(Transactions, nothing_pending_is_no_failure)
{
    EXPECT_EQ(db_apply_changes(db.conn), 0);
    EXPECT_EQ(db_discard_changes(db.conn), 0);
    EXPECT_EQ(db_apply_changes(nullptr), TQ_ERR_NO_DB);
}

TEST_F(Transactions, changes_are_made_inside_the_own_lock)
{
    ASSERT_EQ(db_apply_lock(&db), 0);
    for (uint16_t id = 0; id < 102; ++id)
        ASSERT_EQ(set_print(id, 1, 0), 0);
    ASSERT_EQ(db_apply_changes(db.conn), 0);
    ASSERT_EQ(db_apply_unlock(&db), 0);
    for (uint16_t id = 0; id < 102; ++id)
        ASSERT_EQ(print_of(id), 1);
}

TEST_F(Transactions, a_bulk_change_is_one_transaction)
{
    for (uint16_t id = 0; id < 102; ++id)
        ASSERT_EQ(set_print(id, 0, 0), 0);
    ASSERT_EQ(db_apply_changes(db.conn), 0);
    // Another connection hears of every transaction that was made.
    static std::atomic<int> transactions;
    transactions = 0;
    const auto count = [](sr_session_ctx_t *, const char *, const char *, sr_event_t event, uint32_t,
                          void *) {
        transactions += event == SR_EV_DONE;
        return static_cast<int>(SR_ERR_OK);
    };
    sr_conn_ctx_t *connection = nullptr;
    sr_session_ctx_t *session = nullptr;
    sr_subscription_ctx_t *subscription = nullptr;
    ASSERT_EQ(sr_connect(SR_CONN_DEFAULT, &connection), 0);
    ASSERT_EQ(sr_session_start(connection, SR_DS_RUNNING, &session), 0);
    ASSERT_EQ(sr_module_change_subscribe(session, "olt-alarm-log", nullptr, count, nullptr, 0,
                                         SR_SUBSCR_DONE_ONLY | SR_SUBSCR_PASSIVE, &subscription),
              0);
    ASSERT_EQ(db_apply_lock(&db), 0);
    for (uint16_t id = 0; id < 102; ++id)
        ASSERT_EQ(set_print(id, 1, 0), 0);
    ASSERT_EQ(db_apply_changes(db.conn), 0);
    ASSERT_EQ(db_apply_unlock(&db), 0);
    // One more, so that all before it have been heard.
    ASSERT_EQ(set_print(3, 0, 1), 0);
    EXPECT_TRUE(wait_until([] { return transactions >= 2; }));
    EXPECT_EQ(transactions, 2);
    sr_unsubscribe(subscription);
    sr_disconnect(connection);
}

TEST_F(Transactions, unlocking_what_is_not_locked_fails)
{
    EXPECT_NE(db_apply_unlock(&db), 0);
}

TEST_F(Transactions, a_lock_of_somebody_else_is_waited_for_a_bounded_time)
{
    Program other = peer({"hold"});
    ASSERT_EQ(other.line(), "ready");
    ASSERT_EQ(other.line(), "0");
    int code = 0;
    EXPECT_LT(seconds_of([&] { code = db_apply_lock(&db); }), 2);
    EXPECT_EQ(code, TQ_ERR_LOCKED);
    EXPECT_EQ(set_print(3, 1, 1), 0) << "a failed lock is no reason not to change";
    other.signal(SIGKILL);
    other.wait();
    EXPECT_EQ(db_apply_lock(&db), 0) << "the lock of a dead process stays";
    EXPECT_EQ(db_apply_unlock(&db), 0);
}

TEST_F(Transactions, a_lock_on_the_datastore_refuses_changes_in_bounded_time)
{
    sr_conn_ctx_t *connection = nullptr;
    sr_session_ctx_t *session = nullptr;
    ASSERT_EQ(sr_connect(SR_CONN_DEFAULT, &connection), 0);
    ASSERT_EQ(sr_session_start(connection, SR_DS_RUNNING, &session), 0);
    ASSERT_EQ(sr_lock(session, "olt-alarm-log"), 0);
    int code = 0;
    EXPECT_EQ(db_apply_lock(&db), TQ_ERR_LOCKED);
    EXPECT_LT(seconds_of([&] { code = set_print(3, 1, 1); }), 5);
    EXPECT_EQ(code, TQ_ERR_LOCKED);
    EXPECT_EQ(print_of(3), TQ_ERR_NOT_FOUND) << "a refused change shows";
    ASSERT_EQ(sr_unlock(session, "olt-alarm-log"), 0);
    sr_disconnect(connection);
    EXPECT_EQ(db_apply_lock(&db), 0);
    EXPECT_EQ(set_print(3, 1, 1), 0);
    EXPECT_EQ(print_of(3), 1);
    EXPECT_EQ(db_apply_unlock(&db), 0);
}

TEST_F(Transactions, a_lock_that_was_not_had_keeps_nobody_else_out)
{
    sr_conn_ctx_t *connection = nullptr;
    sr_session_ctx_t *session = nullptr;
    ASSERT_EQ(sr_connect(SR_CONN_DEFAULT, &connection), 0);
    ASSERT_EQ(sr_session_start(connection, SR_DS_RUNNING, &session), 0);
    ASSERT_EQ(sr_lock(session, "olt-alarm-log"), 0);
    EXPECT_EQ(db_apply_lock(&db), TQ_ERR_LOCKED);
    ASSERT_EQ(sr_unlock(session, "olt-alarm-log"), 0);
    sr_disconnect(connection);
    Program other = peer({"hold"});
    ASSERT_EQ(other.line(), "ready");
    EXPECT_EQ(other.line(), "0");
}

TEST_F(Transactions, a_removed_value_does_not_come_back_with_what_was_pending)
{
    const std::uint16_t port = 1514;
    ASSERT_EQ(db_olt_alarm_log_set_remote_server_ipv4_port(&db, &port, 2, 1), 0);
    const std::uint16_t other = 1515;
    ASSERT_EQ(db_olt_alarm_log_set_remote_server_ipv4_port(&db, &other, 2, 0), 0);
    ASSERT_EQ(db_olt_alarm_log_del_remote_server_ipv4_port(&db), 0);
    ASSERT_EQ(db_apply_changes(db.conn), 0);
    std::uint16_t read = 0;
    int len = sizeof read;
    EXPECT_EQ(db_olt_alarm_log_get_remote_server_ipv4_port(&db, &read, &len), TQ_ERR_NOT_FOUND);
}

TEST_F(Transactions, what_is_pending_ends_with_the_connection)
{
    ASSERT_EQ(set_print(3, 0, 1), 0);
    ASSERT_EQ(set_print(3, 1, 0), 0);
    database_disconnect(&db);
    ASSERT_EQ(database_init(&db), 0);
    ASSERT_EQ(db_apply_changes(db.conn), 0);
    EXPECT_EQ(print_of(3), 0);
}

TEST_F(Transactions, every_session_of_an_operator_is_one_of_the_database)
{
    auto *const first = reinterpret_cast<struct vty *>(&db);
    auto *const second = reinterpret_cast<struct vty *>(this);
    EXPECT_EQ(db_connect_init_with_vty(first, &db), 0);
    EXPECT_EQ(db_connect_init_with_vty(second, &db), 0);
    EXPECT_EQ(db_disconnect_free_with_vty(first, &db), 0);
    EXPECT_EQ(db_disconnect_free_with_vty(first, &db), TQ_ERR_NOT_FOUND);
    EXPECT_EQ(db_connect_init_with_vty(first, nullptr), TQ_ERR_NO_DB);
}

TEST_F(Transactions, a_closed_database_says_so_and_can_be_opened_again)
{
    ASSERT_EQ(set_print(3, 1, 1), 0);
    database_disconnect(&db);
    EXPECT_EQ(print_of(3), TQ_ERR_NO_DB);
    EXPECT_EQ(set_print(3, 0, 1), TQ_ERR_NO_DB);
    EXPECT_EQ(db_apply_lock(&db), TQ_ERR_NO_DB);
    database_disconnect(&db);
    ASSERT_EQ(database_init(&db), 0);
    EXPECT_EQ(print_of(3), 1);
}
