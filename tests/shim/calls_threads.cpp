// SPDX-License-Identifier: GPL-2.0-or-later
// The daemon's calls of semaphores, threads and sockets, as they are recorded.
#include "tests/shim/recording.hpp"

#include <linux/netlink.h>
#include <pthread.h>
#include <sys/sem.h>
#include <sys/socket.h>

#include <algorithm>

using shim::disturbed;
using shim::leaf;
using shim::recorded;

extern "C" {

// --- semaphores, of whoever takes them: not recorded, for the platform's calls are

int semop(int id, struct sembuf *operations, size_t count) noexcept
{
    NEXT(semop);
    return disturbed([&] { return real(id, operations, count); });
}

int semtimedop(int id, struct sembuf *operations, size_t count, const struct timespec *timeout) noexcept
{
    NEXT(semtimedop);
    return disturbed([&] { return real(id, operations, count, timeout); });
}

// --- threads and sockets of the daemon's own

int pthread_create(pthread_t *thread, const pthread_attr_t *attributes, void *(*body)(void *),
                   void *argument) noexcept
{
    NEXT(pthread_create);
    if (!OF_THE_DAEMON())
        return real(thread, attributes, body, argument);
    return recorded<leaf>(
        "pthread_create", [&] { return real(thread, attributes, body, argument); },
        tq::arg("attributes", attributes != nullptr ? 1 : 0));
}

int pthread_detach(pthread_t thread) noexcept
{
    NEXT(pthread_detach);
    if (!OF_THE_DAEMON())
        return real(thread);
    return recorded<leaf>("pthread_detach", [&] { return real(thread); });
}

int socket(int domain, int type, int protocol) noexcept
{
    NEXT(socket);
    if (!OF_THE_DAEMON())
        return real(domain, type, protocol);
    return recorded<leaf>(
        "socket", [&] { return real(domain, type, protocol); }, tq::arg("domain", domain),
        tq::arg("type", type & ~(SOCK_CLOEXEC | SOCK_NONBLOCK)), tq::arg("protocol", protocol));
}

int setsockopt(int fd, int level, int option, const void *value, socklen_t length) noexcept
{
    NEXT(setsockopt);
    if (!OF_THE_DAEMON())
        return real(fd, level, option, value, length);
    return recorded<leaf>(
        "setsockopt", [&] { return real(fd, level, option, value, length); }, tq::arg("level", level),
        tq::arg("option", option),
        tq::arg("value", length == sizeof(int) ? *static_cast<const int *>(value) : 0));
}

int bind(int fd, const struct sockaddr *address, socklen_t length) noexcept
{
    NEXT(bind);
    if (!OF_THE_DAEMON() || address->sa_family != AF_NETLINK)
        return real(fd, address, length);
    const auto *const netlink = reinterpret_cast<const struct sockaddr_nl *>(address);
    return recorded<leaf>(
        "bind", [&] { return real(fd, address, length); }, tq::arg("port", netlink->nl_pid),
        tq::arg("groups", netlink->nl_groups));
}

ssize_t recvmsg(int fd, struct msghdr *message, int flags)
{
    NEXT(recvmsg);
    if (!OF_THE_DAEMON())
        return real(fd, message, flags);
    return recorded<leaf>(
        "recvmsg", [&] { return real(fd, message, flags); }, tq::arg("length", message->msg_iov[0].iov_len),
        tq::out_bytes("head", message->msg_iov[0].iov_base,
                      std::min<std::size_t>(message->msg_iov[0].iov_len, 32)));
}

} // extern "C"
