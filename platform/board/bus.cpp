// SPDX-License-Identifier: GPL-2.0-or-later
// Choice of the transport.  Failure policy: without a usable description there is no bus, and every call of
// the libraries fails with ENODEV.
#include "platform/board/bus.hpp"

#include <memory>

#include "platform/board/bus_linux.hpp"
#include "platform/board/bus_sim.hpp"

namespace board {

namespace {

std::unique_ptr<Bus> make_bus()
{
    std::string error;
    const Board *board = this_board(error);
    if (board == nullptr)
        return nullptr;
    if (board->transport == Transport::linux_devices)
        return std::make_unique<LinuxBus>(board->cpld, board->multiplexer);
    return std::make_unique<SimBus>(sim_folder(*board));
}

} // namespace

const Bus *this_bus()
{
    static const Bus *const bus = make_bus().release(); // threads may still call while the process exits
    return bus;
}

} // namespace board
