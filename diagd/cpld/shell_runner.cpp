// SPDX-License-Identifier: GPL-2.0-or-later
// Shell lines of the CPLD's upgrade; the failure policy stands in shell_runner.hpp.
#include "diagd/cpld/shell_runner.hpp"

#include "base/fd.hpp"
#include "diagd/core/child_programs.hpp"

#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>

namespace diagd {

namespace {

using Clock = std::chrono::steady_clock;

// Says when a program has exceeded its bounds.
class Watch {
public:
    explicit Watch(const RunBounds &bounds) noexcept
        : bounds_(bounds), started_(Clock::now()), grown_(started_), size_(file_size())
    {
    }

    bool is_exceeded() noexcept
    {
        const Clock::time_point now = Clock::now();
        if (now - started_ >= bounds_.total)
            return true;
        if (bounds_.file.empty())
            return false;
        const off_t size = file_size();
        if (size > size_)
            grown_ = now;
        size_ = size; // a file that is begun again from its start may grow to less than it was
        return now - grown_ >= bounds_.standstill;
    }

private:
    [[nodiscard]] off_t file_size() const noexcept
    {
        struct stat status {};
        return !bounds_.file.empty() && ::stat(bounds_.file.c_str(), &status) == 0 ? status.st_size : 0;
    }

    const RunBounds &bounds_;
    Clock::time_point started_;
    Clock::time_point grown_;
    off_t size_;
};

// What popen would start, as the leader of a process group; `output` then reads what it prints.  -1 with
// errno when it cannot be started.
pid_t start_shell(const std::string &line, base::Fd &output) noexcept
{
    int ends[2];
    if (::pipe2(ends, O_CLOEXEC) < 0)
        return -1;
    output = base::Fd{ends[0]};
    const base::Fd write_end{ends[1]};

    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, write_end.get(), STDOUT_FILENO);
    posix_spawnattr_t attributes;
    posix_spawnattr_init(&attributes);
    posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETPGROUP);
    posix_spawnattr_setpgroup(&attributes, 0);

    std::string shell = "sh", option = "-c", text = line;
    char *const arguments[] = {shell.data(), option.data(), text.data(), nullptr};
    pid_t pid = -1;
    const int error = posix_spawn(&pid, "/bin/sh", &actions, &attributes, arguments, environ);
    posix_spawnattr_destroy(&attributes);
    posix_spawn_file_actions_destroy(&actions);
    errno = error;
    return error == 0 ? pid : -1;
}

// Reads until nobody can write any more; false when the watch, if there is one, has seen enough before.
bool drain(const base::Fd &output, Watch *watch) noexcept
{
    constexpr int look_every_ms = 100;
    char text[1024];
    for (;;) {
        pollfd waiting{.fd = output.get(), .events = POLLIN, .revents = 0};
        const int ready = ::poll(&waiting, 1, watch != nullptr ? look_every_ms : -1);
        if (ready > 0 && ::read(output.get(), text, sizeof text) <= 0)
            return true;
        if (watch != nullptr && watch->is_exceeded())
            return false;
    }
}

int run(const std::string &line, Watch *watch) noexcept
{
    const ChildSignals signals;
    keep_descriptors();
    base::Fd output;
    const pid_t shell = start_shell(line, output);
    if (shell < 0) {
        std::printf("popen error: %s/n", std::strerror(errno));
        std::fflush(stdout); // no line end
        return -1;
    }
    const bool ended_by_itself = drain(output, watch);
    if (!ended_by_itself)
        ::kill(-shell, SIGKILL);
    int status = 0;
    pid_t waited = -1;
    do
        waited = ::waitpid(shell, &status, 0);
    while (waited < 0 && errno == EINTR);
    if (waited < 0) {
        std::perror("pclose");
        return -1;
    }
    if (!ended_by_itself)
        status = SIGKILL; // even if only what it had started was left to be ended
    if (status != 0)
        std::printf("popen res is :%d\n", status);
    return status;
}

} // namespace

int run_dropping_output(const std::string &line) noexcept
{
    return run(line, nullptr);
}

int run_dropping_output(const std::string &line, const RunBounds &bounds) noexcept
{
    Watch watch{bounds};
    return run(line, &watch);
}

void run_to_its_end(const std::string &line) noexcept
{
    if (run_shell_line(line.c_str()) == -1)
        std::perror("system");
}

} // namespace diagd
