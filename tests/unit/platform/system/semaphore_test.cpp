// SPDX-License-Identifier: GPL-2.0-or-later
// System V semaphores: making, opening, waiting, and what is left when a holder dies.
#include "tests/unit/platform/private_ipc.hpp"
#include "tests/unit/process.hpp"
#include "tq_api.h"

#include <cerrno>
#include <chrono>
#include <gtest/gtest.h>
#include <sys/sem.h>
#include <thread>
#include <vector>

namespace {

constexpr int board_key = 0x102410;
constexpr auto time_limit = std::chrono::seconds(20);

int value_of(int id)
{
    return semctl(id, 0, GETVAL);
}

// Waits until `count` processes wait for the semaphore.
bool wait_for_waiters(int id, int count)
{
    const auto deadline = std::chrono::steady_clock::now() + time_limit;
    while (semctl(id, 0, GETNCNT) < count) {
        if (std::chrono::steady_clock::now() > deadline)
            return false;
        std::this_thread::yield();
    }
    return true;
}

bool wait_for_value(int id, int value)
{
    const auto deadline = std::chrono::steady_clock::now() + time_limit;
    while (value_of(id) != value) {
        if (std::chrono::steady_clock::now() > deadline)
            return false;
        std::this_thread::yield();
    }
    return true;
}

class Semaphore : public testing::Test {
protected:
    void SetUp() override { clear_private_ipc(); }
};

} // namespace

TEST_F(Semaphore, a_new_one_has_one_member_and_its_value)
{
    int id = -1;
    ASSERT_EQ(semaphore_create(&id, board_key, 1), 0);
    semid_ds status{};
    ASSERT_EQ(semctl(id, 0, IPC_STAT, &status), 0);
    EXPECT_EQ(status.sem_nsems, 1u);
    EXPECT_EQ(status.sem_perm.__key, board_key);
    EXPECT_EQ(value_of(id), 1);
}

TEST_F(Semaphore, one_that_exists_and_is_held_is_opened_and_stays_held)
{
    int id = -1;
    ASSERT_EQ(semaphore_create(&id, board_key, 1), 0);
    ASSERT_EQ(semaphore_p(id), 0);
    int again = -1;
    ASSERT_EQ(semaphore_create(&again, board_key, 1), 0);
    EXPECT_EQ(again, id);
    EXPECT_EQ(value_of(id), 0);
    EXPECT_EQ(semaphore_v(id), 0);
}

TEST_F(Semaphore, one_whose_maker_died_before_giving_it_a_value_gets_it_from_the_next)
{
    const int made = semget(board_key, 1, IPC_CREAT | 0666);
    int id = -1;
    ASSERT_EQ(semaphore_create(&id, board_key, 1), 0);
    EXPECT_EQ(id, made);
    EXPECT_EQ(value_of(id), 1);
}

TEST_F(Semaphore, many_processes_that_make_it_at_once_end_up_with_one_of_value_one)
{
    for (int round = 0; round < 20; ++round) {
        clear_private_ipc();
        int ready[2];
        ASSERT_EQ(pipe(ready), 0);
        std::vector<Process> processes;
        for (int i = 0; i < 6; ++i)
            processes.emplace_back([&] {
                close(ready[1]);
                char byte;
                while (read(ready[0], &byte, 1) > 0) {
                }
                int id = -1;
                return semaphore_create(&id, board_key, 1) == 0 && semaphore_p(id) == 0 &&
                       semaphore_v(id) == 0;
            });
        close(ready[1]);
        close(ready[0]);
        for (auto &process : processes)
            EXPECT_EQ(process.wait(), 0);
        int id = -1;
        ASSERT_EQ(semaphore_create(&id, board_key, 1), 0);
        EXPECT_EQ(value_of(id), 1);
    }
}

TEST_F(Semaphore, a_killed_holder_gives_it_back)
{
    int id = -1;
    ASSERT_EQ(semaphore_create(&id, board_key, 1), 0);
    Process holder([&] { return semaphore_p(id) == 0 && pause() == 0; });
    ASSERT_TRUE(wait_for_value(id, 0));
    Process waiter([&] { return semaphore_p(id) == 0; });
    ASSERT_TRUE(wait_for_waiters(id, 1));
    holder.kill();
    EXPECT_EQ(waiter.wait(), 0);
    holder.wait();
    EXPECT_EQ(value_of(id), 1);
}

TEST_F(Semaphore, an_alarm_semaphore_that_is_removed_while_somebody_waits_is_made_again)
{
    ASSERT_EQ(tq_alarm_log_init(), 0);
    const int first = alarm_log_sem_id;
    ASSERT_EQ(semaphore_p(first), 0);
    Process waiter([&] {
        return semaphore_p(alarm_log_sem_id) == 0 && alarm_log_sem_id != first &&
               value_of(alarm_log_sem_id) == 0 && semaphore_v(alarm_log_sem_id) == 0;
    });
    ASSERT_TRUE(wait_for_waiters(first, 1));
    ASSERT_EQ(semctl(first, 0, IPC_RMID), 0);
    EXPECT_EQ(waiter.wait(), 0);
}

TEST_F(Semaphore, any_other_that_is_removed_while_somebody_waits_is_an_error)
{
    int id = -1;
    ASSERT_EQ(semaphore_create(&id, board_key, 1), 0);
    ASSERT_EQ(semaphore_p(id), 0);
    Process waiter([&] { return semaphore_p(id) < 0 && errno == EIDRM; });
    ASSERT_TRUE(wait_for_waiters(id, 1));
    ASSERT_EQ(semctl(id, 0, IPC_RMID), 0);
    EXPECT_EQ(waiter.wait(), 0);
}

TEST_F(Semaphore, a_signal_does_not_break_off_the_wait)
{
    int id = -1;
    ASSERT_EQ(semaphore_create(&id, board_key, 1), 0);
    ASSERT_EQ(semaphore_p(id), 0);
    Process waiter([&] {
        struct sigaction action {};
        action.sa_handler = [](int) {};
        sigaction(SIGUSR1, &action, nullptr);
        return semaphore_p(id) == 0 && semaphore_v(id) == 0;
    });
    ASSERT_TRUE(wait_for_waiters(id, 1));
    for (int i = 0; i < 5; ++i) {
        waiter.kill(SIGUSR1);
        ASSERT_TRUE(wait_for_waiters(id, 1)) << "the waiter came back";
    }
    EXPECT_EQ(semaphore_v(id), 0);
    EXPECT_EQ(waiter.wait(), 0);
}

TEST_F(Semaphore, it_keeps_the_threads_of_one_process_apart)
{
    int id = -1;
    ASSERT_EQ(semaphore_create(&id, board_key, 1), 0);
    long counter = 0;
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t)
        threads.emplace_back([&] {
            for (int i = 0; i < 500; ++i) {
                semaphore_p(id);
                ++counter;
                semaphore_v(id);
            }
        });
    for (auto &thread : threads)
        thread.join();
    EXPECT_EQ(counter, 2000);
}

TEST_F(Semaphore, bad_arguments_and_removed_ones_are_errors)
{
    int id = 12345;
    EXPECT_LT(semaphore_create(nullptr, board_key, 1), 0);
    EXPECT_LT(semaphore_create(&id, board_key, 0), 0);
    EXPECT_LT(semaphore_create(&id, board_key, 40000), 0);
    EXPECT_EQ(id, 12345);
    ASSERT_EQ(semaphore_create(&id, board_key, 1), 0);
    semctl(id, 0, IPC_RMID);
    EXPECT_LT(semaphore_p(id), 0);
    EXPECT_LT(semaphore_v(id), 0);
}
