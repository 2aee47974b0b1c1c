// SPDX-License-Identifier: GPL-2.0-or-later
// Shell lines, run for a vty and by themselves.
#include "printing_vty.hpp"
#include "temporary_folder.hpp"
#include "tq_api.h"

#include <chrono>
#include <csignal>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

class Shell : public testing::Test {
protected:
    // What the vty shows of a line.
    std::string run(const std::string &line)
    {
        printed.text();
        status = system_cmd(&printed.session, line.c_str());
        return printed.text();
    }

    PrintingVty printed;
    int status = 0;
    TemporaryFolder folder;
};

int open_descriptors()
{
    int count = 0;
    for ([[maybe_unused]] const auto &entry : std::filesystem::directory_iterator("/proc/self/fd"))
        ++count;
    return count;
}

} // namespace

TEST_F(Shell, both_outputs_go_to_the_vty)
{
    EXPECT_EQ(run("echo out; echo error >&2; printf 'no end of line'"), "out\nerror\nno end of line");
    EXPECT_EQ(status, 0);
}

TEST_F(Shell, the_line_is_run_by_a_shell)
{
    EXPECT_EQ(run("for i in 1 2 3; do echo $i; done | tail -n 2"), "2\n3\n");
}

TEST_F(Shell, the_exit_status_comes_back)
{
    run("exit 3");
    EXPECT_EQ(WEXITSTATUS(status), 3);
    run("no-such-program-here");
    EXPECT_EQ(WEXITSTATUS(status), 127);
    run("kill -9 $$");
    EXPECT_TRUE(WIFSIGNALED(status));
}

TEST_F(Shell, output_larger_than_any_buffer_arrives_whole)
{
    std::string expected;
    for (int i = 1; i <= 50000; ++i)
        expected += std::to_string(i) + "\n";
    EXPECT_EQ(run("seq 50000"), expected);
    EXPECT_EQ(run("head -c 100000 /dev/zero | tr '\\0' x"), std::string(100000, 'x'));
}

TEST_F(Shell, bytes_of_zero_are_left_out_and_percent_signs_are_not_a_format)
{
    EXPECT_EQ(run("printf 'a\\0\\0b%%s%%n\\0'"), "ab%s%n");
    EXPECT_EQ(run("head -c 5000 /dev/zero"), "");
}

TEST_F(Shell, a_program_that_reads_finds_the_end_at_once)
{
    EXPECT_EQ(run("cat; echo done"), "done\n");
}

TEST_F(Shell, what_stays_in_the_background_does_not_hold_the_command)
{
    const auto begin = std::chrono::steady_clock::now();
    const std::string text = run("sleep 30 & echo $!");
    ASSERT_FALSE(text.empty());
    EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(10));
    kill(static_cast<pid_t>(std::stol(text)), SIGKILL);
}

TEST_F(Shell, a_program_inherits_no_descriptor_and_no_blocked_or_ignored_signal)
{
    const int kept = open("/dev/null", O_RDONLY); // not close-on-exec, as the daemon's sockets
    sigset_t blocked;
    sigset_t before;
    sigemptyset(&blocked);
    sigaddset(&blocked, SIGTERM);
    sigprocmask(SIG_BLOCK, &blocked, &before);
    auto *const old_handler = signal(SIGPIPE, SIG_IGN);
    EXPECT_EQ(run("ls /proc/self/fd | wc -l"), "4\n"); // three, and the folder itself
    for (const char *name : {"PIPE", "TERM"}) {
        EXPECT_EQ(run(std::string("kill -") + name + " $$; echo survived"), "");
        EXPECT_TRUE(WIFSIGNALED(status)) << name;
    }
    signal(SIGPIPE, old_handler);
    sigprocmask(SIG_SETMASK, &before, nullptr);
    close(kept);
}

TEST_F(Shell, no_descriptor_and_no_child_is_left_behind)
{
    const int before = open_descriptors();
    for (int i = 0; i < 20; ++i)
        run("echo x");
    EXPECT_EQ(open_descriptors(), before);
    EXPECT_EQ(waitpid(-1, nullptr, WNOHANG), -1);
    EXPECT_EQ(errno, ECHILD);
}

TEST_F(Shell, nothing_to_run_is_an_error)
{
    EXPECT_EQ(system_cmd(nullptr, "echo x"), -1);
    EXPECT_EQ(system_cmd(&printed.session, nullptr), -1);
    EXPECT_EQ(pal_system(nullptr), -1);
}

TEST_F(Shell, a_line_without_a_vty_runs_to_its_end)
{
    const std::string file = folder.file("made");
    EXPECT_EQ(pal_system(("echo text > " + file).c_str()), 0);
    std::ifstream made(file);
    std::string text;
    std::getline(made, text);
    EXPECT_EQ(text, "text");
    EXPECT_EQ(WEXITSTATUS(pal_system("exit 7")), 7);
}
