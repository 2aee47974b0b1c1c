// SPDX-License-Identifier: GPL-2.0-or-later
// Which modules a new board has in its cages.
#pragma once

#include <string>

#include "sim/boardsim/simulated_board.hpp"

namespace sim {

// Plugs what a population file lists: {"modules": [{"kind": "gpon", "port": 1, "file": "x.json"}, ...]},
// files relative to the population file.  Throws std::exception with one line.
void populate(SimulatedBoard &board, const std::string &file);

} // namespace sim
