// SPDX-License-Identifier: GPL-2.0-or-later
// The interactive session: the terminal and the daemon's telnet vty, passed through to each other.
// When the daemon goes away the terminal is given back as it was.
#include "shell/modes.hpp"

#include "base/fd.hpp"
#include "shell/failure.hpp"
#include "shell/paths.hpp"
#include "shell/telnet_decoder.hpp"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <sys/signalfd.h>
#include <sys/socket.h>
#include <termios.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <string_view>

namespace diagsh {

namespace {

constexpr char leave_key = 0x1D; // Control-], as in every telnet
constexpr std::string_view password_prompt = "Password: ";

// The terminal without echo and line editing of its own, until the end of the scope.
class RawTerminal {
public:
    RawTerminal()
    {
        if (::tcgetattr(STDIN_FILENO, &m_saved) != 0)
            throw Failure(EX_IOERR, "standard input is no terminal");
        termios raw = m_saved;
        ::cfmakeraw(&raw);
        ::tcsetattr(STDIN_FILENO, TCSADRAIN, &raw);
    }
    ~RawTerminal() { ::tcsetattr(STDIN_FILENO, TCSADRAIN, &m_saved); }
    RawTerminal(const RawTerminal &) = delete;
    RawTerminal &operator=(const RawTerminal &) = delete;

private:
    termios m_saved{};
};

base::Fd connect_to_vty()
{
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(vty_port);
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    base::Fd fd(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0));
    if (!fd || ::connect(fd.get(), reinterpret_cast<const sockaddr *>(&address), sizeof address) != 0)
        throw Failure(EX_UNAVAILABLE,
                      "no daemon answers on port " + std::to_string(vty_port) + ": " + std::strerror(errno));
    return fd;
}

// Window changes and the signals that must not leave the terminal raw arrive as a descriptor.
base::Fd open_signals()
{
    sigset_t signals;
    sigemptyset(&signals);
    for (const int number : {SIGWINCH, SIGTERM, SIGHUP, SIGINT})
        sigaddset(&signals, number);
    sigprocmask(SIG_BLOCK, &signals, nullptr);
    base::Fd fd(::signalfd(-1, &signals, SFD_CLOEXEC));
    if (!fd)
        throw Failure(EX_OSERR, std::string("signalfd: ") + std::strerror(errno));
    return fd;
}

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

class Session {
public:
    explicit Session(const std::string &password)
        : m_socket(connect_to_vty()), m_signals(open_signals()), m_password(password)
    {
        std::signal(SIGPIPE, SIG_IGN);
    }

    void run()
    {
        const RawTerminal raw;
        std::array<pollfd, 3> sources{pollfd{STDIN_FILENO, POLLIN, 0}, pollfd{m_socket.get(), POLLIN, 0},
                                      pollfd{m_signals.get(), POLLIN, 0}};
        bool open = true;
        while (open) {
            if (::poll(sources.data(), sources.size(), -1) < 0)
                continue;
            if (sources[2].revents != 0)
                open = on_signal();
            if (open && sources[1].revents != 0)
                open = on_daemon();
            if (open && sources[0].revents != 0)
                open = on_typed();
        }
    }

private:
    bool on_signal()
    {
        signalfd_siginfo info{};
        if (::read(m_signals.get(), &info, sizeof info) != sizeof info || info.ssi_signo != SIGWINCH)
            return false;
        return !m_decoder.wants_window_size() ||
               write_all(m_socket.get(), window_size_message(terminal_size()));
    }

    bool on_daemon()
    {
        std::array<char, 4096> chunk;
        const ssize_t got = ::read(m_socket.get(), chunk.data(), chunk.size());
        if (got <= 0)
            return got < 0 && errno == EINTR;
        std::string replies;
        const std::string text =
            m_decoder.decode({chunk.data(), static_cast<std::size_t>(got)}, terminal_size(), replies);
        sign_in(text, replies);
        return write_all(STDOUT_FILENO, text) && write_all(m_socket.get(), replies);
    }

    void sign_in(const std::string &text, std::string &replies)
    {
        if (m_password.empty())
            return;
        m_seen += text;
        if (m_seen.size() > password_prompt.size())
            m_seen.erase(0, m_seen.size() - password_prompt.size()); // the prompt may come in pieces
        if (m_seen != password_prompt)
            return;
        replies += encode_typed(m_password) + "\r";
        m_password.clear();
    }

    bool on_typed()
    {
        std::array<char, 1024> chunk;
        const ssize_t got = ::read(STDIN_FILENO, chunk.data(), chunk.size());
        if (got <= 0)
            return got < 0 && errno == EINTR;
        const std::string_view typed(chunk.data(), static_cast<std::size_t>(got));
        // Whoever types is past the sign-in: a later prompt asks for another password, that of "enable".
        m_password.clear();
        return typed.find(leave_key) == std::string_view::npos &&
               write_all(m_socket.get(), encode_typed(typed));
    }

    base::Fd m_socket;
    base::Fd m_signals;
    std::string m_password;
    std::string m_seen; // end of the text so far, as long as the prompt
    TelnetDecoder m_decoder;
};

} // namespace

void run_interactive(const std::string &password)
{
    Session(password).run();
}

} // namespace diagsh
