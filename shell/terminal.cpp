// SPDX-License-Identifier: GPL-2.0-or-later
// The terminal of a session.
#include "shell/terminal.hpp"

#include "shell/failure.hpp"

#include <poll.h>
#include <sys/ioctl.h>
#include <sys/signalfd.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <cstring>

namespace diagsh {

namespace {

// Window changes and the signals that must not leave the terminal raw arrive as a descriptor.
base::Fd open_signals()
{
    sigset_t signals;
    sigemptyset(&signals);
    for (const int number : {SIGWINCH, SIGTERM, SIGHUP, SIGINT})
        sigaddset(&signals, number);
    sigprocmask(SIG_BLOCK, &signals, nullptr);
    base::Fd fd(::signalfd(-1, &signals, SFD_CLOEXEC | SFD_NONBLOCK));
    if (!fd)
        throw Failure(EX_OSERR, std::string("signalfd: ") + std::strerror(errno));
    return fd;
}

} // namespace

WindowSize terminal_size()
{
    winsize size{};
    if (::ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) != 0 || size.ws_col == 0 || size.ws_row == 0)
        return {};
    return {size.ws_col, size.ws_row};
}

bool write_all(int fd, std::string_view bytes)
{
    while (!bytes.empty()) {
        const ssize_t written = ::write(fd, bytes.data(), bytes.size());
        if (written < 0 && errno == EINTR)
            continue;
        if (written <= 0)
            return false;
        bytes.remove_prefix(static_cast<std::size_t>(written));
    }
    return true;
}

Terminal::Terminal(Newlines newlines) : m_signals(open_signals())
{
    if (::tcgetattr(STDIN_FILENO, &m_saved) != 0)
        throw Failure(EX_IOERR, "standard input is no terminal");
    std::signal(SIGPIPE, SIG_IGN);
    m_raw = m_saved;
    ::cfmakeraw(&m_raw);
    if (newlines == Newlines::translated)
        m_raw.c_oflag |= OPOST | ONLCR;
    take();
}

Terminal::~Terminal()
{
    ::tcsetattr(STDIN_FILENO, TCSADRAIN, &m_saved);
}

void Terminal::take()
{
    ::tcsetattr(STDIN_FILENO, TCSADRAIN, &m_raw);
}

Terminal::Event Terminal::wait(int peer, int second) const
{
    std::array<pollfd, 4> sources{pollfd{m_signals.get(), POLLIN, 0}, pollfd{STDIN_FILENO, POLLIN, 0},
                                  pollfd{peer, POLLIN, 0}, pollfd{second, POLLIN, 0}};
    for (;;) {
        if (!m_keys.empty())
            return Event::keys;
        if (::poll(sources.data(), sources.size(), -1) < 0)
            continue;
        signalfd_siginfo info{};
        if (sources[0].revents != 0 && ::read(m_signals.get(), &info, sizeof info) == sizeof info)
            return info.ssi_signo == SIGWINCH ? Event::window : Event::end;
        if (sources[1].revents != 0)
            return Event::keys;
        if (sources[2].revents != 0)
            return Event::peer;
        if (sources[3].revents != 0)
            return Event::second;
    }
}

std::string Terminal::read_keys()
{
    if (!m_keys.empty())
        return std::exchange(m_keys, {});
    std::array<char, 1024> chunk;
    ssize_t got = 0;
    while ((got = ::read(STDIN_FILENO, chunk.data(), chunk.size())) < 0 && errno == EINTR) {
    }
    return {chunk.data(), got < 0 ? 0 : static_cast<std::size_t>(got)};
}

std::optional<char> Terminal::read_key()
{
    for (;;) {
        const Event event = wait(-1);
        if (event == Event::window)
            continue;
        std::string keys = event == Event::keys ? read_keys() : std::string();
        if (keys.empty())
            return std::nullopt;
        const char first = keys.front();
        put_back(keys.erase(0, 1));
        return first;
    }
}

} // namespace diagsh
