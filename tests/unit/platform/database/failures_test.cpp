// SPDX-License-Identifier: GPL-2.0-or-later
// A database that is absent, full, read-only, not ours or left behind by the dead: a code, in bounded time.
#include "tests/unit/platform/database/sandbox.hpp"

#include <signal.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <unistd.h>

#include <fcntl.h>
#include <filesystem>
#include <fstream>

using namespace sandbox;

namespace {

constexpr double bound_s = 6; // two sysrepo timeouts and some

class Failures : public testing::Test {
protected:
    void SetUp() override { forget_everything(); }
    int init()
    {
        int code = 0;
        EXPECT_LT(seconds_of([&] { code = database_init(&db); }), bound_s);
        return code;
    }
    int set_level(const char *level)
    {
        int code = 0;
        EXPECT_LT(seconds_of([&] { code = db_olt_alarm_log_set_alarm_level(5, &db, level, 16, 1); }),
                  bound_s);
        return code;
    }
    std::string level()
    {
        char text[16];
        int len = sizeof text;
        const int code = db_olt_alarm_log_get_alarm_level(5, &db, text, &len);
        return code == 0 ? text : "code " + std::to_string(code);
    }
    void TearDown() override { database_disconnect(&db); }

    tq_database_t db{};
};

// Leaves `bytes` free in /dev/shm.
void fill_shared_memory(off_t bytes)
{
    ASSERT_EQ(mount("none", "/dev/shm", "tmpfs", MS_REMOUNT, "size=4m"), 0);
    const auto space = std::filesystem::space("/dev/shm");
    const int fd = open("/dev/shm/ballast", O_CREAT | O_RDWR | O_CLOEXEC, 0600);
    ASSERT_GE(fd, 0);
    EXPECT_EQ(posix_fallocate(fd, 0, static_cast<off_t>(space.available) - bytes), 0);
    close(fd);
}

} // namespace

TEST_F(Failures, an_absent_repository_is_not_made)
{
    const std::string absent = folder() + "/absent";
    setenv("SYSREPO_REPOSITORY_PATH", absent.c_str(), 1);
    EXPECT_EQ(init(), TQ_ERR_NO_DB);
    EXPECT_FALSE(std::filesystem::exists(absent));
    setenv("SYSREPO_REPOSITORY_PATH", repository().c_str(), 1);
    EXPECT_EQ(init(), 0) << "it came";
}

TEST_F(Failures, a_repository_without_our_modules_is_no_database)
{
    const std::string other = folder() + "/other";
    setenv("SYSREPO_REPOSITORY_PATH", other.c_str(), 1);
    setenv("SYSREPO_SHM_PREFIX", "other", 1);
    ASSERT_EQ(Program({folder() + "/sysrepo/bin/sysrepoctl", "--list"}).wait(), 0);
    testing::internal::CaptureStderr();
    EXPECT_EQ(init(), TQ_ERR_NO_DB);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
    unsetenv("SYSREPO_SHM_PREFIX");
    setenv("SYSREPO_REPOSITORY_PATH", repository().c_str(), 1);
}

TEST_F(Failures, a_database_of_another_user_gives_an_access_error)
{
    ASSERT_EQ(setegid(65534), 0);
    ASSERT_EQ(seteuid(65534), 0);
    const int code = init();
    ASSERT_EQ(seteuid(0), 0);
    ASSERT_EQ(setegid(0), 0);
    EXPECT_EQ(code, TQ_ERR_ACCESS);
}

TEST_F(Failures, writing_with_the_wrong_identity_gives_an_access_error)
{
    ASSERT_EQ(init(), 0);
    ASSERT_EQ(set_level("major"), 0);
    ASSERT_EQ(seteuid(65534), 0);
    EXPECT_EQ(set_level("alert"), TQ_ERR_ACCESS);
    EXPECT_EQ(level(), "major");
    ASSERT_EQ(seteuid(0), 0);
    EXPECT_EQ(set_level("alert"), 0) << "it does not stay refused";
}

TEST_F(Failures, full_shared_memory_gives_no_space_and_no_bus_error)
{
    ASSERT_EQ(init(), 0);
    ASSERT_EQ(set_level("major"), 0);
    fill_shared_memory(0);
    EXPECT_EQ(set_level("alert"), TQ_ERR_NO_SPACE);
    EXPECT_EQ(level(), "major");
    tq_database_t second{};
    EXPECT_EQ(database_init(&second), TQ_ERR_NO_SPACE);
    ASSERT_EQ(unlink("/dev/shm/ballast"), 0);
    EXPECT_EQ(set_level("alert"), 0) << "space is back";
    EXPECT_EQ(level(), "alert");
}

// What is left would do for some of a change, and sysrepo maps what does not fit.
TEST_F(Failures, shared_memory_that_is_nearly_full_gives_no_space_before_anything_is_written)
{
    ASSERT_EQ(init(), 0);
    ASSERT_EQ(set_level("major"), 0);
    fill_shared_memory(256 * 1024);
    EXPECT_EQ(set_level("alert"), TQ_ERR_NO_SPACE);
    EXPECT_EQ(level(), "major");
    tq_database_t second{};
    EXPECT_EQ(database_init(&second), TQ_ERR_NO_SPACE);
    ASSERT_EQ(unlink("/dev/shm/ballast"), 0);
    EXPECT_EQ(set_level("alert"), 0);
}

TEST_F(Failures, a_read_only_repository_gives_an_access_error)
{
    ASSERT_EQ(init(), 0);
    ASSERT_EQ(mount(repository().c_str(), repository().c_str(), nullptr, MS_BIND, nullptr), 0);
    ASSERT_EQ(mount("none", repository().c_str(), nullptr, MS_REMOUNT | MS_BIND | MS_RDONLY, nullptr), 0);
    EXPECT_EQ(set_level("major"), TQ_ERR_ACCESS);
    EXPECT_EQ(level(), "code -2");
    tq_database_t second{};
    EXPECT_NE(database_init(&second), 0) << "its event pipe cannot be made";
    ASSERT_EQ(umount2(repository().c_str(), MNT_DETACH), 0);
    EXPECT_EQ(set_level("major"), 0);
}

TEST_F(Failures, a_writer_that_was_killed_in_its_transaction_does_not_block_the_next_start)
{
    for (int round = 0; round < 5; ++round) {
        Program writer = peer({"write"});
        ASSERT_EQ(writer.line(), "ready");
        usleep(static_cast<useconds_t>(20000 + 7000 * round)); // somewhere in the writing
        writer.signal(SIGKILL);
        writer.wait();
        double seconds = 0;
        int code = 0;
        seconds = seconds_of([&] { code = database_init(&db); });
        ASSERT_EQ(code, 0);
        EXPECT_LT(seconds, 2);
        EXPECT_EQ(set_level(round % 2 ? "notice" : "debug"), 0);
        database_disconnect(&db);
    }
}

TEST_F(Failures, the_running_configuration_survives_a_user_that_was_killed)
{
    ASSERT_EQ(init(), 0);
    ASSERT_EQ(set_level("alert"), 0);
    database_disconnect(&db);
    Program user = peer({"idle"});
    ASSERT_EQ(user.line(), "ready");
    user.signal(SIGKILL);
    user.wait();
    ASSERT_EQ(init(), 0);
    EXPECT_EQ(level(), "alert");
    EXPECT_EQ(set_level("info"), 0);
}

TEST_F(Failures, a_running_configuration_that_was_emptied_gives_way_to_that_of_startup)
{
    const std::string file = folder() + "/startup.xml";
    ASSERT_TRUE(std::ofstream(folder() + "/empty.xml"));
    std::ofstream(file) << "<alarm-log xmlns=\"urn:norvale:yang:olt-alarm-log\">"
                           "<alarm><id>5</id><level>emerg</level></alarm></alarm-log>\n";
    ASSERT_EQ(sysrepocfg({"--edit=" + file, "--datastore=startup", "--format=xml", "--module=olt-alarm-log"}),
              0);
    ASSERT_EQ(init(), 0);
    ASSERT_EQ(set_level("alert"), 0);
    database_disconnect(&db);
    // As a full file system or a kill leaves it.
    ASSERT_EQ(truncate("/dev/shm/sr_olt-alarm-log.running", 0), 0);
    ASSERT_EQ(unlink("/dev/shm/sr_main"), 0);
    ASSERT_EQ(init(), 0);
    EXPECT_EQ(level(), "emerg");
    EXPECT_EQ(set_level("info"), 0);
    database_disconnect(&db);
    ASSERT_EQ(sysrepocfg({"--import=" + folder() + "/empty.xml", "--datastore=startup", "--format=xml",
                          "--module=olt-alarm-log"}),
              0);
}

TEST_F(Failures, a_user_that_was_killed_does_not_hold_up_those_who_live)
{
    ASSERT_EQ(init(), 0);
    Program user = peer({"idle"});
    ASSERT_EQ(user.line(), "ready");
    user.signal(SIGKILL);
    user.wait();
    EXPECT_TRUE(wait_until([&] { return set_level("alert") == 0; }, std::chrono::seconds(20)));
    EXPECT_EQ(level(), "alert");
    EXPECT_LT(seconds_of([&] { set_level("info"); }), 1);
}

TEST_F(Failures, data_that_root_made_first_are_usable)
{
    ASSERT_EQ(edit("<alarm><id>5</id><level>alert</level></alarm>"), 0);
    ASSERT_EQ(init(), 0);
    EXPECT_EQ(level(), "alert");
    EXPECT_EQ(set_level("info"), 0);
}
