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

struct BusService::Handle {
    base::Fd fd;
    std::uint32_t number = 0;
    bool opened = false;
    board::HandleKind kind = board::HandleKind::raw;
    int bus = 0;
    int channel = no_channel;
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

namespace {

void note_data(Transaction &transaction, std::span<const std::uint8_t> data)
{
    transaction.data_size = static_cast<std::uint8_t>(std::min(data.size(), transaction.data.size()));
    std::copy_n(data.begin(), transaction.data_size, transaction.data.begin());
}

void note_register(Transaction &transaction, std::uint32_t value, std::uint32_t bytes)
{
    transaction.length = bytes;
    for (std::uint32_t i = 0; i < bytes; ++i)
        transaction.data[i] = static_cast<std::uint8_t>(value >> 8 * (bytes - 1 - i));
    transaction.data_size = static_cast<std::uint8_t>(bytes);
}

Transaction describe(const SimRequest &request)
{
    Transaction transaction;
    transaction.op = request.op;
    transaction.address = request.address;
    transaction.reg = request.reg;
    transaction.thread = request.thread;
    transaction.thread.back() = '\0';
    if (request.op == SimOp::phy_read || request.op == SimOp::phy_write) {
        transaction.phy = static_cast<std::uint32_t>(request.number);
        transaction.phy_reg = request.value;
    }
    return transaction;
}

} // namespace

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
    Transaction transaction = describe(request);
    transaction.handle = handle.number;
    transaction.bus = static_cast<std::int16_t>(request.op == SimOp::open ? request.number : handle.bus);
    transaction.channel =
        static_cast<std::int16_t>(request.op == SimOp::select ? request.number : handle.channel);

    const Faults::Verdict verdict = board_.faults.judge(transaction);
    std::uint32_t value = 0;
    in_.clear();
    const std::span out(packet_.data() + sizeof request, request.length);
    const int result =
        verdict.result < 0 ? verdict.result : perform(handle, request, out, transaction, value, in_);
    transaction.result = result;
    board_.log.add(transaction);
    if (verdict.delay_ms == 0) {
        answer(handle, request, result, value, in_);
    } else {
        loop_.after(std::chrono::milliseconds(verdict.delay_ms),
                    [this, number = handle.number, request, result, value, data = in_] {
                        if (const auto found = handles_.find(number); found != handles_.end())
                            answer(*found->second, request, result, value, data);
                    });
    }
    if (written_ && result == 0 && (request.op == SimOp::cpld_write || request.op == SimOp::i2c_write))
        written_();
}

void BusService::answer(const Handle &handle, const SimRequest &request, int result, std::uint32_t value,
                        std::span<const std::uint8_t> data)
{
    SimReply reply{request.sequence, result, value, static_cast<std::uint32_t>(data.size())};
    iovec parts[2] = {{&reply, sizeof reply}, {const_cast<std::uint8_t *>(data.data()), data.size()}};
    msghdr message{};
    message.msg_iov = parts;
    message.msg_iovlen = data.empty() ? 1 : 2;
    ::sendmsg(handle.fd.get(), &message, MSG_NOSIGNAL | MSG_DONTWAIT);
}

int BusService::perform(Handle &handle, const SimRequest &request, std::span<const std::uint8_t> out,
                        Transaction &transaction, std::uint32_t &value, std::vector<std::uint8_t> &in)
{
    const bool on_cpld_bus = handle.bus == board_.description.cpld.bus;
    const bool through_channel = handle.kind == board::HandleKind::cpld;
    switch (request.op) {
    case SimOp::open:
        if (request.number < 0 || request.number >= board_.description.bus_count)
            return -ENOENT;
        handle.opened = true;
        handle.bus = request.number;
        handle.kind = request.address != 0 ? board::HandleKind::cpld : board::HandleKind::raw;
        return 0;
    case SimOp::i2c_read: {
        transaction.length = request.value;
        if (request.value > board::Bus::max_transfer)
            return -EINVAL;
        in.resize(request.value);
        Module *module = through_channel ? board_.module_on(handle.channel) : nullptr;
        int result = -ENXIO;
        if (!through_channel)
            result = board_.read_device(handle.bus, request.address, request.reg, in);
        else if (module != nullptr)
            result = module->read(request.address, request.reg, in);
        if (result < 0)
            in.clear();
        note_data(transaction, in);
        return result;
    }
    case SimOp::i2c_write: {
        transaction.length = request.length;
        note_data(transaction, out);
        if (!through_channel)
            return board_.write_device(handle.bus, request.address, request.reg, out);
        Module *module = board_.module_on(handle.channel);
        return module != nullptr ? module->write(request.address, request.reg, out) : -ENXIO;
    }
    case SimOp::cpld_read:
        if (!on_cpld_bus)
            return -ENXIO;
        value = board_.cpld.read(request.reg);
        note_register(transaction, value, 1);
        return 0;
    case SimOp::cpld_write:
        note_register(transaction, request.value, 1);
        if (!on_cpld_bus)
            return -ENXIO;
        board_.cpld.write(request.reg, static_cast<std::uint8_t>(request.value));
        return 0;
    case SimOp::select:
        if (handle.bus != board_.description.multiplexer.bus)
            return -ENXIO;
        if (request.number < 0 || request.number >= board_.description.multiplexer.channels)
            return -EINVAL;
        handle.channel = request.number;
        return 0;
    case SimOp::deselect:
        if (handle.bus != board_.description.multiplexer.bus)
            return -ENXIO;
        handle.channel = no_channel;
        return 0;
    case SimOp::phy_read:
    case SimOp::phy_write: {
        const std::string interface(request.name.data(), ::strnlen(request.name.data(), request.name.size()));
        if (request.op == SimOp::phy_write) {
            note_register(transaction, request.extra, 2);
            return board_.phys.write(interface, transaction.phy, request.value, request.extra);
        }
        const int result = board_.phys.read(interface, transaction.phy, request.value, value);
        note_register(transaction, value, 2);
        return result;
    }
    }
    return -EINVAL;
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
