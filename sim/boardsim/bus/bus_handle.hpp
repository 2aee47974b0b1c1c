// SPDX-License-Identifier: GPL-2.0-or-later
// A handle on the board's buses, and what a transaction through it does: faults and log included, no I/O.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "platform/board/bus.hpp"
#include "platform/board/sim_protocol.hpp"
#include "sim/boardsim/simulated_board.hpp"

namespace sim {

struct BusHandle {
    std::uint32_t number = 0; // in the log
    bool opened = false;
    board::HandleKind kind = board::HandleKind::raw;
    int bus = 0;
    int channel = no_channel;
};

struct BusAnswer {
    int result = 0;          // 0 or a negative errno value
    std::uint32_t value = 0; // of a register
    std::vector<std::uint8_t> data;
    int delay_ms = 0; // to be waited for before the answer is given
};

// `out` is what the request writes.  `answer` is overwritten.
void transact(SimulatedBoard &board, BusHandle &handle, const board::SimRequest &request,
              std::span<const std::uint8_t> out, BusAnswer &answer);

} // namespace sim
