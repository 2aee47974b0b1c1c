// SPDX-License-Identifier: GPL-2.0-or-later
// Shell lines, run for a vty and by themselves.
#include "tests/unit/platform/log_target.hpp"
#include "tests/unit/printing_vty.hpp"
#include "tests/unit/temporary_folder.hpp"
#include "tq_api.h"

#include <chrono>
#include <csignal>
#include <ctime>
#include <fcntl.h>
#include <fstream>
#include <gtest/gtest.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <thread>
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

// While it lives and the file is there, time passes a hundred seconds at each look at the clock.
class Haste {
public:
    explicit Haste(const std::string &file)
    {
        ahead_s = 0;
        begin = file;
    }
    ~Haste() { begin.clear(); }
    Haste(const Haste &) = delete;
    Haste &operator=(const Haste &) = delete;

    static long passed_s() { return begin.empty() || access(begin.c_str(), F_OK) != 0 ? 0 : ahead_s += 100; }

private:
    static inline std::string begin;
    static inline long ahead_s;
};

// One that has ended may still wait for its new parent to take note.
bool is_running(pid_t pid)
{
    std::string text;
    std::getline(std::ifstream("/proc/" + std::to_string(pid) + "/stat"), text);
    const std::size_t name_end = text.rfind(')');
    return name_end != text.npos && text.find_first_of("ZX", name_end) != name_end + 2;
}

int open_descriptors()
{
    int count = 0;
    for ([[maybe_unused]] const auto &entry : std::filesystem::directory_iterator("/proc/self/fd"))
        ++count;
    return count;
}

} // namespace

// What the C++ library's clocks read.
extern "C" int clock_gettime(clockid_t clock, struct timespec *time) noexcept
{
    const auto result = static_cast<int>(syscall(SYS_clock_gettime, clock, time));
    time->tv_sec += Haste::passed_s();
    return result;
}

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

TEST_F(Shell, a_program_has_a_plain_terminal_for_its_input_and_none_for_its_output)
{
    setenv("TERM", "xterm", 1);
    EXPECT_EQ(run("test -t 0 && test ! -t 1 && test ! -t 2 && echo $TERM"), "dumb\n");
}

TEST_F(Shell, a_program_that_asks_for_a_key_goes_on_without)
{
    EXPECT_EQ(run("stty -icanon -echo min 0; head -c 1 | wc -c"), "0\n");
}

TEST_F(Shell, what_was_printed_reaches_the_operator_while_the_program_waits)
{
    int ends[2];
    ASSERT_EQ(pipe2(ends, O_CLOEXEC | O_NONBLOCK), 0);
    printed.session.wfd = ends[1];
    vty_out(&printed.session, "due before\n");
    // The program ends when the other side has told that it read all there is.
    const std::string seen = folder.file("seen");
    std::thread operator_([&] {
        std::string text;
        char buffer[100];
        while (text != "due before\nfirst\n")
            if (const ssize_t size = read(ends[0], buffer, sizeof buffer); size > 0)
                text.append(buffer, static_cast<std::size_t>(size));
        std::ofstream(seen).put('x');
    });
    const int result = system_cmd(
        &printed.session, ("echo first; until [ -e " + seen + " ]; do sleep 0.01; done; echo last").c_str());
    operator_.join();
    EXPECT_EQ(result, 0);
    EXPECT_EQ(printed.text(), "last\n");
    close(ends[0]);
    close(ends[1]);
}

TEST_F(Shell, what_hangs_is_killed_with_all_it_started)
{
    const LogTarget log;
    LogTarget::lines.clear();
    const std::string file = folder.file("pid");
    for (const std::string hold : {"", "exec >&- 2>&-; "}) {
        std::filesystem::remove(file);
        const Haste haste{file};
        EXPECT_EQ(run("echo begun; " + hold + "sleep 1000 & echo $! >" + file + "; wait"), "begun\n");
        EXPECT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == SIGKILL) << status;
        pid_t child = 0;
        std::ifstream(file) >> child;
        ASSERT_GT(child, 0);
        while (is_running(child))
            std::this_thread::yield();
    }
    ASSERT_EQ(LogTarget::lines.size(), 2u);
    for (const auto &[priority, text] : LogTarget::lines) {
        EXPECT_EQ(priority, LOG_WARNING);
        EXPECT_TRUE(text.ends_with("' takes too long: killed")) << text;
    }
}

TEST_F(Shell, what_prints_without_end_is_killed)
{
    const LogTarget log;
    LogTarget::lines.clear();
    run("yes");
    ASSERT_EQ(LogTarget::lines.size(), 1u);
    EXPECT_TRUE(LogTarget::lines[0].second.ends_with("'yes' prints too much: killed"));
    EXPECT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == SIGKILL) << status;
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
