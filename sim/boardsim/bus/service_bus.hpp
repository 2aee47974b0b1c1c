// SPDX-License-Identifier: GPL-2.0-or-later
// The broker of the platform's service bus: daemons connect to it, the operator sends and reads along.
#pragma once

#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <span>
#include <string>

#include "sim/boardsim/event_loop.hpp"

namespace sim {

class ServiceBus {
public:
    // Makes the listening socket each time the bus comes up, removes it when it goes down.
    struct Socket {
        std::function<base::Fd()> listen;
        std::function<void()> remove;
    };

    // Begins up.
    ServiceBus(EventLoop &loop, Socket socket);
    ~ServiceBus();
    ServiceBus(const ServiceBus &) = delete;
    ServiceBus &operator=(const ServiceBus &) = delete;

    // Down: every client loses its connection and nobody can connect.
    void set_up(bool up);
    // To every client; their number.
    std::size_t send_monitoring(std::uint32_t value);
    std::size_t send_bytes(std::span<const std::uint8_t> bytes);
    // One line per client: type and instance, or that it has not said them yet.
    [[nodiscard]] std::string clients() const;
    // One line per message received, the oldest first.
    [[nodiscard]] std::string log() const;
    void clear_log() { log_.clear(); }

private:
    struct Client {
        base::Fd fd;
        std::string input;
        bool known = false; // has said hello
        unsigned type = 0;
        unsigned instance = 0;
    };

    void accept();
    void serve(int fd);
    bool receive(Client &client);
    bool take_messages(Client &client);
    void take(Client &client, unsigned command, std::span<const std::uint8_t> body);
    void drop(int fd);

    EventLoop &loop_;
    Socket socket_;
    base::Fd listener_;
    std::map<int, Client> clients_;
    std::deque<std::string> log_;
    std::uint64_t logged_ = 0;
};

} // namespace sim
