// SPDX-License-Identifier: GPL-2.0-or-later
// Shell runners.
// Failure policy: a shell that cannot be started is -1 with errno set.  The wait ends with the shell, not
// with what it left in the background, so `daemon &` never holds the caller.
#include "descriptor.hpp"
#include "tq_api.h"
#include "tq_trace.hpp"

#include <zebra.h>

#include <vty.h>

#include <cerrno>
#include <csignal>
#include <cstring>
#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

// Starts "/bin/sh -c line" with the caller's environment and default signals, and with none of its other
// descriptors: a tool must not keep the daemon's sockets open.  With `output` its two outputs go there and it
// has no input.
pid_t start_shell(const char *line, int output) noexcept
{
    posix_spawn_file_actions_t files;
    posix_spawnattr_t attributes;
    posix_spawn_file_actions_init(&files);
    posix_spawnattr_init(&attributes);
    if (output >= 0) {
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
    posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF);

    char shell[] = "sh";
    char option[] = "-c";
    char *const arguments[] = {shell, option, const_cast<char *>(line), nullptr};
    pid_t pid = -1;
    const int error = posix_spawn(&pid, "/bin/sh", &files, &attributes, arguments, environ);
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

// Copies what the tool prints until it has closed its outputs, or has ended and nothing is left.
void copy_output(struct vty *vty, int from, int process) noexcept
{
    LineBuffer lines(vty);
    pollfd watched[] = {{from, POLLIN, 0}, {process, POLLIN, 0}};
    for (;;) {
        const bool ended = watched[1].revents != 0;
        const ssize_t size = lines.fill(from);
        if (size > 0 || (size < 0 && errno == EINTR))
            continue;
        if (size == 0 || errno != EAGAIN || ended)
            break;
        if (poll(watched, 2, -1) < 0 && errno != EINTR)
            break;
    }
    lines.flush();
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
    board::Descriptor from(ends[0]);
    board::Descriptor to(ends[1]);
    const pid_t pid = start_shell(line, to.get());
    if (pid < 0)
        return -1;
    to.reset();
    fcntl(from.get(), F_SETFL, O_NONBLOCK);
    // Without it (an old kernel) the wait ends with the last holder of the outputs.
    const board::Descriptor process(static_cast<int>(syscall(SYS_pidfd_open, pid, 0)));
    copy_output(vty, from.get(), process.get());
    from.reset(); // whoever still prints must not wait for a reader
    return wait_for(pid);
}

int run(const char *line) noexcept
{
    if (!line) {
        errno = EINVAL;
        return -1;
    }
    const pid_t pid = start_shell(line, -1);
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
