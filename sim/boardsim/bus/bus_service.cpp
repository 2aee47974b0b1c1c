// SPDX-License-Identifier: GPL-2.0-or-later
// The transaction socket.
//
// Failure policy: a client that breaks the protocol or goes away loses its handle and nothing else; a
// client that does not read its replies loses them.
#include "sim/boardsim/bus/bus_service.hpp"

#include <sys/epoll.h>
#include <sys/socket.h>
#include <sys/uio.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

#include "platform/board/bus.hpp"
#include "sim/modules/text.hpp"

namespace sim {

using board::SimOp;
using board::SimReply;
using board::SimRequest;

struct BusService::Handle : BusHandle {
    base::Fd fd;
};

BusService::BusService(EventLoop &loop, SimulatedBoard &board, base::Fd listener)
    : loop_(loop), board_(board), listener_(std::move(listener)),
      packet_(sizeof(SimRequest) + board::Bus::max_transfer)
{
    loop_.watch(listener_.get(), EPOLLIN, [this](std::uint32_t) { accept(); });
}

BusService::~BusService() = default;

void BusService::accept()
{
    base::Fd fd(::accept4(listener_.get(), nullptr, nullptr, SOCK_CLOEXEC | SOCK_NONBLOCK));
    if (!fd)
        return;
    auto handle = std::make_unique<Handle>();
    handle->number = ++last_number_;
    const int raw = fd.get();
    handle->fd = std::move(fd);
    loop_.watch(raw, EPOLLIN, [this, h = handle.get()](std::uint32_t) { serve(*h); });
    handles_.emplace(handle->number, std::move(handle));
}

void BusService::drop(std::uint32_t number)
{
    const auto found = handles_.find(number);
    if (found == handles_.end())
        return;
    loop_.unwatch(found->second->fd.get());
    handles_.erase(found);
}

void BusService::serve(Handle &handle)
{
    const ssize_t size = ::recv(handle.fd.get(), packet_.data(), packet_.size(), MSG_TRUNC);
    if (size < 0 && (errno == EAGAIN || errno == EINTR))
        return;
    SimRequest request;
    const bool whole =
        size >= static_cast<ssize_t>(sizeof request) && static_cast<std::size_t>(size) <= packet_.size();
    if (whole)
        std::memcpy(&request, packet_.data(), sizeof request);
    if (!whole || static_cast<std::size_t>(request.op) >= board::sim_op_count ||
        request.length != static_cast<std::size_t>(size) - sizeof request ||
        (request.op != SimOp::open && !handle.opened)) {
        drop(handle.number);
        return;
    }
    transact(board_, handle, request, {packet_.data() + sizeof request, request.length}, answer_);
    if (answer_.delay_ms == 0) {
        send(handle, request.sequence, answer_);
    } else {
        loop_.after(std::chrono::milliseconds(answer_.delay_ms),
                    [this, number = handle.number, sequence = request.sequence, late = answer_] {
                        if (const auto found = handles_.find(number); found != handles_.end())
                            send(*found->second, sequence, late);
                    });
    }
    if (written_ && answer_.result == 0 &&
        (request.op == SimOp::cpld_write || request.op == SimOp::i2c_write))
        written_();
}

void BusService::send(const Handle &handle, std::uint32_t sequence, const BusAnswer &answer)
{
    SimReply reply{sequence, answer.result, answer.value, static_cast<std::uint32_t>(answer.data.size())};
    iovec parts[2] = {{&reply, sizeof reply},
                      {const_cast<std::uint8_t *>(answer.data.data()), answer.data.size()}};
    msghdr message{};
    message.msg_iov = parts;
    message.msg_iovlen = answer.data.empty() ? 1 : 2;
    ::sendmsg(handle.fd.get(), &message, MSG_NOSIGNAL | MSG_DONTWAIT);
}

std::vector<std::string> BusService::handles() const
{
    std::vector<std::string> lines;
    for (const auto &[number, handle] : handles_) {
        std::string line = format("h=%u bus=%d %s", number, handle->bus,
                                  handle->kind == board::HandleKind::cpld ? "cpld" : "raw");
        lines.push_back(handle->channel != no_channel ? line + format(" ch=%d", handle->channel) : line);
    }
    std::sort(lines.begin(), lines.end());
    return lines;
}

} // namespace sim
