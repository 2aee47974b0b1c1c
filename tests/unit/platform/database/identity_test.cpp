// SPDX-License-Identifier: GPL-2.0-or-later
// The database is opened by root, who then becomes user daemon for good or for most of the time.
#include "tests/unit/platform/database/sandbox.hpp"

#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>

using namespace sandbox;

namespace {

class Identity : public DatabaseTest {
protected:
    // As a daemon without capabilities does: real ids stay root's.
    void become_daemon()
    {
        ASSERT_EQ(setregid(static_cast<gid_t>(-1), daemon_gid), 0);
        ASSERT_EQ(setreuid(static_cast<uid_t>(-1), daemon_uid), 0);
        ASSERT_EQ(geteuid(), daemon_uid);
    }
    void TearDown() override
    {
        DatabaseTest::TearDown();
        EXPECT_EQ(seteuid(0), 0);
        EXPECT_EQ(setegid(0), 0);
    }
};

} // namespace

TEST_F(Identity, opening_leaves_root_as_it_was)
{
    EXPECT_EQ(geteuid(), 0U);
    EXPECT_EQ(getegid(), 0U);
}

TEST_F(Identity, files_belong_to_the_owner_of_the_repository)
{
    std::size_t pipes = 0;
    for (const auto &file : std::filesystem::directory_iterator(repository())) {
        struct stat status {};
        ASSERT_EQ(stat(file.path().c_str(), &status), 0);
        EXPECT_EQ(status.st_uid, daemon_uid) << file.path();
        pipes += S_ISFIFO(status.st_mode);
    }
    EXPECT_EQ(pipes, 1U);
}

TEST_F(Identity, user_daemon_changes_locks_and_hears_what_root_opened)
{
    ASSERT_NO_FATAL_FAILURE(become_daemon());
    EXPECT_EQ(db_apply_lock(&db), 0);
    EXPECT_EQ(db_olt_alarm_log_set_alarm_level(3, &db, "alert", 16, 0), 0);
    EXPECT_EQ(db_apply_changes(db.conn), 0);
    EXPECT_EQ(db_apply_unlock(&db), 0);
    EXPECT_EQ(level(3), "alert");
    EXPECT_EQ(db_connect_init_with_vty(nullptr, &db), 0);
    EXPECT_EQ(db_disconnect_free_with_vty(nullptr, &db), 0);
    // Another program of user daemon, then one of root's.
    Program other = peer({"level", "3", "info"});
    EXPECT_EQ(other.line(), "ready");
    EXPECT_EQ(other.line(), "0");
    EXPECT_TRUE(wait_until([&] { return level(3) == "info"; }));
    ASSERT_EQ(seteuid(0), 0);
    ASSERT_EQ(setegid(0), 0);
    EXPECT_EQ(edit("<alarm><id>3</id><level>major</level></alarm>"), 0);
    ASSERT_NO_FATAL_FAILURE(become_daemon());
    EXPECT_TRUE(wait_until([&] { return level(3) == "major"; }));
    EXPECT_EQ(db_olt_alarm_log_set_alarm_level(3, &db, "debug", 16, 1), 0);
}

TEST_F(Identity, root_for_a_moment_changes_too_and_daemon_goes_on)
{
    ASSERT_NO_FATAL_FAILURE(become_daemon());
    ASSERT_EQ(db_olt_alarm_log_set_alarm_level(3, &db, "alert", 16, 1), 0);
    ASSERT_EQ(seteuid(0), 0);
    ASSERT_EQ(db_olt_alarm_log_set_alarm_level(3, &db, "info", 16, 1), 0);
    ASSERT_EQ(seteuid(daemon_uid), 0);
    ASSERT_EQ(db_olt_alarm_log_set_alarm_level(3, &db, "debug", 16, 1), 0);
    EXPECT_EQ(level(3), "debug");
}

TEST_F(Identity, user_daemon_takes_its_files_away_at_the_end)
{
    ASSERT_NO_FATAL_FAILURE(become_daemon());
    database_disconnect(&db);
    for (const auto &file : std::filesystem::directory_iterator(repository()))
        EXPECT_FALSE(is_fifo(file.status())) << file.path();
}
