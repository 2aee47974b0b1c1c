// SPDX-License-Identifier: GPL-2.0-or-later
// Shell lines of the CPLD's upgrade.
#include "diagd/core/child_programs.hpp"
#include "diagd/cpld/shell_runner.hpp"
#include "tests/unit/temporary_folder.hpp"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <thread>

using diagd::run_dropping_output;
using diagd::run_shell_line;
using diagd::run_to_its_end;
using diagd::RunBounds;
using namespace std::chrono_literals;

namespace {

void ignore_children(int) {}

// What the work prints on standard output.
template <class Work>
std::string printed_by(Work work)
{
    testing::internal::CaptureStdout();
    work();
    return testing::internal::GetCapturedStdout();
}

int descriptors()
{
    int count = 0;
    for ([[maybe_unused]] const auto &entry : std::filesystem::directory_iterator("/proc/self/fd"))
        ++count;
    return count;
}

} // namespace

TEST(ShellRunner, a_line_that_succeeds_is_0_and_silent)
{
    EXPECT_EQ(printed_by([] { EXPECT_EQ(run_dropping_output("echo dropped"), 0); }), "");
}

TEST(ShellRunner, a_status_is_returned_and_told)
{
    EXPECT_EQ(printed_by([] { EXPECT_EQ(run_dropping_output("exit 3"), 3 << 8); }), "popen res is :768\n");
}

TEST(ShellRunner, a_program_that_is_killed_is_a_status)
{
    EXPECT_EQ(printed_by([] { EXPECT_EQ(run_dropping_output("kill -KILL $$"), SIGKILL); }),
              "popen res is :9\n");
}

TEST(ShellRunner, any_amount_of_output_is_taken)
{
    EXPECT_EQ(printed_by([] { EXPECT_EQ(run_dropping_output("head -c 3000000 /dev/zero; seq 100000"), 0); }),
              "");
}

TEST(ShellRunner, a_line_that_cannot_be_started_is_told_without_a_line_feed)
{
    std::string told;
    const int result = [&] {
        int status = 0;
        told = printed_by([&] {
            rlimit limit{};
            getrlimit(RLIMIT_NOFILE, &limit);
            const rlimit none{3, limit.rlim_max};
            setrlimit(RLIMIT_NOFILE, &none);
            status = run_dropping_output("true");
            setrlimit(RLIMIT_NOFILE, &limit);
        });
        return status;
    }();
    EXPECT_EQ(result, -1);
    EXPECT_EQ(told, "popen error: Too many open files/n");
}

TEST(ShellRunner, the_shell_leads_a_process_group_of_its_own)
{
    const TemporaryFolder folder;
    EXPECT_EQ(run_dropping_output("ps -o pid=,pgid= -p $$ > " + folder.file("ids")), 0);
    std::ifstream ids{folder.file("ids")};
    pid_t pid = 0, group = 0;
    ids >> pid >> group;
    EXPECT_GT(pid, 0);
    EXPECT_EQ(group, pid);
    EXPECT_NE(group, getpgrp());
}

TEST(ShellRunner, what_stays_within_its_bounds_is_left_alone)
{
    const TemporaryFolder folder;
    const RunBounds bounds{.total = 60s, .file = folder.file("f"), .standstill = 60s};
    EXPECT_EQ(printed_by([&] {
                  EXPECT_EQ(run_dropping_output("echo > " + bounds.file + "; exit 3", bounds), 3 << 8);
              }),
              "popen res is :768\n");
}

TEST(ShellRunner, a_program_whose_file_does_not_grow_is_ended)
{
    const TemporaryFolder folder;
    const RunBounds bounds{
        .total = 600s, .file = folder.write("f", "as long as it will be"), .standstill = 50ms};
    EXPECT_EQ(printed_by([&] { EXPECT_EQ(run_dropping_output("sleep 600", bounds), SIGKILL); }),
              "popen res is :9\n");
}

TEST(ShellRunner, a_program_that_never_makes_its_file_is_ended)
{
    const TemporaryFolder folder;
    const RunBounds bounds{.total = 600s, .file = folder.file("f"), .standstill = 50ms};
    EXPECT_EQ(printed_by([&] { EXPECT_EQ(run_dropping_output("sleep 600", bounds), SIGKILL); }),
              "popen res is :9\n");
}

// It writes for several times as long as it may pause, and stops.
TEST(ShellRunner, growing_puts_the_end_off)
{
    const TemporaryFolder folder;
    const std::string file =
        folder.write("f", "what an earlier download left, and is longer than the new one");
    const RunBounds bounds{.total = 600s, .file = file, .standstill = 2s};
    const std::string line = "printf x > " + file +
                             "; for i in 1 2 3 4 5 6 7 8 9 10; do sleep 0.5; printf x >> " + file + "; done";
    EXPECT_EQ(printed_by([&] { EXPECT_EQ(run_dropping_output(line, bounds), 0); }), "");
}

TEST(ShellRunner, no_program_takes_longer_than_it_may_in_all)
{
    const TemporaryFolder folder;
    const std::string grows = "while :; do echo >> " + folder.file("f") + "; sleep 0.01; done";
    const RunBounds bounds{.total = 300ms, .file = folder.file("f"), .standstill = 600s};
    EXPECT_EQ(printed_by([&] { EXPECT_EQ(run_dropping_output(grows, bounds), SIGKILL); }),
              "popen res is :9\n");
    const RunBounds no_file{.total = 50ms};
    EXPECT_EQ(printed_by([&] { EXPECT_EQ(run_dropping_output("sleep 600", no_file), SIGKILL); }),
              "popen res is :9\n");
}

TEST(ShellRunner, an_end_is_that_of_the_whole_group)
{
    const TemporaryFolder folder;
    const std::string held = folder.write("held", "");
    // Each of them holds a lock for as long as it lives, the one behind the pipe and the one in the
    // background, too.
    const std::string locked = "flock -s " + held + " sleep 600";
    const RunBounds bounds{.total = 600s, .file = folder.file("f"), .standstill = 300ms};
    EXPECT_EQ(printed_by([&] { run_dropping_output(locked + " & " + locked + " | " + locked, bounds); }),
              "popen res is :9\n");
    const int file = ::open(held.c_str(), O_RDONLY | O_CLOEXEC);
    const auto deadline = std::chrono::steady_clock::now() + 30s;
    int locked_alone = -1;
    while ((locked_alone = ::flock(file, LOCK_EX | LOCK_NB)) != 0 &&
           std::chrono::steady_clock::now() < deadline)
        std::this_thread::yield();
    EXPECT_EQ(locked_alone, 0) << "somebody of the group lives";
    ::close(file);
}

TEST(ShellRunner, nobody_can_refuse_to_end)
{
    const TemporaryFolder folder;
    const RunBounds bounds{.total = 50ms};
    const std::string line = "trap '' TERM HUP INT; sleep 3; touch " + folder.file("went_on");
    EXPECT_EQ(printed_by([&] { EXPECT_EQ(run_dropping_output(line, bounds), SIGKILL); }),
              "popen res is :9\n");
    EXPECT_FALSE(std::filesystem::exists(folder.file("went_on")));
}

TEST(ShellRunner, one_who_left_his_shell_is_ended_too_and_counts_as_the_shell)
{
    const TemporaryFolder folder;
    const RunBounds bounds{.total = 600s, .file = folder.file("f"), .standstill = 300ms};
    EXPECT_EQ(printed_by([&] { EXPECT_EQ(run_dropping_output("sleep 600 & exit 0", bounds), SIGKILL); }),
              "popen res is :9\n");
}

TEST(ShellRunner, handling_of_child_signals_is_default_meanwhile_and_restored)
{
    // With SIGCHLD ignored there would be no status to wait for.
    std::signal(SIGCHLD, SIG_IGN);
    EXPECT_EQ(printed_by([] { EXPECT_EQ(run_dropping_output("exit 1"), 1 << 8); }), "popen res is :256\n");
    EXPECT_EQ(std::signal(SIGCHLD, ignore_children), SIG_IGN);
    EXPECT_EQ(run_dropping_output("true"), 0);
    run_to_its_end("false");
    EXPECT_EQ(std::signal(SIGCHLD, SIG_DFL), ignore_children);
}

TEST(ShellRunner, handling_is_restored_by_the_last_of_several_threads)
{
    const TemporaryFolder folder;
    std::signal(SIGCHLD, SIG_IGN);
    const std::string line =
        "cd " + folder.path() + "; touch begun; until [ -e go ]; do sleep 0.01; done; exit 7";
    int status = -1;
    std::thread other{[&] { status = run_shell_line(line.c_str()); }};
    while (!std::filesystem::exists(folder.file("begun")))
        std::this_thread::yield();
    EXPECT_EQ(run_dropping_output("true"), 0);
    struct sigaction handling {};
    sigaction(SIGCHLD, nullptr, &handling);
    EXPECT_EQ(handling.sa_handler, SIG_DFL) << "the other still waits";
    folder.write("go", "");
    other.join();
    EXPECT_EQ(status, 7 << 8);
    EXPECT_EQ(std::signal(SIGCHLD, SIG_DFL), SIG_IGN);
}

TEST(ShellRunner, handling_is_restored_when_nothing_could_be_started)
{
    std::signal(SIGCHLD, ignore_children);
    rlimit limit{};
    getrlimit(RLIMIT_NOFILE, &limit);
    const rlimit none{3, limit.rlim_max};
    testing::internal::CaptureStdout();
    setrlimit(RLIMIT_NOFILE, &none);
    EXPECT_EQ(run_dropping_output("true"), -1);
    setrlimit(RLIMIT_NOFILE, &limit);
    testing::internal::GetCapturedStdout();
    EXPECT_EQ(std::signal(SIGCHLD, SIG_DFL), ignore_children);
}

TEST(ShellRunner, a_program_holds_nothing_of_ours)
{
    const TemporaryFolder folder;
    const std::string list = folder.file("list");
    const int held = ::open(folder.write("held", "").c_str(), O_RDONLY); // inherited, as libraries leave them
    const auto seen = [&] {
        std::ifstream file{list};
        return std::string{std::istreambuf_iterator<char>{file}, {}};
    };
    const std::string line = "ls -l /proc/self/fd > " + list;
    ASSERT_EQ(std::system(line.c_str()), 0);
    EXPECT_NE(seen().find("/held"), std::string::npos);
    run_dropping_output(line);
    EXPECT_NE(seen().find("/list"), std::string::npos);
    EXPECT_EQ(seen().find("/held"), std::string::npos);
    run_to_its_end(line);
    EXPECT_NE(seen().find("/list"), std::string::npos);
    EXPECT_EQ(seen().find("/held"), std::string::npos);
    ::close(held);
}

TEST(ShellRunner, leaves_no_descriptor_behind)
{
    run_dropping_output("true");
    const int before = descriptors();
    for (int i = 0; i < 20; ++i) {
        EXPECT_EQ(run_dropping_output("true"), 0);
        run_to_its_end("true");
    }
    EXPECT_EQ(descriptors(), before);
}
