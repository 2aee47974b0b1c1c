// SPDX-License-Identifier: GPL-2.0-or-later
// Small physical movement: temperatures wander, powers and currents breathe.  Seeded, so that two runs with
// the same seed do the same.
#pragma once

#include <map>
#include <random>

#include "sim/boardsim/physics/board_time.hpp"
#include "sim/boardsim/simulated_board.hpp"

namespace sim {

class Drift {
public:
    Drift(BoardTime &time, SimulatedBoard &board, std::uint32_t seed)
        : board_(board), timer_(time), random_(seed)
    {
    }

    // A step every second from now on.
    void start();
    // Everything goes back to its described value.
    void stop();
    [[nodiscard]] bool runs() const { return timer_.runs(); }
    // What a second does, and the end of it all; start and stop call them.
    void step();
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
    BoardTimer timer_;
    std::minstd_rand random_;
    double board_celsius_ = 0;
    std::map<const Cage *, Movement> movements_;
};

} // namespace sim
