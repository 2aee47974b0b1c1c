// SPDX-License-Identifier: GPL-2.0-or-later
// What diagsh says and returns when it fails itself, as opposed to a command that fails.
#pragma once

#include <sysexits.h>

#include <stdexcept>
#include <string>

namespace diagsh {

// Ends diagsh: one line on standard error and an exit status of sysexits.h, which no vty status reaches.
class Failure : public std::runtime_error {
public:
    Failure(int status, const std::string &text) : std::runtime_error(text), m_status(status) {}
    int status() const { return m_status; }

private:
    int m_status;
};

// Nobody listens at the socket.
class NoDaemon : public Failure {
    using Failure::Failure;
};

// Only others may use the socket.
class Refused : public Failure {
    using Failure::Failure;
};

// The daemon ended the session, by itself or with the session's last command.
class Closed : public Failure {
    using Failure::Failure;
};

} // namespace diagsh
