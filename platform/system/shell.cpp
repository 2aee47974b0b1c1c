// SPDX-License-Identifier: GPL-2.0-or-later
// Shell runners.
// Failure policy: a shell that cannot be started is -1 with errno set.  The wait ends with the shell, not
// with what it left in the background, so `daemon &` never holds the caller.  Of a line run for a vty, what
// hangs or prints without end is killed, and the log says so.
#include "base/fd.hpp"
#include "platform/system/empty_terminal.hpp"
#include "platform/trace/tq_trace.hpp"
#include "tq_api.h"

#include <zebra.h>

#include <buffer.h>
#include <log.h>
#include <vty.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstring>
#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <span>
#include <string_view>
#include <vector>

namespace {

using Clock = std::chrono::steady_clock;

constexpr std::chrono::milliseconds settle_time{200}; // of silence, before what there is goes out
constexpr std::chrono::seconds longest_run{60};       // of a line for a vty: the daemon waits meanwhile
constexpr std::size_t most_output = 16 * 1024 * 1024; // it is kept in memory until the operator has it

// The caller's environment for a tool whose output goes to a vty, which shows no escape sequences.
std::vector<char *> plain_environment()
{
    static char plain_terminal[] = "TERM=dumb";
    std::vector<char *> environment{plain_terminal};
    for (char **entry = environ; *entry != nullptr; ++entry)
        if (!std::string_view{*entry}.starts_with("TERM="))
            environment.push_back(*entry);
    environment.push_back(nullptr);
    return environment;
}

// Starts "/bin/sh -c line" with the caller's environment and default signals, and with none of its other
// descriptors: a tool must not keep the daemon's sockets open.  With `output` its two outputs go there, its
// input is `terminal`, and it leads a process group of its own.
pid_t start_shell(const char *line, int output, int terminal) noexcept
{
    posix_spawn_file_actions_t files;
    posix_spawnattr_t attributes;
    posix_spawn_file_actions_init(&files);
    posix_spawnattr_init(&attributes);
    if (output >= 0) {
        if (terminal >= 0)
            posix_spawn_file_actions_adddup2(&files, terminal, STDIN_FILENO);
        else
            posix_spawn_file_actions_addopen(&files, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
        posix_spawn_file_actions_adddup2(&files, output, STDOUT_FILENO);
        posix_spawn_file_actions_adddup2(&files, output, STDERR_FILENO);
    }
    posix_spawn_file_actions_addclosefrom_np(&files, STDERR_FILENO + 1);
    sigset_t none;
    sigset_t all;
    sigemptyset(&none);
    sigfillset(&all);
    posix_spawnattr_setsigmask(&attributes, &none);
    posix_spawnattr_setsigdefault(&attributes, &all);
    posix_spawnattr_setflags(&attributes, static_cast<short>(POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF |
                                                             (output >= 0 ? POSIX_SPAWN_SETPGROUP : 0)));

    char shell[] = "sh";
    char option[] = "-c";
    char *const arguments[] = {shell, option, const_cast<char *>(line), nullptr};
    pid_t pid = -1;
    const int error = posix_spawn(&pid, "/bin/sh", &files, &attributes, arguments,
                                  output >= 0 ? plain_environment().data() : environ);
    posix_spawnattr_destroy(&attributes);
    posix_spawn_file_actions_destroy(&files);
    if (error != 0) {
        errno = error;
        return -1;
    }
    return pid;
}

int wait_for(pid_t pid) noexcept
{
    int status = 0;
    while (waitpid(pid, &status, 0) < 0)
        if (errno != EINTR)
            return -1;
    return status;
}

// vty_out takes texts, a tool may print anything: bytes of zero are left out.
void show(struct vty *vty, const char *data, std::size_t size) noexcept
{
    while (size > 0) {
        const std::size_t length = strnlen(data, size);
        if (length > 0)
            vty_out(vty, "%.*s", static_cast<int>(length), data);
        const std::size_t step = length < size ? length + 1 : size;
        data += step;
        size -= step;
    }
}

// Hands on what is read in whole lines, which is what a filter of the vty ("| include") works on.
class LineBuffer {
public:
    explicit LineBuffer(struct vty *vty) noexcept : vty_(vty) {}

    // As read(2), from a descriptor.
    ssize_t fill(int from) noexcept
    {
        const ssize_t size = read(from, buffer_ + used_, sizeof buffer_ - used_);
        if (size <= 0)
            return size;
        used_ += static_cast<std::size_t>(size);
        std::size_t begin = 0;
        while (const void *end = std::memchr(buffer_ + begin, '\n', used_ - begin)) {
            const auto next = static_cast<std::size_t>(static_cast<const char *>(end) - buffer_) + 1;
            show(vty_, buffer_ + begin, next - begin);
            begin = next;
        }
        if (begin == 0 && used_ == sizeof buffer_)
            begin = flush(); // a line longer than the buffer
        used_ -= begin;
        std::memmove(buffer_, buffer_ + begin, used_);
        return size;
    }
    // What is left without an end of line; its size.
    std::size_t flush() noexcept
    {
        show(vty_, buffer_, used_);
        return used_;
    }

private:
    struct vty *vty_;
    std::size_t used_ = 0;
    char buffer_[4096];
};

// What the vty holds goes to the operator now; it is sent by itself only when the command is done.
void send_output(struct vty *vty) noexcept
{
    if (vty->wfd >= 0)
        buffer_flush_available(vty->obuf, vty->wfd);
}

// As poll(2), until a point in time.
int poll_until(std::span<pollfd> watched, Clock::time_point end) noexcept
{
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(end - Clock::now());
    return poll(watched.data(), watched.size(), std::max(static_cast<int>(left.count()), 0));
}

// Copies what the tool prints until it has ended and nothing is left.  Returns what keeps it from that, null
// when nothing does.  Without `process`, closing its outputs is its end.
const char *copy_output(struct vty *vty, int from, int process) noexcept
{
    const Clock::time_point end = Clock::now() + longest_run;
    LineBuffer lines(vty);
    std::size_t copied = 0;
    bool is_sent = false;
    const char *fault = nullptr;
    pollfd watched[] = {{from, POLLIN, 0}, {process, POLLIN, 0}};
    for (;;) {
        const bool ended = watched[1].revents != 0;
        const ssize_t size = lines.fill(from);
        if (size > 0) {
            is_sent = false;
            copied += static_cast<std::size_t>(size);
            if (copied <= most_output)
                continue;
            fault = "prints too much";
            break;
        }
        if (size < 0 && errno == EINTR)
            continue;
        if (ended || (size < 0 && errno != EAGAIN) || (size == 0 && process < 0))
            break;
        if (size == 0)
            watched[0].fd = -1; // closed, which poll would report for ever
        // A quick tool's output is left to the vty, which may show it page by page.
        if (poll_until(watched, is_sent ? end : std::min(end, Clock::now() + settle_time)) == 0) {
            if (Clock::now() >= end) {
                fault = "takes too long";
                break;
            }
            send_output(vty);
            is_sent = true;
        }
    }
    lines.flush();
    return fault;
}

int run_for_vty(struct vty *vty, const char *line) noexcept
{
    if (!vty || !line) {
        errno = EINVAL;
        return -1;
    }
    int ends[2];
    if (pipe2(ends, O_CLOEXEC) < 0)
        return -1;
    base::Fd from(ends[0]);
    base::Fd to(ends[1]);
    const EmptyTerminal terminal;
    const pid_t pid = start_shell(line, to.get(), terminal.get());
    if (pid < 0)
        return -1;
    to.reset();
    fcntl(from.get(), F_SETFL, O_NONBLOCK);
    // Without it (an old kernel) the wait ends with the last holder of the outputs.
    const base::Fd process(static_cast<int>(syscall(SYS_pidfd_open, pid, 0)));
    if (const char *fault = copy_output(vty, from.get(), process.get())) {
        zlog_warn("'%s' %s: killed", line, fault);
        kill(-pid, SIGKILL);
    }
    from.reset(); // whoever still prints must not wait for a reader
    return wait_for(pid);
}

int run(const char *line) noexcept
{
    if (!line) {
        errno = EINVAL;
        return -1;
    }
    const pid_t pid = start_shell(line, -1, -1);
    return pid < 0 ? -1 : wait_for(pid);
}

} // namespace

int system_cmd(struct vty *vty, const char *line)
{
    return tq::traced(
        "system_cmd", [&] { return run_for_vty(vty, line); }, tq::arg("line", line));
}

int pal_system(const char *line)
{
    return tq::traced(
        "pal_system", [&] { return run(line); }, tq::arg("line", line));
}
