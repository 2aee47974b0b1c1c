// SPDX-License-Identifier: GPL-2.0-or-later
// A session on the daemon's unix vty socket.  It needs no password: the socket's owner and group decide who
// may use it.  Exchange: a command and a NUL; the answer is the command's text, three NULs and one status
// byte.
#pragma once

#include "base/fd.hpp"

#include <chrono>
#include <cstddef>
#include <optional>
#include <string>
#include <utility>

namespace diagsh {

struct VtyAnswer {
    int status = 0;       // the command's return code, 0 is success
    std::string text;     // what it printed, byte for byte
    base::Fd passed = {}; // descriptor the daemon gave along with the status, of few commands only
};

constexpr int status_unknown = 2; // libfrr's CMD_ERR_NO_MATCH: no such command in this node

class VtySession {
public:
    // Connects; throws Failure when no daemon answers or this user may not use the socket.
    // `longest_answer`: how long to wait for an answer at most, 0 for ever.
    explicit VtySession(const std::string &socket_path,
                        std::chrono::seconds longest_answer = std::chrono::seconds{0});

    // Runs one command and waits for its end.  Throws Failure when the daemon closes
    // the session before the answer is complete, or it is not complete in time.
    VtyAnswer run(const std::string &command);

    // The same in steps, for who shows the text as it comes: send(), then receive() whenever socket() is
    // readable, until it gives the status.
    void send(const std::string &command);
    std::optional<int> receive(std::string &text); // adds what has come to `text`
    base::Fd take_passed() { return std::move(m_passed); }
    int socket() const { return m_socket.get(); }

private:
    base::Fd m_socket;
    std::string m_command; // that is being answered
    base::Fd m_passed;
    std::size_t m_mark = 0; // bytes of the end mark that have come
};

} // namespace diagsh
