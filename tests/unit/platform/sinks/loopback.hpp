// SPDX-License-Identifier: GPL-2.0-or-later
// A receiver of datagrams on a free port of a loopback address.
#pragma once

#include <netinet/in.h>
#include <sys/socket.h>

#include <cerrno>
#include <cstdint>
#include <cstring>
#include <gtest/gtest.h>
#include <string>
#include <unistd.h>

struct Listener {
    explicit Listener(int family) : fd(socket(family, SOCK_DGRAM | SOCK_CLOEXEC, 0))
    {
        sockaddr_in6 v6{};
        v6.sin6_family = AF_INET6;
        v6.sin6_addr = in6addr_loopback;
        sockaddr_in v4{};
        v4.sin_family = AF_INET;
        v4.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        const bool is_v6 = family == AF_INET6;
        socklen_t size = is_v6 ? sizeof v6 : sizeof v4;
        auto *address = is_v6 ? reinterpret_cast<sockaddr *>(&v6) : reinterpret_cast<sockaddr *>(&v4);
        EXPECT_EQ(bind(fd, address, size), 0);
        EXPECT_EQ(getsockname(fd, address, &size), 0);
        port = ntohs(is_v6 ? v6.sin6_port : v4.sin_port);
        const timeval patience{5, 0};
        setsockopt(fd, SOL_SOCKET, SO_RCVTIMEO, &patience, sizeof patience);
    }
    Listener(const Listener &) = delete;
    Listener &operator=(const Listener &) = delete;
    ~Listener() { close(fd); }

    // The next datagram, waited for.
    std::string receive() const
    {
        char text[4096];
        const ssize_t size = recv(fd, text, sizeof text, 0);
        return size < 0 ? std::strerror(errno) : std::string(text, static_cast<std::size_t>(size));
    }

    bool has_more() const
    {
        char byte;
        return recv(fd, &byte, 1, MSG_DONTWAIT | MSG_PEEK) >= 0;
    }

    int fd;
    std::uint16_t port = 0;
};
