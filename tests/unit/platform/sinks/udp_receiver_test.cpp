// SPDX-License-Identifier: GPL-2.0-or-later
// Sending datagrams over loopback.
#include "platform/sinks/udp_receiver.hpp"

#include "tests/unit/platform/sinks/loopback.hpp"

#include <cerrno>
#include <dlfcn.h>
#include <gtest/gtest.h>
#include <netdb.h>

using tq::UdpReceiver;

namespace {
int looks_for_a_name;
} // namespace

// The C library's, which asks name servers unless it is told not to.
extern "C" int getaddrinfo(const char *node, const char *service, const addrinfo *hints, addrinfo **list)
{
    looks_for_a_name += !hints || (hints->ai_flags & AI_NUMERICHOST) == 0;
    const auto next = reinterpret_cast<decltype(&getaddrinfo)>(::dlsym(RTLD_NEXT, "getaddrinfo"));
    return next(node, service, hints, list);
}

TEST(UdpReceiver, gets_what_is_sent_over_either_family)
{
    const Listener v4(AF_INET), v6(AF_INET6);
    for (const char *text : {"one", "two"}) {
        EXPECT_EQ(UdpReceiver::at("127.0.0.1", v4.port)->send(text), 0);
        EXPECT_EQ(UdpReceiver::at("::1", v6.port)->send(text), 0);
        EXPECT_EQ(v4.receive(), text);
        EXPECT_EQ(v6.receive(), text);
    }
}

TEST(UdpReceiver, one_that_comes_back_misses_only_what_was_sent_meanwhile)
{
    std::uint16_t port = 0;
    {
        const Listener away(AF_INET);
        port = away.port;
    }
    const auto receiver = UdpReceiver::at("127.0.0.1", port);
    for (int i = 0; i < 3; ++i)
        EXPECT_EQ(receiver->send("lost"), 0);
    const Listener other(AF_INET);
    EXPECT_EQ(UdpReceiver::at("127.0.0.1", other.port)->send("got"), 0);
    EXPECT_EQ(other.receive(), "got");
}

TEST(UdpReceiver, names_and_addresses_of_the_wrong_family_are_none)
{
    for (const char *text :
         {"", "localhost", "192.0.2", "192.0.2.1.1", "fe80::1%nosuchlink", "::g", " 192.0.2.1"})
        EXPECT_FALSE(UdpReceiver::at(text, 514)) << text;
    EXPECT_FALSE(UdpReceiver::at("192.0.2.1", 514, AF_INET6));
    EXPECT_FALSE(UdpReceiver::at("::1", 514, AF_INET));
    EXPECT_TRUE(UdpReceiver::at("192.0.2.1", 514, AF_INET));
    EXPECT_TRUE(UdpReceiver::at("fe80::1%lo", 514, AF_INET6));
    EXPECT_EQ(looks_for_a_name, 0) << "an alarm would wait for a name server";
}

TEST(UdpReceiver, what_cannot_leave_is_told)
{
    // Broadcast is refused, and a datagram has at most 65507 bytes.
    EXPECT_EQ(UdpReceiver::at("255.255.255.255", 514)->send("x"), EACCES);
    EXPECT_EQ(UdpReceiver::at("127.0.0.1", 514)->send(std::string(70000, 'x')), EMSGSIZE);
}
