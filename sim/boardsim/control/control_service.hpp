// SPDX-License-Identifier: GPL-2.0-or-later
// The control socket: takes the verbs of boardctl.
//
// A request is a list of NUL-terminated words, ended by shutting down the writing side.  The answer is one
// digit, the exit status, and a newline, then text until the connection ends.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

#include "sim/boardsim/event_loop.hpp"

namespace sim {

using Words = std::vector<std::string>;

// One request that may be answered at once or over time.
class ControlClient {
public:
    virtual ~ControlClient() = default;
    virtual void send(std::string_view text) = 0;
    // Sends the rest and ends the connection.
    virtual void finish() = 0;
    // Called when the client has gone before it was answered.
    virtual void on_gone(std::function<void()> gone) = 0;
};

class ControlService {
public:
    using Handler = std::function<void(const Words &words, ControlClient &client)>;

    ControlService(EventLoop &loop, base::Fd listener, Handler handler);
    ~ControlService();

private:
    class Connection;
    void accept();
    void serve(Connection &connection, std::uint32_t events);
    void drop(int fd);

    EventLoop &loop_;
    base::Fd listener_;
    Handler handler_;
    std::unordered_map<int, std::unique_ptr<Connection>> connections_;
};

} // namespace sim
