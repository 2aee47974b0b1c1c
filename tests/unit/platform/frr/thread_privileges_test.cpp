// SPDX-License-Identifier: GPL-2.0-or-later
// Privileges of libfrr in a process of several threads: each raises and lowers its own. Run as root; the
// process becomes user daemon.
#include <zebra.h>

#include <privs.h>

#include <barrier>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <thread>

namespace {

constexpr uid_t root = 0;
constexpr uid_t daemon_user = 1;

struct zebra_privs_t privileges = {.user = "daemon", .group = "daemon", .vty_group = "daemon"};

// Raises, runs, and lowers.
template <typename Work>
void raised(Work work)
{
    struct zebra_privs_t *held = _zprivs_raise(&privileges, "test");
    work();
    _zprivs_lower(&held);
}

class ThreadPrivileges : public testing::Test {
protected:
    static void SetUpTestSuite()
    {
        zprivs_preinit(&privileges);
        zprivs_init(&privileges);
    }
    static void TearDownTestSuite() { EXPECT_EQ(seteuid(root), 0); } // the search for leaks needs it
    void SetUp() override { ASSERT_EQ(geteuid(), daemon_user); }
    void TearDown() override { EXPECT_EQ(geteuid(), daemon_user); }
};

TEST_F(ThreadPrivileges, a_thread_that_raises_is_root_alone)
{
    std::barrier step{2};
    std::thread raiser{[&] {
        raised([&] {
            step.arrive_and_wait();
            step.arrive_and_wait();
        });
    }};
    step.arrive_and_wait();
    EXPECT_EQ(geteuid(), daemon_user);
    step.arrive_and_wait();
    raiser.join();
}

TEST_F(ThreadPrivileges, a_thread_that_lowers_takes_nothing_from_one_that_is_raised)
{
    raised([] {
        std::thread{[] {
            raised([] { EXPECT_EQ(geteuid(), root); });
            EXPECT_EQ(geteuid(), daemon_user);
        }}.join();
        EXPECT_EQ(geteuid(), root);
    });
}

TEST_F(ThreadPrivileges, a_raise_within_a_raise_ends_with_the_outer_one)
{
    raised([] {
        raised([] { EXPECT_EQ(geteuid(), root); });
        EXPECT_EQ(geteuid(), root);
    });
}

TEST_F(ThreadPrivileges, a_program_of_a_raised_thread_is_root)
{
    raised([] { EXPECT_EQ(WEXITSTATUS(system("[ $(id -u) = 0 ]")), 0); });
}

TEST_F(ThreadPrivileges, the_whole_process_can_become_root_and_lower_again)
{
    std::barrier step{2};
    std::thread other{[&] {
        step.arrive_and_wait();
        EXPECT_EQ(geteuid(), root);
        step.arrive_and_wait();
        step.arrive_and_wait();
        EXPECT_EQ(geteuid(), daemon_user);
    }};
    EXPECT_EQ(seteuid(root), 0);
    step.arrive_and_wait();
    step.arrive_and_wait();
    EXPECT_EQ(seteuid(daemon_user), 0);
    step.arrive_and_wait();
    other.join();
}

} // namespace
