// SPDX-License-Identifier: GPL-2.0-or-later
// The session of who may not use the vty socket: the terminal and the daemon's telnet vty, passed through to
// each other.  When the daemon goes away the terminal is given back as it was.
#include "shell/modes.hpp"

#include "base/fd.hpp"
#include "shell/failure.hpp"
#include "shell/key_map.hpp"
#include "shell/paths.hpp"
#include "shell/telnet_decoder.hpp"
#include "shell/terminal.hpp"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>

#include <array>
#include <cerrno>
#include <cstring>
#include <string_view>

namespace diagsh {

namespace {

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

class TelnetSession {
public:
    TelnetSession() : m_socket(connect_to_vty()), m_terminal(Terminal::Newlines::passed) {}

    void run()
    {
        for (bool open = true; open;) {
            switch (m_terminal.wait(m_socket.get())) {
            case Terminal::Event::keys:
                open = on_typed();
                break;
            case Terminal::Event::peer:
                open = on_daemon();
                break;
            case Terminal::Event::window:
                open = !m_decoder.wants_window_size() ||
                       write_all(m_socket.get(), window_size_message(terminal_size()));
                break;
            default:
                open = false;
            }
        }
        if (m_last != '\n')
            write_all(STDOUT_FILENO, "\r\n");
    }

private:
    bool on_daemon()
    {
        std::array<char, 4096> chunk;
        const ssize_t got = ::read(m_socket.get(), chunk.data(), chunk.size());
        if (got <= 0)
            return got < 0 && errno == EINTR;
        std::string replies;
        const std::string text =
            m_decoder.decode({chunk.data(), static_cast<std::size_t>(got)}, terminal_size(), replies);
        if (!text.empty())
            m_last = text.back();
        return write_all(STDOUT_FILENO, text) && write_all(m_socket.get(), replies);
    }

    bool on_typed()
    {
        const std::string typed = m_terminal.read_keys();
        return !typed.empty() && typed.find(key::leave) == std::string::npos &&
               write_all(m_socket.get(), encode_typed(m_keys.translate(typed)));
    }

    base::Fd m_socket;
    Terminal m_terminal;
    TelnetDecoder m_decoder;
    KeyMap m_keys;
    char m_last = '\n'; // that was shown
};

} // namespace

void run_telnet_session()
{
    TelnetSession().run();
}

} // namespace diagsh
