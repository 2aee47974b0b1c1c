// SPDX-License-Identifier: GPL-2.0-or-later
// The heater: while it is on, the board's sensor follows its warmth, which the fans cool.
#pragma once

#include "sim/boardsim/physics/board_time.hpp"
#include "sim/boardsim/physics/thermal.hpp"
#include "sim/boardsim/simulated_board.hpp"

namespace sim {

class Heater {
public:
    static constexpr double max_watts = 200;

    Heater(BoardTime &time, SimulatedBoard &board) : board_(board), timer_(time) {}

    // The first call takes the board over as warm as the sensor says.
    void heat(double watts);
    // The sensor rests where it is.
    void off() { timer_.stop(); }

private:
    void step();

    SimulatedBoard &board_;
    BoardTimer timer_;
    Thermal thermal_;
};

} // namespace sim
