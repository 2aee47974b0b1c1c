// SPDX-License-Identifier: GPL-2.0-or-later
// What a board keeps over a restart of boardsim: registers, sensor, plugged modules.
#pragma once

#include <string>

#include "sim/boardsim/simulated_board.hpp"

namespace sim {

// Writes `folder`/board.state; a reader never sees half a file.  Throws std::runtime_error.
void save_state(SimulatedBoard &board, const std::string &folder);
// Takes over what is in `folder`, which is made when missing.  False: no state there, the board is as it was.
// Throws std::runtime_error.
bool load_state(SimulatedBoard &board, const std::string &folder);

} // namespace sim
