// SPDX-License-Identifier: GPL-2.0-or-later
// Somebody whom datagrams are sent to, and the sockets they leave through: one of each address family, opened
// at first need and kept.
// Failure policy: a datagram that cannot leave at once is lost and its sender told so.  The sockets are not
// connected, so that a receiver that is away for a while costs nothing but what was sent meanwhile.
#pragma once

#include <netinet/in.h>

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace tq {

class UdpReceiver {
public:
    // `address` in numbers, IPv4 or IPv6, an IPv6 address with its zone if need be; `family` AF_INET,
    // AF_INET6 or AF_UNSPEC for either.  Names are not looked up.  Nothing for any other text.
    static std::optional<UdpReceiver> at(const std::string &address, std::uint16_t port,
                                         int family = AF_UNSPEC) noexcept;

    // Never waits.  0 or an errno value.  May be called from any thread.
    int send(std::string_view datagram) const noexcept;

private:
    sockaddr_storage address_{};
    socklen_t size_ = 0;
};

} // namespace tq
