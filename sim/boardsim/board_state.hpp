// SPDX-License-Identifier: GPL-2.0-or-later
// What a board begins with: what it kept over a restart of boardsim (registers, sensor, memories, plugged
// modules), or, when it is new, a population.
#pragma once

#include <string>

#include "sim/boardsim/event_loop.hpp"
#include "sim/boardsim/simulated_board.hpp"

namespace sim {

// Writes `folder`/board.state; a reader never sees half a file.  Throws std::runtime_error.
void save_state(SimulatedBoard &board, const std::string &folder);
// Takes over what is in `folder`, which is made when missing.  False: no state there, the board is as it was.
// Throws std::runtime_error.
bool load_state(SimulatedBoard &board, const std::string &folder);

// Keeps a board's state in `folder`; without one there is nothing to keep.  A state that
// cannot be written is said once, and the board goes on.
class StateFile {
public:
    StateFile(EventLoop &loop, SimulatedBoard &board, std::string folder);
    StateFile(const StateFile &) = delete;
    StateFile &operator=(const StateFile &) = delete;
    ~StateFile() { save(); }

    // False: there is nothing to go on with.
    bool load() { return !folder_.empty() && load_state(board_, folder_); }
    // Saves a moment later, so that a row of changes costs one file.
    void changed();

private:
    void save();

    EventLoop &loop_;
    SimulatedBoard &board_;
    std::string folder_;
    bool pending_ = false;
    bool complained_ = false;
};

// Plugs what a population file lists: {"modules": [{"kind": "gpon", "port": 1, "file": "x.json"}, ...]},
// files relative to the population file.  Throws std::exception with one line.
void populate(SimulatedBoard &board, const std::string &file);

} // namespace sim
