// SPDX-License-Identifier: GPL-2.0-or-later
// Sending datagrams (see udp_receiver.hpp).
#include "platform/sinks/udp_receiver.hpp"

#include "base/fd.hpp"
#include "base/owner.hpp"

#include <arpa/inet.h>
#include <netdb.h>
#include <sys/socket.h>

#include <atomic>
#include <cerrno>
#include <cstring>

namespace tq {

namespace {

// The process's socket of a family, or negative with errno set.  It stays open as long as the process.
int socket_of(int family) noexcept
{
    static std::atomic<int> sockets[2] = {-1, -1};
    std::atomic<int> &kept = sockets[family == AF_INET6];
    int fd = kept.load();
    if (fd >= 0)
        return fd;
    base::Fd made(::socket(family, SOCK_DGRAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
    if (!made)
        return -1;
    if (kept.compare_exchange_strong(fd, made.get()))
        return made.release(); // kept for good
    return fd;                 // another thread was faster
}

} // namespace

std::optional<UdpReceiver> UdpReceiver::at(const std::string &address, std::uint16_t port,
                                           int family) noexcept
{
    UdpReceiver receiver;
    auto &ipv4 = reinterpret_cast<sockaddr_in &>(receiver.address_);
    if (family != AF_INET6 && ::inet_pton(AF_INET, address.c_str(), &ipv4.sin_addr) == 1) {
        ipv4.sin_family = AF_INET;
        ipv4.sin_port = htons(port);
        receiver.size_ = sizeof ipv4;
        return receiver;
    }
    if (family == AF_INET)
        return std::nullopt;
    // Unlike inet_pton this knows zones.
    addrinfo how{};
    how.ai_family = AF_INET6;
    how.ai_socktype = SOCK_DGRAM;
    how.ai_flags = AI_NUMERICHOST;
    addrinfo *list = nullptr;
    if (::getaddrinfo(address.c_str(), nullptr, &how, &list) != 0)
        return std::nullopt;
    const base::Owner<addrinfo, ::freeaddrinfo> found(list);
    receiver.size_ = found->ai_addrlen;
    std::memcpy(&receiver.address_, found->ai_addr, found->ai_addrlen);
    reinterpret_cast<sockaddr_in6 &>(receiver.address_).sin6_port = htons(port);
    return receiver;
}

int UdpReceiver::send(std::string_view datagram) const noexcept
{
    const int fd = socket_of(address_.ss_family);
    if (fd < 0)
        return errno;
    const ssize_t sent = ::sendto(fd, datagram.data(), datagram.size(), MSG_DONTWAIT | MSG_NOSIGNAL,
                                  reinterpret_cast<const sockaddr *>(&address_), size_);
    return sent < 0 ? errno : 0;
}

} // namespace tq
