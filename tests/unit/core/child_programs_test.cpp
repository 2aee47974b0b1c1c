// SPDX-License-Identifier: GPL-2.0-or-later
// How the daemon hears of the end of programs that it runs.
#include "diagd/core/child_programs.hpp"

#include <gtest/gtest.h>
#include <sys/wait.h>

#include <csignal>
#include <memory>

using diagd::ChildSignals;

namespace {

bool ends_are_ignored()
{
    struct sigaction now {};
    sigaction(SIGCHLD, nullptr, &now);
    return now.sa_handler == SIG_IGN;
}

bool is_blocked(int number)
{
    sigset_t mask;
    pthread_sigmask(SIG_SETMASK, nullptr, &mask);
    return sigismember(&mask, number) == 1;
}

class ChildPrograms : public testing::Test {
protected:
    void SetUp() override { std::signal(SIGCHLD, SIG_IGN); }
    void TearDown() override { std::signal(SIGCHLD, SIG_DFL); }
};

} // namespace

TEST_F(ChildPrograms, the_last_of_several_users_puts_the_handling_back_that_the_first_one_found)
{
    auto first = std::make_unique<ChildSignals>();
    auto second = std::make_unique<ChildSignals>();
    EXPECT_FALSE(ends_are_ignored());
    first.reset();
    EXPECT_FALSE(ends_are_ignored()) << "the other one still waits for a program";
    second.reset();
    EXPECT_TRUE(ends_are_ignored());
}

TEST_F(ChildPrograms, a_program_sees_no_signal_blocked_and_the_thread_its_own_mask_afterwards)
{
    sigset_t interrupt;
    sigemptyset(&interrupt);
    sigaddset(&interrupt, SIGINT);
    pthread_sigmask(SIG_BLOCK, &interrupt, nullptr);
    {
        const ChildSignals signals;
        EXPECT_FALSE(is_blocked(SIGINT));
    }
    EXPECT_TRUE(is_blocked(SIGINT));
    pthread_sigmask(SIG_UNBLOCK, &interrupt, nullptr);
}

TEST_F(ChildPrograms, the_status_of_a_shell_line_is_the_shells_though_ends_are_ignored)
{
    const int status = diagd::run_shell_line("exit 7");
    ASSERT_TRUE(WIFEXITED(status));
    EXPECT_EQ(WEXITSTATUS(status), 7);
    EXPECT_TRUE(ends_are_ignored());
}
