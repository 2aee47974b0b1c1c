// SPDX-License-Identifier: GPL-2.0-or-later
// Who makes semaphores, who may use them, what happens to those of others, and who is named when one is held.
#include "tests/unit/platform/log_target.hpp"
#include "tests/unit/platform/private_ipc.hpp"
#include "tests/unit/platform/users.hpp"
#include "tests/unit/process.hpp"
#include "tq_api.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <string>
#include <sys/sem.h>
#include <sys/stat.h>

using testing::Contains;
using testing::EndsWith;
using testing::HasSubstr;
using testing::Pair;

namespace {

constexpr int board_key = 0x102410;

semid_ds status_of(int id)
{
    semid_ds status{};
    EXPECT_EQ(semctl(id, 0, IPC_STAT, &status), 0);
    return status;
}

bool is_refused(int result, int error)
{
    return result < 0 && errno == error;
}

int take_without_undo(int id)
{
    sembuf operation{0, -1, IPC_NOWAIT};
    return semop(id, &operation, 1);
}

// A set as a stranger plants it; it stays when he has gone.
int planted(int mode = 0666, bool is_given_to_root = false)
{
    Process stranger([=] {
        const int id = become_outsider() ? semget(board_key, 1, IPC_CREAT | IPC_EXCL | mode) : -1;
        semid_ds status{};
        if (id < 0 || semctl(id, 0, SETVAL, 0) != 0 || semctl(id, 0, IPC_STAT, &status) != 0)
            return false;
        status.sem_perm.uid = 0;
        return !is_given_to_root || semctl(id, 0, IPC_SET, &status) == 0;
    });
    EXPECT_EQ(stranger.wait(), 0);
    return semget(board_key, 1, 0);
}

class SemaphoreAccess : public testing::Test {
protected:
    void SetUp() override
    {
        ASSERT_EQ(geteuid(), 0U) << "takes root, as all of ./test does";
        clear_private_ipc();
        LogTarget::lines.clear();
    }
    LogTarget log_;
};

} // namespace

TEST_F(SemaphoreAccess, a_new_one_belongs_to_the_daemon_and_the_box_group)
{
    const mode_t mask = umask(0);
    int id = -1;
    ASSERT_EQ(semaphore_create(&id, board_key, 1), 0);
    umask(mask);
    const semid_ds status = status_of(id);
    EXPECT_EQ(status.sem_perm.uid, daemon_uid);
    EXPECT_EQ(status.sem_perm.gid, daemon_gid);
    EXPECT_EQ(status.sem_perm.mode & 0777, 0660);
}

TEST_F(SemaphoreAccess, members_of_the_group_use_it_and_nobody_else_gets_anywhere)
{
    int id = -1;
    ASSERT_EQ(semaphore_create(&id, board_key, 1), 0);
    Process member([] {
        int mine = -1;
        return become_member() && semaphore_create(&mine, board_key, 1) == 0 && semaphore_p(mine) == 0 &&
               semaphore_v(mine) == 0;
    });
    EXPECT_EQ(member.wait(), 0);
    Process stranger([&] {
        int mine = -1;
        semid_ds status{};
        return become_outsider() && semaphore_create(&mine, board_key, 1) < 0 &&
               is_refused(semaphore_p(id), EACCES) && is_refused(take_without_undo(id), EACCES) &&
               is_refused(semctl(id, 0, GETVAL), EACCES) && is_refused(semctl(id, 0, SETVAL, 0), EACCES) &&
               is_refused(semctl(id, 0, IPC_STAT, &status), EACCES) &&
               is_refused(semctl(id, 0, IPC_RMID), EPERM);
    });
    EXPECT_EQ(stranger.wait(), 0);
    EXPECT_EQ(semctl(id, 0, GETVAL), 1);
}

TEST_F(SemaphoreAccess, one_of_roots_that_is_open_to_all_is_reused_as_it_is_and_shut)
{
    const int made = semget(board_key, 1, IPC_CREAT | 0666);
    ASSERT_EQ(semctl(made, 0, SETVAL, 0), 0);
    int id = -1;
    ASSERT_EQ(semaphore_create(&id, board_key, 1), 0);
    EXPECT_EQ(id, made);
    EXPECT_EQ(semctl(id, 0, GETVAL), 0) << "held";
    const semid_ds status = status_of(id);
    EXPECT_EQ(status.sem_perm.mode & 0777, 0660);
    EXPECT_EQ(status.sem_perm.gid, daemon_gid);
    EXPECT_EQ(status.sem_perm.uid, 0U);
}

TEST_F(SemaphoreAccess, one_of_the_daemons_user_is_reused_by_root_and_by_itself)
{
    int made = -1;
    Process daemon(
        [&] { return become(daemon_uid, daemon_gid) && semaphore_create(&made, board_key, 1) == 0; });
    ASSERT_EQ(daemon.wait(), 0);
    made = semget(board_key, 1, 0);
    ASSERT_GE(made, 0);
    int id = -1;
    ASSERT_EQ(semaphore_create(&id, board_key, 1), 0);
    EXPECT_EQ(id, made);
    EXPECT_THAT(LogTarget::lines, testing::IsEmpty());
}

TEST_F(SemaphoreAccess, one_that_a_stranger_planted_is_removed_by_root_and_made_anew_with_a_line_in_the_log)
{
    for (const int mode : {0666, 0600}) {
        clear_private_ipc();
        LogTarget::lines.clear();
        const int foreign = planted(mode);
        int id = -1;
        ASSERT_EQ(semaphore_create(&id, board_key, 1), 0);
        EXPECT_NE(id, foreign);
        EXPECT_EQ(semctl(id, 0, GETVAL), 1);
        EXPECT_EQ(status_of(id).sem_perm.cuid, 0U);
        EXPECT_THAT(LogTarget::lines,
                    Contains(Pair(LOG_WARNING, HasSubstr("semaphore 0x102410 was made by user 65534"))));
    }
}

TEST_F(SemaphoreAccess, one_that_its_maker_gave_to_root_is_foreign_all_the_same)
{
    const int foreign = planted(0666, true);
    int id = -1;
    ASSERT_EQ(semaphore_create(&id, board_key, 1), 0);
    EXPECT_NE(id, foreign);
}

TEST_F(SemaphoreAccess, one_that_a_stranger_planted_is_not_used_by_a_member_who_is_not_root)
{
    const int foreign = planted();
    Process member([] {
        int id = -1;
        return become_member() && is_refused(semaphore_create(&id, board_key, 1), EPERM) && id == -1;
    });
    EXPECT_EQ(member.wait(), 0);
    EXPECT_EQ(semget(board_key, 1, 0), foreign);
}

TEST_F(SemaphoreAccess, one_that_is_not_there_is_made_by_root_and_the_daemons_user_only)
{
    Process member([] {
        int id = -1;
        return become_member() && is_refused(semaphore_create(&id, board_key, 1), ENOENT);
    });
    EXPECT_EQ(member.wait(), 0);
    EXPECT_LT(semget(board_key, 1, 0), 0);
}

TEST_F(SemaphoreAccess, a_stopped_holder_is_named_in_the_log_and_keeps_it_until_it_goes_on)
{
    int id = -1;
    ASSERT_EQ(semaphore_create(&id, board_key, 1), 0);
    Process holder([&] { return semaphore_p(id) == 0 && raise(SIGSTOP) == 0 && semaphore_v(id) == 0; });
    ASSERT_EQ(waitpid(holder.pid(), nullptr, WUNTRACED), holder.pid());

    int said[2];
    ASSERT_EQ(pipe(said), 0);
    Process waiter([&] {
        static int out;
        out = said[1];
        log_.target.logfn = [](zlog_target *, zlog_msg *messages[], std::size_t) {
            std::size_t size = 0;
            const char *const text = zlog_msg_text(messages[0], &size);
            dprintf(out, "%.*s", static_cast<int>(size), text);
        };
        return semaphore_p(id) == 0;
    });
    char line[200];
    const ssize_t size = read(said[0], line, sizeof line); // as long as that takes
    ASSERT_GT(size, 0);
    EXPECT_THAT(std::string(line, static_cast<std::size_t>(size)),
                EndsWith("semaphore 0x102410: waiting for process " + std::to_string(holder.pid()) +
                         " (semaphore_acces), which has had it for more than 5 s"));
    EXPECT_EQ(semctl(id, 0, GETVAL), 0);
    EXPECT_EQ(waitpid(waiter.pid(), nullptr, WNOHANG), 0) << "it waits on";
    holder.kill(SIGCONT);
    EXPECT_EQ(holder.wait(), 0);
    EXPECT_EQ(waiter.wait(), 0);
}
