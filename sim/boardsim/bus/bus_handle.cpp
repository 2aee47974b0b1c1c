// SPDX-License-Identifier: GPL-2.0-or-later
#include "sim/boardsim/bus/bus_handle.hpp"

#include <algorithm>
#include <cerrno>
#include <cstring>

namespace sim {

using board::SimOp;
using board::SimRequest;

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

int perform(SimulatedBoard &board, BusHandle &handle, const SimRequest &request,
            std::span<const std::uint8_t> out, Transaction &transaction, BusAnswer &answer)
{
    const bool on_cpld_bus = handle.bus == board.description.cpld.bus;
    const bool through_channel = handle.kind == board::HandleKind::cpld;
    switch (request.op) {
    case SimOp::open:
        if (request.number < 0 || request.number >= board.description.bus_count)
            return -ENOENT;
        handle.opened = true;
        handle.bus = request.number;
        handle.kind = request.address != 0 ? board::HandleKind::cpld : board::HandleKind::raw;
        return 0;
    case SimOp::i2c_read: {
        transaction.length = request.value;
        if (request.value > board::Bus::max_transfer)
            return -EINVAL;
        answer.data.resize(request.value);
        Module *module = through_channel ? board.module_on(handle.channel) : nullptr;
        int result = -ENXIO;
        if (!through_channel)
            result = board.read_device(handle.bus, request.address, request.reg, answer.data);
        else if (module != nullptr)
            result = module->read(request.address, request.reg, answer.data);
        if (result < 0)
            answer.data.clear();
        note_data(transaction, answer.data);
        return result;
    }
    case SimOp::i2c_write: {
        transaction.length = request.length;
        note_data(transaction, out);
        if (!through_channel)
            return board.write_device(handle.bus, request.address, request.reg, out);
        Module *module = board.module_on(handle.channel);
        return module != nullptr ? module->write(request.address, request.reg, out) : -ENXIO;
    }
    case SimOp::cpld_read:
        if (!on_cpld_bus)
            return -ENXIO;
        answer.value = board.cpld.read(request.reg);
        note_register(transaction, answer.value, 1);
        return 0;
    case SimOp::cpld_write:
        note_register(transaction, request.value, 1);
        if (!on_cpld_bus)
            return -ENXIO;
        board.cpld.write(request.reg, static_cast<std::uint8_t>(request.value));
        return 0;
    case SimOp::select:
        if (handle.bus != board.description.multiplexer.bus)
            return -ENXIO;
        if (request.number < 0 || request.number >= board.description.multiplexer.channels)
            return -EINVAL;
        handle.channel = request.number;
        return 0;
    case SimOp::deselect:
        if (handle.bus != board.description.multiplexer.bus)
            return -ENXIO;
        handle.channel = no_channel;
        return 0;
    case SimOp::phy_read:
    case SimOp::phy_write: {
        const std::string interface(request.name.data(), ::strnlen(request.name.data(), request.name.size()));
        if (request.op == SimOp::phy_write) {
            note_register(transaction, request.extra, 2);
            return board.phys.write(interface, transaction.phy, request.value, request.extra);
        }
        const int result = board.phys.read(interface, transaction.phy, request.value, answer.value);
        note_register(transaction, answer.value, 2);
        return result;
    }
    }
    return -EINVAL;
}

} // namespace

void transact(SimulatedBoard &board, BusHandle &handle, const SimRequest &request,
              std::span<const std::uint8_t> out, BusAnswer &answer)
{
    Transaction transaction = describe(request);
    transaction.handle = handle.number;
    transaction.bus = static_cast<std::int16_t>(request.op == SimOp::open ? request.number : handle.bus);
    transaction.channel =
        static_cast<std::int16_t>(request.op == SimOp::select ? request.number : handle.channel);

    const Faults::Effect effect = board.faults.evaluate(transaction);
    answer.value = 0;
    answer.data.clear();
    answer.delay_ms = effect.delay_ms;
    answer.result =
        effect.result < 0 ? effect.result : perform(board, handle, request, out, transaction, answer);
    transaction.result = answer.result;
    board.log.add(transaction);
}

} // namespace sim
