// SPDX-License-Identifier: GPL-2.0-or-later
// Transport to a simulated board.
//
// Failure policy: no board gives ECONNREFUSED or ENOENT at once, a silent one ETIMEDOUT after a second.  A
// handle outlives its board: when the board has been started again, the next transaction connects the same
// descriptor again, as device nodes would go on working after a power cycle of what is behind them.
#include "platform/board/bus_sim.hpp"

#include <fcntl.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <sys/uio.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <charconv>
#include <chrono>
#include <cstddef>
#include <cstdio>
#include <mutex>
#include <string_view>

#include "base/fd.hpp"

namespace board {

namespace {

using Clock = std::chrono::steady_clock;
constexpr std::chrono::seconds answer_time{1};

std::array<char, 16> thread_name()
{
    std::array<char, 16> name{};
    if (::gettid() == ::getpid())
        std::ranges::copy("main", name.begin());
    else
        ::prctl(PR_GET_NAME, name.data());
    return name;
}

// The own address of a connection says what the handle was opened for, so that whoever holds nothing but
// the descriptor can connect it again.
int bind_as(int fd, int bus, HandleKind kind)
{
    static std::atomic<unsigned> counter{0};
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    const int length =
        std::snprintf(address.sun_path + 1, sizeof address.sun_path - 1, "olt-bus.%d.%d.%d.%p.%u", bus,
                      static_cast<int>(kind), static_cast<int>(::getpid()), static_cast<void *>(&counter),
                      counter.fetch_add(1, std::memory_order_relaxed));
    const auto size =
        static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + 1 + static_cast<std::size_t>(length));
    return ::bind(fd, reinterpret_cast<const sockaddr *>(&address), size) == 0 ? 0 : -errno;
}

bool opened_for(int fd, int &bus, HandleKind &kind)
{
    sockaddr_un address{};
    socklen_t size = sizeof address - 1;
    int kind_number = 0;
    if (::getsockname(fd, reinterpret_cast<sockaddr *>(&address), &size) != 0 ||
        address.sun_family != AF_UNIX)
        return false;
    std::string_view rest = address.sun_path + 1;
    const auto number_after = [&rest](std::string_view before, int &number) {
        if (!rest.starts_with(before))
            return false;
        rest.remove_prefix(before.size());
        const auto [end, failure] = std::from_chars(rest.data(), rest.data() + rest.size(), number);
        rest.remove_prefix(static_cast<std::size_t>(end - rest.data()));
        return failure == std::errc{};
    };
    if (!number_after("olt-bus.", bus) || !number_after(".", kind_number) || !rest.starts_with('.'))
        return false;
    kind = static_cast<HandleKind>(kind_number);
    return true;
}

// As the kernel does for a bus, one transaction at a time for each handle: of two threads on one connection,
// each would take the other's reply.
std::mutex &lock_of(int handle)
{
    static std::array<std::mutex, 64> locks; // handles that share one wait for each other, no more
    return locks[static_cast<std::size_t>(handle) % locks.size()];
}

bool broken(int error)
{
    return error == -EPIPE || error == -ECONNRESET || error == -ENOTCONN;
}

int send_request(int fd, const SimRequest &request, std::span<const std::uint8_t> data)
{
    iovec parts[2] = {{const_cast<SimRequest *>(&request), sizeof request},
                      {const_cast<std::uint8_t *>(data.data()), data.size()}};
    msghdr message{};
    message.msg_iov = parts;
    message.msg_iovlen = data.empty() ? 1 : 2;
    for (;;) {
        if (::sendmsg(fd, &message, MSG_NOSIGNAL) >= 0)
            return 0;
        if (errno == EAGAIN)
            return -ETIMEDOUT;
        if (errno != EINTR)
            return -errno;
    }
}

// Waits for the reply to `sequence`; replies to earlier requests that were given up are dropped.
int receive_reply(int fd, std::uint32_t sequence, SimReply &reply, std::span<std::uint8_t> data)
{
    const auto deadline = Clock::now() + answer_time;
    for (;;) {
        iovec parts[2] = {{&reply, sizeof reply}, {data.data(), data.size()}};
        msghdr message{};
        message.msg_iov = parts;
        message.msg_iovlen = data.empty() ? 1 : 2;
        const ssize_t size = ::recvmsg(fd, &message, 0);
        if (size < 0 && errno == EAGAIN)
            return -ETIMEDOUT;
        if (size < 0 && errno != EINTR)
            return -errno;
        if (size == 0)
            return -ECONNRESET;
        if (size >= static_cast<ssize_t>(sizeof reply) && reply.sequence == sequence) {
            const auto got = static_cast<std::size_t>(size) - sizeof reply;
            return reply.result == 0 && got < std::min<std::size_t>(reply.length, data.size()) ? -EPROTO
                                                                                               : reply.result;
        }
        if (Clock::now() >= deadline)
            return -ETIMEDOUT;
    }
}

int exchange_packets(int fd, SimRequest &request, std::span<const std::uint8_t> out, SimReply &reply,
                     std::span<std::uint8_t> in)
{
    static std::atomic<std::uint32_t> sequence{0};
    request.sequence = sequence.fetch_add(1, std::memory_order_relaxed);
    request.length = static_cast<std::uint32_t>(out.size());
    request.thread = thread_name();
    const int result = send_request(fd, request, out);
    return result < 0 ? result : receive_reply(fd, request.sequence, reply, in);
}

} // namespace

SimBus::SimBus(std::string folder) : socket_path_(std::move(folder) + "/" + sim_bus_socket) {}

int SimBus::connect(int bus, HandleKind kind) const
{
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    if (socket_path_.size() >= sizeof address.sun_path)
        return -ENAMETOOLONG;
    std::copy(socket_path_.begin(), socket_path_.end(), address.sun_path);
    base::Fd fd(::socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0));
    if (fd.get() < 0)
        return -errno;
    // Connecting to a board that does not accept would block, too: the send time bounds it.
    const timeval limit{answer_time.count(), 0};
    if (::setsockopt(fd.get(), SOL_SOCKET, SO_RCVTIMEO, &limit, sizeof limit) != 0 ||
        ::setsockopt(fd.get(), SOL_SOCKET, SO_SNDTIMEO, &limit, sizeof limit) != 0)
        return -errno;
    if (const int result = bind_as(fd.get(), bus, kind); result < 0)
        return result;
    while (::connect(fd.get(), reinterpret_cast<const sockaddr *>(&address), sizeof address) != 0) {
        if (errno == EAGAIN)
            return -ETIMEDOUT;
        if (errno != EINTR)
            return -errno;
    }
    SimRequest request{};
    request.op = SimOp::open;
    request.number = bus;
    request.address = static_cast<std::uint8_t>(kind);
    SimReply reply{};
    const int result = exchange_packets(fd.get(), request, {}, reply, {});
    return result < 0 ? result : fd.release();
}

int SimBus::open(int bus, HandleKind kind) const
{
    return connect(bus, kind);
}

int SimBus::reconnect(int handle) const
{
    int bus = 0;
    HandleKind kind{};
    if (!opened_for(handle, bus, kind))
        return -EBADF;
    const int made = connect(bus, kind);
    if (made < 0)
        return made;
    const base::Fd fd(made);
    return ::dup3(fd.get(), handle, O_CLOEXEC) < 0 ? -errno : 0;
}

int SimBus::transact(int handle, SimRequest &request, std::span<const std::uint8_t> out, SimReply &reply,
                     std::span<std::uint8_t> in) const
{
    const std::lock_guard lock(lock_of(handle));
    int result = exchange_packets(handle, request, out, reply, in);
    if (broken(result)) {
        result = reconnect(handle);
        if (result == 0)
            result = exchange_packets(handle, request, out, reply, in);
    }
    return result;
}

int SimBus::read(int handle, std::uint8_t address, std::uint8_t reg, std::span<std::uint8_t> data) const
{
    SimRequest request{};
    request.op = SimOp::i2c_read;
    request.address = address;
    request.reg = reg;
    request.value = static_cast<std::uint32_t>(data.size());
    SimReply reply{};
    const int result = transact(handle, request, {}, reply, data);
    if (result < 0) // nothing of a late reply, which was received before it could be dropped
        std::ranges::fill(data, 0);
    return result;
}

int SimBus::write(int handle, std::uint8_t address, std::uint8_t reg,
                  std::span<const std::uint8_t> data) const
{
    SimRequest request{};
    request.op = SimOp::i2c_write;
    request.address = address;
    request.reg = reg;
    SimReply reply{};
    return transact(handle, request, data, reply, {});
}

int SimBus::cpld_read(int handle, std::uint8_t reg, std::uint8_t &value) const
{
    SimRequest request{};
    request.op = SimOp::cpld_read;
    request.reg = reg;
    SimReply reply{};
    const int result = transact(handle, request, {}, reply, {});
    if (result == 0)
        value = static_cast<std::uint8_t>(reply.value);
    return result;
}

int SimBus::cpld_write(int handle, std::uint8_t reg, std::uint8_t value) const
{
    SimRequest request{};
    request.op = SimOp::cpld_write;
    request.reg = reg;
    request.value = value;
    SimReply reply{};
    return transact(handle, request, {}, reply, {});
}

int SimBus::select(int handle, int channel) const
{
    SimRequest request{};
    request.op = SimOp::select;
    request.number = channel;
    SimReply reply{};
    return transact(handle, request, {}, reply, {});
}

int SimBus::deselect(int handle) const
{
    SimRequest request{};
    request.op = SimOp::deselect;
    SimReply reply{};
    return transact(handle, request, {}, reply, {});
}

// PHYs have no handles: a connection is made for the one access, which debugging can afford.
int SimBus::phy(SimOp op, const char *interface, std::uint32_t phy, std::uint32_t reg,
                std::uint32_t &value) const
{
    SimRequest request{};
    request.op = op;
    const std::string_view name = interface;
    if (name.size() >= request.name.size())
        return -ENODEV;
    std::ranges::copy(name, request.name.begin());
    request.number = static_cast<std::int32_t>(phy);
    request.value = reg;
    request.extra = value;
    const int made = connect(0, HandleKind::raw);
    if (made < 0)
        return made;
    const base::Fd fd(made);
    SimReply reply{};
    const int result = exchange_packets(fd.get(), request, {}, reply, {});
    if (result == 0)
        value = reply.value;
    return result;
}

int SimBus::phy_read(const char *interface, std::uint32_t phy_address, std::uint32_t reg,
                     std::uint32_t &value) const
{
    return phy(SimOp::phy_read, interface, phy_address, reg, value);
}

int SimBus::phy_write(const char *interface, std::uint32_t phy_address, std::uint32_t reg,
                      std::uint32_t value) const
{
    return phy(SimOp::phy_write, interface, phy_address, reg, value);
}

} // namespace board
