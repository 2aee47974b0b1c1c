// SPDX-License-Identifier: GPL-2.0-or-later
// The service bus's broker.  Failure policy: a client that breaks the framing, goes away or does not read
// loses its connection only.
#include "sim/boardsim/bus/service_bus.hpp"

#include <sys/epoll.h>
#include <sys/socket.h>

#include <cerrno>
#include <chrono>
#include <vector>

#include "platform/board/service_bus_protocol.hpp"
#include "sim/modules/text.hpp"

namespace sim {

namespace {

using board::service_bus_header_size;
using board::ServiceBusCommand;

constexpr std::size_t log_size = 1000;

unsigned be16(std::span<const std::uint8_t> bytes, std::size_t at)
{
    return static_cast<unsigned>(bytes[at] << 8 | bytes[at + 1]);
}

void put16(std::vector<std::uint8_t> &bytes, unsigned value)
{
    bytes.push_back(static_cast<std::uint8_t>(value >> 8));
    bytes.push_back(static_cast<std::uint8_t>(value));
}

} // namespace

ServiceBus::ServiceBus(EventLoop &loop, Socket socket) : loop_(loop), socket_(std::move(socket))
{
    set_up(true);
}

ServiceBus::~ServiceBus()
{
    set_up(false);
}

void ServiceBus::set_up(bool up)
{
    if (up == static_cast<bool>(listener_))
        return;
    if (up) {
        listener_ = socket_.listen();
        loop_.watch(listener_.get(), EPOLLIN, [this](std::uint32_t) { accept(); });
        return;
    }
    loop_.unwatch(listener_.get());
    listener_.reset();
    socket_.remove();
    while (!clients_.empty())
        drop(clients_.begin()->first);
}

void ServiceBus::accept()
{
    base::Fd fd(::accept4(listener_.get(), nullptr, nullptr, SOCK_CLOEXEC | SOCK_NONBLOCK));
    if (!fd)
        return;
    const int raw = fd.get();
    clients_[raw].fd = std::move(fd);
    loop_.watch(raw, EPOLLIN, [this, raw](std::uint32_t) { serve(raw); });
}

void ServiceBus::drop(int fd)
{
    loop_.unwatch(fd);
    clients_.erase(fd);
}

void ServiceBus::serve(int fd)
{
    Client &client = clients_.at(fd);
    if (!receive(client) || !take_messages(client))
        drop(fd);
}

// True while the connection is of use.
bool ServiceBus::receive(Client &client)
{
    char buffer[4096];
    const ssize_t size = ::recv(client.fd.get(), buffer, sizeof buffer, 0);
    if (size < 0)
        return errno == EAGAIN || errno == EINTR;
    client.input.append(buffer, static_cast<std::size_t>(size));
    return size > 0;
}

bool ServiceBus::take_messages(Client &client)
{
    while (client.input.size() >= service_bus_header_size) {
        const std::span all(reinterpret_cast<const std::uint8_t *>(client.input.data()), client.input.size());
        const std::size_t length = be16(all, 0);
        if (length < service_bus_header_size)
            return false;
        if (all.size() < length)
            break;
        take(client, be16(all, 2), all.subspan(service_bus_header_size, length - service_bus_header_size));
        client.input.erase(0, length);
    }
    return true;
}

void ServiceBus::take(Client &client, unsigned command, std::span<const std::uint8_t> body)
{
    if (command == static_cast<unsigned>(ServiceBusCommand::hello) && body.size() >= 4) {
        client.known = true;
        client.type = be16(body, 0);
        client.instance = be16(body, 2);
    }
    const auto now = std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now().time_since_epoch());
    const std::string from = client.known ? format("%u/%u", client.type, client.instance) : "unknown";
    log_.push_back(
        format("%06lu %ld client=%s command=%u body=", ++logged_, now.count(), from.c_str(), command) +
        hex_text(body));
    if (log_.size() > log_size)
        log_.pop_front();
}

std::size_t ServiceBus::send_monitoring(std::uint32_t value)
{
    std::vector<std::uint8_t> message;
    put16(message, service_bus_header_size + sizeof value);
    put16(message, static_cast<unsigned>(ServiceBusCommand::monitoring));
    put16(message, value >> 16);
    put16(message, value & 0xffff);
    return send_bytes(message);
}

std::size_t ServiceBus::send_bytes(std::span<const std::uint8_t> bytes)
{
    std::vector<int> lost;
    for (const auto &[fd, client] : clients_) {
        const ssize_t sent = ::send(fd, bytes.data(), bytes.size(), MSG_NOSIGNAL);
        if (sent != static_cast<ssize_t>(bytes.size()))
            lost.push_back(fd);
    }
    for (const int fd : lost)
        drop(fd);
    return clients_.size();
}

std::string ServiceBus::clients() const
{
    std::string text;
    for (const auto &[fd, client] : clients_)
        text += client.known ? format("type=%u instance=%u\n", client.type, client.instance) : "unknown\n";
    return text;
}

std::string ServiceBus::log() const
{
    std::string text;
    for (const std::string &line : log_)
        text += line + "\n";
    return text;
}

} // namespace sim
