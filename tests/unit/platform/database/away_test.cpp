// SPDX-License-Identifier: GPL-2.0-or-later
// A database that goes away while it is open, and comes back: nothing hangs, nothing is lost.
#include "tests/unit/platform/database/sandbox.hpp"

#include <signal.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <filesystem>
#include <set>
#include <thread>

namespace fs = std::filesystem;
using namespace sandbox;

namespace {

constexpr double longest_answer_s = 3.5;
constexpr std::chrono::seconds back_again{40}; // sysrepo waits up to 15 seconds for a dead one's lock
constexpr const char *port_path = "/olt-alarm-log:alarm-log/remote-server-ipv4/port";

std::atomic<int> ports_heard;

int on_port(void *, const char *, const char *, int, uint32_t, void *)
{
    ++ports_heard;
    return 0;
}

class Away : public DatabaseTest {
protected:
    void SetUp() override
    {
        DatabaseTest::SetUp();
        static const tq_db_entry entries[] = {{port_path, on_port, nullptr}, {}};
        static const tq_db_module module = {"olt-alarm-log", entries};
        static const tq_db_module *const modules[] = {&module, nullptr};
        ASSERT_EQ(db_database_init(&db, modules), 0);
        for (uint16_t id = 0; id < TQ_ALARM_COUNT; ++id)
            ASSERT_EQ(set_level(id, "major"), 0);
        ASSERT_EQ(set_level(5, "alert"), 0);
    }
    void TearDown() override
    {
        chmod(repository().c_str(), 0755);
        database_disconnect(&db);
    }
    int set_level(uint16_t id, const char *level)
    {
        int code = 0;
        const double seconds =
            seconds_of([&] { code = db_olt_alarm_log_set_alarm_level(id, &db, level, 16, 1); });
        EXPECT_LT(seconds, longest_answer_s);
        return code;
    }
    void expect_all_kept()
    {
        EXPECT_EQ(level(5), "alert");
        for (uint16_t id = 10; id < TQ_ALARM_COUNT; ++id)
            ASSERT_EQ(level(id), "major") << id;
    }
    // Changes work, others see them, and changes of others are heard.
    void expect_connected()
    {
        ASSERT_EQ(set_level(7, "info"), 0);
        Program other = peer({"hear", "5", "alert"});
        ASSERT_EQ(other.line(), "ready");
        EXPECT_EQ(other.line(), "heard") << "what was kept is in the database, too";
        EXPECT_EQ(other.wait(), 0); // one that is killed would hold up all others
        ASSERT_EQ(edit("<alarm><id>8</id><level>notice</level></alarm>"), 0);
        EXPECT_TRUE(wait_until([&] { return level(8) == "notice"; }));
        static int port = 1514;
        ports_heard = 0;
        ASSERT_EQ(
            edit("<remote-server-ipv4><port>" + std::to_string(++port) + "</port></remote-server-ipv4>"), 0);
        EXPECT_TRUE(wait_until([&] { return ports_heard >= 2; })) << "the callback is subscribed again";
        expect_all_kept();
    }
};

void remove_shared(const std::string &prefix)
{
    std::set<fs::path> files;
    for (const auto &file : fs::directory_iterator("/dev/shm"))
        if (file.path().filename().string().starts_with(prefix))
            files.insert(file.path());
    ASSERT_FALSE(files.empty());
    for (const fs::path &file : files)
        fs::remove(file);
}

std::size_t descriptors()
{
    return static_cast<std::size_t>(std::distance(fs::directory_iterator("/proc/self/fd"), {}));
}

} // namespace

TEST_F(Away, a_repository_that_is_moved_refuses_changes_and_takes_them_when_it_is_back)
{
    fs::rename(repository(), folder() + "/elsewhere");
    EXPECT_EQ(set_level(5, "debug"), TQ_ERR_NO_DB);
    EXPECT_EQ(db_olt_alarm_log_del_remote_server_ipv4_port(&db), TQ_ERR_NO_DB);
    EXPECT_EQ(db_apply_lock(&db), TQ_ERR_NO_DB);
    EXPECT_NE(db_connect_init_with_vty(reinterpret_cast<struct vty *>(this), &db), 0);
    expect_all_kept();
    EXPECT_FALSE(fs::exists(repository())) << "it is not made again";
    fs::rename(folder() + "/elsewhere", repository());
    expect_connected();
    EXPECT_EQ(db_disconnect_free_with_vty(reinterpret_cast<struct vty *>(this), &db), 0);
}

TEST_F(Away, what_is_refused_while_it_is_away_does_not_happen_later)
{
    fs::rename(repository() + "/data", folder() + "/elsewhere");
    EXPECT_EQ(db_olt_alarm_log_set_alarm_level(5, &db, "debug", 16, 0), 0) << "pending";
    EXPECT_EQ(db_apply_changes(db.conn), TQ_ERR_NO_DB);
    fs::rename(folder() + "/elsewhere", repository() + "/data");
    EXPECT_EQ(db_apply_changes(db.conn), 0);
    expect_connected();
}

TEST_F(Away, another_repository_in_its_place_is_connected_to)
{
    fs::rename(repository(), folder() + "/elsewhere");
    ASSERT_EQ(Program({"cp", "-a", folder() + "/elsewhere", repository()}).wait(), 0);
    EXPECT_TRUE(wait_until([&] { return set_level(9, "info") == 0; }));
    expect_connected();
    fs::remove_all(folder() + "/elsewhere");
}

TEST_F(Away, a_shared_state_that_is_removed_is_made_anew_with_all_values)
{
    const std::size_t before = descriptors();
    for (int round = 0; round < 5; ++round) {
        remove_shared("sr_");
        EXPECT_EQ(set_level(9, round % 2 ? "info" : "debug"), 0);
        expect_all_kept();
    }
    expect_connected();
    EXPECT_EQ(descriptors(), before);
}

TEST_F(Away, it_is_connected_to_again_without_being_asked)
{
    remove_shared("sr_");
    EXPECT_TRUE(wait_until([] { return fs::exists("/dev/shm/sr_main"); }));
    Program other = peer({"hear", "5", "alert"});
    ASSERT_EQ(other.line(), "ready");
    EXPECT_EQ(other.line(), "heard");
    EXPECT_EQ(other.wait(), 0);
}

TEST_F(Away, getters_show_no_gap_while_it_is_made_anew)
{
    std::atomic<bool> is_over = false;
    std::atomic<int> gaps = 0;
    std::thread reader([&] {
        while (!is_over)
            gaps += level(5) != "alert";
    });
    for (int round = 0; round < 10; ++round) {
        remove_shared("sr_");
        EXPECT_EQ(set_level(9, round % 2 ? "info" : "debug"), 0);
    }
    is_over = true;
    reader.join();
    EXPECT_EQ(gaps, 0);
}

TEST_F(Away, what_another_program_set_in_a_new_shared_state_counts)
{
    remove_shared("sr_");
    ASSERT_EQ(edit("<alarm><id>6</id><level>emerg</level></alarm>"), 0);
    ASSERT_EQ(set_level(9, "info"), 0);
    // Unless the library was the first to look: then its state was there for the other to change.
    EXPECT_TRUE(wait_until([&] { return level(6) == "emerg"; }));
    expect_connected();
}

TEST_F(Away, a_running_configuration_that_is_removed_is_written_again)
{
    remove_shared("sr_olt-alarm-log.running");
    EXPECT_EQ(set_level(9, "info"), 0);
    expect_connected();
}

TEST_F(Away, a_shared_state_that_is_cut_is_made_anew)
{
    for (const char *file : {"/dev/shm/sr_main", "/dev/shm/sr_ext"}) {
        ASSERT_EQ(truncate(file, 0), 0);
        EXPECT_EQ(set_level(9, "info"), 0) << file;
        expect_connected();
    }
}

TEST_F(Away, a_repository_that_may_not_be_entered_gives_an_access_error)
{
    ASSERT_EQ(chown(repository().c_str(), 0, 0), 0);
    ASSERT_EQ(chmod(repository().c_str(), 0700), 0);
    ASSERT_EQ(seteuid(daemon_uid), 0);
    EXPECT_EQ(set_level(5, "debug"), TQ_ERR_ACCESS);
    expect_all_kept();
    ASSERT_EQ(seteuid(0), 0);
    ASSERT_EQ(chmod(repository().c_str(), 0755), 0);
    ASSERT_EQ(chown(repository().c_str(), daemon_uid, daemon_gid), 0);
    expect_connected();
}

TEST_F(Away, writers_killed_in_the_middle_cost_no_value_and_no_life)
{
    for (int round = 0; round < 2; ++round) {
        Program writer = peer({"write"});
        ASSERT_EQ(writer.line(), "ready");
        usleep(static_cast<useconds_t>(20000 + 7000 * round)); // somewhere in the writing
        writer.signal(SIGKILL);
        writer.wait();
        EXPECT_TRUE(
            wait_until([&] { return set_level(9, round % 2 ? "notice" : "debug") == 0; }, back_again));
    }
    // The writers changed all levels; only we change names.
    EXPECT_EQ(level(9), "notice");
    ASSERT_EQ(edit("<alarm><id>8</id><level>notice</level></alarm>"), 0);
    EXPECT_TRUE(wait_until([&] { return level(8) == "notice"; }));
}

TEST_F(Away, closing_it_while_it_is_away_ends_in_time)
{
    fs::rename(repository(), folder() + "/elsewhere");
    remove_shared("sr_");
    EXPECT_LT(seconds_of([&] { database_disconnect(&db); }), longest_answer_s);
    EXPECT_EQ(set_level(5, "debug"), TQ_ERR_NO_DB);
    fs::rename(folder() + "/elsewhere", repository());
    EXPECT_EQ(database_init(&db), 0);
    EXPECT_EQ(level(5), "code -2") << "a database that is opened starts with what it has";
}
