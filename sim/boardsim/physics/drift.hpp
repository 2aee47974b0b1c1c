// SPDX-License-Identifier: GPL-2.0-or-later
// Small physical movement: temperatures wander, powers and currents breathe.  Seeded, so that two runs with
// the same seed move alike.
#pragma once

#include <map>
#include <random>

#include "sim/boardsim/simulated_board.hpp"

namespace sim {

class Drift {
public:
    Drift(SimulatedBoard &board, std::uint32_t seed) : board_(board), random_(seed) {}

    // One step; meant to be taken once a second.
    void step();
    // Everything back to its described value.
    void settle();

private:
    // Bounded random walk, 0 on average.
    double walk(double value, double stride, double bound);
    struct Movement {
        double celsius = 0;
        double power = 1; // factors
        double bias = 1;
        double voltage = 1;
    };
    static void apply(Module &module, const Movement &movement);

    SimulatedBoard &board_;
    std::minstd_rand random_;
    double board_celsius_ = 0;
    std::map<const Cage *, Movement> movements_;
};

} // namespace sim
