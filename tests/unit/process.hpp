// SPDX-License-Identifier: GPL-2.0-or-later
// A child process of a test.
#pragma once

#include <csignal>
#include <functional>
#include <sys/wait.h>
#include <unistd.h>

class Process {
public:
    // The child ends with 0, or 1 when `body` returns false.
    explicit Process(const std::function<bool()> &body) : pid_(fork())
    {
        if (pid_ == 0)
            _exit(body() ? 0 : 1);
    }
    Process(const Process &) = delete;
    Process &operator=(const Process &) = delete;
    Process(Process &&other) noexcept : pid_(other.pid_) { other.pid_ = -1; }
    ~Process()
    {
        kill();
        wait();
    }
    void kill(int signal = SIGKILL) const
    {
        if (pid_ > 0)
            ::kill(pid_, signal);
    }
    // Exit status, or -1 when it was killed.
    int wait()
    {
        int status = 0;
        if (pid_ <= 0 || waitpid(pid_, &status, 0) != pid_)
            return -1;
        pid_ = -1;
        return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    }
    [[nodiscard]] pid_t pid() const { return pid_; }

private:
    pid_t pid_;
};
