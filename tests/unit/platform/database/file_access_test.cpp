// SPDX-License-Identifier: GPL-2.0-or-later
// Who gets at the files of the database, and what becomes of files that a stranger put in their place.
#include "tests/unit/platform/database/sandbox.hpp"
#include "tests/unit/platform/users.hpp"
#include "tests/unit/process.hpp"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <sysrepo.h>

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <fstream>
#include <functional>
#include <string>
#include <vector>

namespace fs = std::filesystem;
using namespace sandbox;

namespace {

std::vector<fs::path> database_files()
{
    std::vector<fs::path> found;
    for (const auto &file : fs::directory_iterator("/dev/shm"))
        found.push_back(file.path());
    for (const auto &file : fs::recursive_directory_iterator(repository()))
        found.push_back(file.path());
    return found;
}

// Those that others than their owner and the box's group get at.
std::vector<std::string> open_files()
{
    std::vector<std::string> found;
    for (const fs::path &file : database_files()) {
        struct stat status {};
        EXPECT_EQ(lstat(file.c_str(), &status), 0);
        if ((status.st_mode & S_IRWXO) != 0 || (status.st_uid != 0 && status.st_uid != ::daemon_uid) ||
            status.st_gid != ::daemon_gid)
            found.push_back(file.string() + " " + std::to_string(status.st_mode & ALLPERMS));
    }
    return found;
}

bool as_stranger(const std::function<bool()> &act)
{
    return Process([&] { return become_outsider() && act(); }).wait() == 0;
}

bool put_garbage(const std::string &name)
{
    std::ofstream file("/dev/shm/" + name);
    file << std::string(100000, '\x5a') << std::flush;
    return file.good() && chmod(("/dev/shm/" + name).c_str(), 0666) == 0;
}

class FileAccess : public DatabaseTest {};

} // namespace

TEST_F(FileAccess, files_are_for_the_daemon_and_the_box_group)
{
    EXPECT_EQ(db_olt_alarm_log_set_alarm_level(3, &db, "alert", 16, 0), 0);
    EXPECT_EQ(db_apply_changes(db.conn), 0);
    EXPECT_EQ(open_files(), std::vector<std::string>{});
    struct stat status {};
    ASSERT_EQ(stat("/dev/shm/sr_main", &status), 0);
    EXPECT_EQ(status.st_mode & ALLPERMS, 0660U);
}

// What sysrepo makes by itself, before anybody looks at it again.
TEST_F(FileAccess, files_are_so_from_the_moment_they_exist)
{
    database_disconnect(&db);
    forget_everything();
    const mode_t mask = umask(022);
    sr_conn_ctx_t *connection = nullptr;
    sr_session_ctx_t *session = nullptr;
    sr_subscription_ctx_t *subscription = nullptr;
    ASSERT_EQ(sr_connect(SR_CONN_DEFAULT, &connection), SR_ERR_OK);
    ASSERT_EQ(sr_session_start(connection, SR_DS_RUNNING, &session), SR_ERR_OK);
    ASSERT_EQ(sr_module_change_subscribe(
                  session, "olt-alarm-log", nullptr,
                  [](sr_session_ctx_t *, const char *, const char *, sr_event_t, std::uint32_t,
                     void *) -> int { return SR_ERR_OK; },
                  nullptr, 0, SR_SUBSCR_DEFAULT, &subscription),
              SR_ERR_OK);
    EXPECT_EQ(umask(mask), 022U) << "the process keeps the mask that it had";
    for (const fs::path &file : database_files()) {
        struct stat status {};
        EXPECT_EQ(lstat(file.c_str(), &status), 0);
        EXPECT_EQ(status.st_mode & S_IRWXO, 0U) << file;
    }
    sr_unsubscribe(subscription);
    sr_disconnect(connection);
    ASSERT_EQ(database_init(&db), 0);
}

TEST_F(FileAccess, what_another_program_left_open_is_shut_by_the_next_that_connects)
{
    database_disconnect(&db);
    for (const fs::path &file : database_files())
        ASSERT_EQ(chmod(file.c_str(), fs::is_directory(file) ? 0777 : 0666), 0);
    ASSERT_EQ(database_init(&db), 0);
    EXPECT_EQ(open_files(), std::vector<std::string>{});
}

TEST_F(FileAccess, a_stranger_neither_reads_writes_cuts_nor_locks_any_of_them)
{
    const std::vector<fs::path> files = database_files();
    ASSERT_FALSE(files.empty());
    EXPECT_TRUE(as_stranger([&] {
        return std::ranges::none_of(files, [](const fs::path &file) {
            return open(file.c_str(), O_RDONLY | O_NONBLOCK) >= 0 ||
                   open(file.c_str(), O_WRONLY | O_NONBLOCK) >= 0 || truncate(file.c_str(), 0) == 0 ||
                   unlink(file.c_str()) == 0;
        });
    }));
    EXPECT_EQ(db_olt_alarm_log_set_alarm_level(3, &db, "alert", 16, 0), 0);
    EXPECT_EQ(db_apply_changes(db.conn), 0);
}

TEST_F(FileAccess, what_a_stranger_planted_in_their_place_is_removed)
{
    database_disconnect(&db);
    forget_everything();
    ASSERT_TRUE(as_stranger([] {
        return put_garbage("sr_main") && symlink("/etc/passwd", "/dev/shm/sr_ext") == 0 &&
               put_garbage("sr_olt-alarm-log.running") && put_garbage("srsub_olt-alarm-log.running") &&
               mkdir("/dev/shm/sr_olt-ntp.running", 0777) == 0;
    }));
    ASSERT_EQ(database_init(&db), 0);
    EXPECT_EQ(db_olt_alarm_log_set_alarm_level(3, &db, "alert", 16, 0), 0);
    EXPECT_EQ(db_apply_changes(db.conn), 0);
    EXPECT_EQ(level(3), "alert");
    for (const char *name : {"sr_main", "sr_ext", "sr_olt-alarm-log.running"}) {
        struct stat status {};
        ASSERT_EQ(lstat((std::string("/dev/shm/") + name).c_str(), &status), 0) << name;
        EXPECT_TRUE(S_ISREG(status.st_mode)) << name;
        EXPECT_NE(status.st_uid, nobody_uid) << name;
    }
}
