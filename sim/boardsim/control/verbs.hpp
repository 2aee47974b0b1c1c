// SPDX-License-Identifier: GPL-2.0-or-later
// What an operator can do to the board: the verbs of each part, handler and usage side by side.
#pragma once

#include "sim/boardsim/bus/bus_service.hpp"
#include "sim/boardsim/bus/service_bus.hpp"
#include "sim/boardsim/control/verb_table.hpp"
#include "sim/boardsim/devices/front_panel.hpp"
#include "sim/boardsim/physics/drift.hpp"
#include "sim/boardsim/physics/heater.hpp"

namespace sim {

// What the verbs work on; all of it outlives them.
struct BoardParts {
    EventLoop &loop;
    SimulatedBoard &board;
    FrontPanel &panel;
    const BusService &bus;
    ServiceBus &service_bus;
    BoardTime &time;
    Drift &drift;
    Heater &heater;
};

// Adds all verbs in the order that help shows.  The table stays where it is.
void add_verbs(VerbTable &table, const BoardParts &parts);

std::vector<Verb> register_verbs(SimulatedBoard &board);
std::vector<Verb> temperature_verbs(SimulatedBoard &board, Heater &heater);
std::vector<Verb> time_verbs(BoardTime &time, Drift &drift);
std::vector<Verb> cage_verbs(SimulatedBoard &board);
std::vector<Verb> panel_verbs(FrontPanel &panel, BoardTime &time);
std::vector<Verb> fault_verbs(Faults &faults);
std::vector<Verb> device_verbs(SimulatedBoard &board);
std::vector<Verb> service_bus_verbs(ServiceBus &bus);
std::vector<Verb> log_verbs(EventLoop &loop, TransactionLog &log);

} // namespace sim
