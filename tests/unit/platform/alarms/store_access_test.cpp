// SPDX-License-Identifier: GPL-2.0-or-later
// Who makes the alarm store and who may use it, what happens to what others put in its place, and a store
// that is cut short while it is used.
#include "tests/unit/platform/alarms/chain_view.hpp"
#include "tests/unit/platform/log_target.hpp"
#include "tests/unit/platform/private_ipc.hpp"
#include "tests/unit/platform/users.hpp"
#include "tests/unit/process.hpp"
#include "tq_api.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <fcntl.h>
#include <functional>
#include <string>
#include <sys/file.h>
#include <sys/mman.h>
#include <sys/sem.h>
#include <sys/stat.h>

using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::Pair;

namespace {

constexpr char store_file[] = "/dev/shm/tq_alarm_log";
constexpr off_t store_bytes = 16 + 4096 * 200 + 248; // header, slots, bookkeeping

int file(const std::string &message)
{
    tq_alarm_req_t request{};
    request.alarm_id = 29;
    return cli_log(nullptr, &request, "%s", message.c_str());
}

// Messages of the store as a command reads it.
std::vector<std::string> seen()
{
    semaphore_p(alarm_log_sem_id);
    const tq_alarm_store_t *const store = tq_alarm_log_get_shm_pointer();
    auto found = store ? messages(*store, TQ_ALARM_CAPACITY) : std::vector<std::string>{"no store"};
    semaphore_v(alarm_log_sem_id);
    return found;
}

bool is_refused(int result, int error)
{
    return result < 0 && errno == error;
}

// What a stranger does with the rights that he has; true when it succeeded.
bool as_stranger(const std::function<bool()> &act)
{
    return Process([&] { return become_outsider() && act(); }).wait() == 0;
}

bool fill_as_store(int fd)
{
    // A copy of a true store, marks and all: only its owner tells.
    std::vector<char> memory(static_cast<std::size_t>(store_bytes));
    tq::AlarmChain::format(memory.data(), TQ_ALARM_CAPACITY);
    return fd >= 0 && write(fd, memory.data(), memory.size()) == store_bytes;
}

struct Plant {
    const char *name;
    bool (*put)();
};
const Plant plants[] = {
    {"file", [] { return open(store_file, O_RDWR | O_CREAT, 0666) >= 0; }},
    {"true_copy", [] { return fill_as_store(open(store_file, O_RDWR | O_CREAT, 0666)); }},
    {"link", [] { return symlink("/etc/passwd", store_file) == 0; }},
    {"link_to_nothing", [] { return symlink("/dev/shm/elsewhere", store_file) == 0; }},
    {"pipe", [] { return mkfifo(store_file, 0666) == 0; }},
    {"folder", [] { return mkdir(store_file, 0777) == 0; }},
    {"full_folder",
     [] {
         return mkdir(store_file, 0777) == 0 && mkdir((store_file + std::string("/in")).c_str(), 0777) == 0;
     }},
};

class StoreAccess : public testing::Test {
protected:
    void SetUp() override
    {
        ASSERT_EQ(geteuid(), 0U) << "takes root, as all of ./test does";
        clear_private_ipc();
        LogTarget::lines.clear();
        tq_alarm_log_shm_pointer = nullptr;
    }
    LogTarget log_;
};

class PlantedStore : public StoreAccess, public testing::WithParamInterface<Plant> {};

} // namespace

TEST_F(StoreAccess, a_new_one_belongs_to_the_daemon_and_the_box_group_whatever_the_umask)
{
    for (const mode_t mask : {0, 077}) {
        clear_private_ipc();
        const mode_t before = umask(mask);
        Process first([] { return tq_alarm_log_init() == 0; });
        ASSERT_EQ(first.wait(), 0);
        umask(before);
        struct stat status {};
        ASSERT_EQ(stat(store_file, &status), 0);
        EXPECT_EQ(status.st_mode & 07777, 0660U);
        EXPECT_EQ(status.st_uid, daemon_uid);
        EXPECT_EQ(status.st_gid, daemon_gid);
    }
}

TEST_F(StoreAccess, members_of_the_group_file_alarms_and_nobody_else_gets_anywhere)
{
    ASSERT_EQ(tq_alarm_log_init(), 0);
    Process member([] { return become_member() && tq_alarm_log_init() == 0 && file("a member's") == 0; });
    EXPECT_EQ(member.wait(), 0);
    EXPECT_TRUE(as_stranger([] {
        return is_refused(open(store_file, O_RDONLY), EACCES) &&
               is_refused(open(store_file, O_RDWR), EACCES) && is_refused(truncate(store_file, 0), EACCES) &&
               is_refused(unlink(store_file), EPERM) &&
               is_refused(rename(store_file, "/dev/shm/mine"), EPERM) && tq_alarm_log_init() < 0;
    }));
    EXPECT_THAT(seen(), ElementsAre("a member's"));
}

TEST_F(StoreAccess, one_of_roots_that_is_open_to_all_keeps_its_records_and_is_shut)
{
    Process before([] { return tq_alarm_log_init() == 0 && file("before") == 0; });
    ASSERT_EQ(before.wait(), 0);
    ASSERT_EQ(chown(store_file, 0, 0), 0);
    ASSERT_EQ(chmod(store_file, 0666), 0);
    ASSERT_EQ(tq_alarm_log_init(), 0);
    EXPECT_THAT(seen(), ElementsAre("before"));
    struct stat status {};
    ASSERT_EQ(stat(store_file, &status), 0);
    EXPECT_EQ(status.st_mode & 07777, 0660U);
    EXPECT_EQ(status.st_gid, daemon_gid);
    EXPECT_EQ(status.st_uid, 0U);
    EXPECT_THAT(LogTarget::lines, testing::IsEmpty());
}

TEST_P(PlantedStore, is_removed_by_root_with_a_line_in_the_log_and_a_new_one_is_made)
{
    ASSERT_TRUE(as_stranger(GetParam().put));
    ASSERT_EQ(tq_alarm_log_init(), 0);
    EXPECT_THAT(LogTarget::lines,
                Contains(Pair(LOG_WARNING, HasSubstr("/dev/shm/tq_alarm_log was made by user 65534"))));
    EXPECT_EQ(file("x"), 0);
    EXPECT_THAT(seen(), ElementsAre("x"));
    struct stat status {};
    ASSERT_EQ(lstat(store_file, &status), 0);
    EXPECT_TRUE(S_ISREG(status.st_mode) && status.st_uid == daemon_uid);
}

TEST_P(PlantedStore, is_not_used_by_a_process_that_is_not_root)
{
    ASSERT_EQ(tq_alarm_log_init(), 0) << "for the semaphore";
    ASSERT_EQ(shm_unlink("/tq_alarm_log"), 0);
    ASSERT_TRUE(as_stranger(GetParam().put));
    Process member(
        [] { return become_member() && is_refused(tq_alarm_log_init(), EPERM) && file("x") != 0; });
    EXPECT_EQ(member.wait(), 0);
    struct stat status {};
    ASSERT_EQ(lstat(store_file, &status), 0);
    EXPECT_EQ(status.st_uid, nobody_uid) << "left to root";
}

INSTANTIATE_TEST_SUITE_P(Each, PlantedStore, testing::ValuesIn(plants),
                         [](const auto &instance) { return instance.param.name; });

TEST_F(StoreAccess, one_planted_while_a_daemon_that_was_started_by_root_runs_is_removed_by_it)
{
    ASSERT_EQ(tq_alarm_log_init(), 0);
    ASSERT_EQ(shm_unlink("/tq_alarm_log"), 0);
    ASSERT_TRUE(as_stranger(plants[0].put));
    Process daemon([] {
        return setresgid(daemon_gid, daemon_gid, daemon_gid) == 0 &&
               setresuid(static_cast<uid_t>(-1), daemon_uid, static_cast<uid_t>(-1)) == 0 && file("x") == 0 &&
               geteuid() == daemon_uid;
    });
    EXPECT_EQ(daemon.wait(), 0);
    EXPECT_THAT(seen(), ElementsAre("x"));
}

// The signal would end the process; where in the library or in a command it comes is chance.
TEST_F(StoreAccess, one_that_is_cut_short_while_it_is_walked_ends_the_walk_and_not_the_process)
{
    ASSERT_EQ(tq_alarm_log_init(), 0);
    for (const char *text : {"a", "b", "c"})
        ASSERT_EQ(file(text), 0);
    semaphore_p(alarm_log_sem_id);
    const tq_alarm_store_t *const store = tq_alarm_log_get_shm_pointer();
    ASSERT_NE(store, nullptr);
    ASSERT_EQ(truncate(store_file, 0), 0);
    EXPECT_THAT(messages(*store, TQ_ALARM_CAPACITY), testing::Not(Contains("a")));
    EXPECT_EQ(tq_alarm_log_get_shm_pointer(), nullptr);
    EXPECT_EQ(errno, EPROTO);
    semaphore_v(alarm_log_sem_id);
    EXPECT_NE(file("d"), 0) << "there is no store to put it into";
}

TEST_F(StoreAccess, one_that_is_cut_short_and_filled_again_by_another_is_used_again)
{
    ASSERT_EQ(tq_alarm_log_init(), 0);
    ASSERT_EQ(truncate(store_file, 0), 0);
    EXPECT_NE(file("lost"), 0);
    ASSERT_EQ(shm_unlink("/tq_alarm_log"), 0);
    EXPECT_EQ(file("kept"), 0);
    EXPECT_THAT(seen(), ElementsAre("kept"));
}

TEST_F(StoreAccess, one_that_is_cut_short_again_and_again_under_writers_ends_none_of_them)
{
    ASSERT_EQ(tq_alarm_log_init(), 0);
    Process writer([] {
        for (int n = 0; n < 4000; ++n)
            file("record");
        return true;
    });
    int status = 0;
    while (waitpid(writer.pid(), &status, WNOHANG) == 0) {
        static_cast<void>(truncate(store_file, 4096) == 0);
        shm_unlink("/tq_alarm_log");
    }
    EXPECT_TRUE(WIFEXITED(status)) << "ended by signal " << WTERMSIG(status);
}

TEST_F(StoreAccess, a_fault_of_other_memory_ends_the_process_as_it_does_without_a_store)
{
    Process careless([] {
        if (tq_alarm_log_init() != 0)
            return true;
        const int fd = memfd_create("other", 0);
        static_cast<void>(ftruncate(fd, 4096) == 0);
        auto *const other = static_cast<volatile char *>(mmap(nullptr, 4096, PROT_READ, MAP_SHARED, fd, 0));
        static_cast<void>(ftruncate(fd, 0) == 0);
        static_cast<void>(other[0]);
        return true; // whoever comes so far has survived
    });
    EXPECT_NE(careless.wait(), 0) << "killed, or ended by a sanitizer that tells of it";
}
