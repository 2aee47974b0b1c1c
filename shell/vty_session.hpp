// SPDX-License-Identifier: GPL-2.0-or-later
// A session on the daemon's unix vty socket.  It needs no password: the socket's owner and group decide who
// may use it.  Exchange: a command and a NUL; the answer is the command's text, three NULs and one status
// byte.
#pragma once

#include "base/fd.hpp"

#include <chrono>
#include <string>

namespace diagsh {

struct VtyAnswer {
    int status = 0;       // the command's return code, 0 is success
    std::string text;     // what it printed, byte for byte
    base::Fd passed = {}; // descriptor the daemon gave along with the status, of few commands only
};

class VtySession {
public:
    // Connects; throws Failure when no daemon answers or this user may not use the socket.
    // `longest_answer`: how long to wait for an answer at most, 0 for ever.
    explicit VtySession(const std::string &socket_path,
                        std::chrono::seconds longest_answer = std::chrono::seconds{0});

    // Runs one command and waits for its end.  Throws Failure when the daemon closes
    // the session before the answer is complete, or it is not complete in time.
    VtyAnswer run(const std::string &command);

private:
    base::Fd m_socket;
};

} // namespace diagsh
