// SPDX-License-Identifier: GPL-2.0-or-later
// Shell lines of the CPLD's upgrade.
#include "diagd/core/child_programs.hpp"
#include "diagd/cpld/shell_runner.hpp"
#include "tests/unit/temporary_folder.hpp"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

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
