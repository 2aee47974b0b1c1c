// SPDX-License-Identifier: GPL-2.0-or-later
// Verbs on the board's temperature, and on the time and movement of its values.
#include <cerrno>
#include <memory>
#include <optional>

#include "sim/boardsim/control/verbs.hpp"
#include "sim/modules/text.hpp"

namespace sim {

namespace {

// Makes the sensor fail: the next N reads, or all.
class SensorFault {
public:
    explicit SensorFault(SimulatedBoard &board) : board_(board) {}

    // N, always, off
    void set(const std::string &word)
    {
        Fault fault;
        if (word != "off" && word != "always")
            fault.count = static_cast<unsigned long>(parse_number(word, 1, 1'000'000));
        if (id_)
            board_.faults.remove(*id_); // unless all were cleared meanwhile
        id_.reset();
        if (word == "off")
            return;
        fault.op = board::SimOp::i2c_read;
        fault.bus = board_.description.lm75.bus;
        fault.address = board_.description.lm75.address;
        fault.error = ENXIO;
        id_ = board_.faults.add(fault);
    }

private:
    SimulatedBoard &board_;
    std::optional<unsigned> id_;
};

} // namespace

std::vector<Verb> temperature_verbs(SimulatedBoard &board, Heater &heater)
{
    return {
        {"temp set", 1, 1, "TENTHS",
         [&board](const Words &words) {
             board.lm75.set_tenths(static_cast<int>(parse_number(words[0], -1280, 1279)));
             return std::string();
         },
         true},
        {"temp raw", 1, 1, "WORD",
         [&board](const Words &words) {
             board.lm75.set_raw(static_cast<std::uint16_t>(parse_number(words[0], 0, 0xffff)));
             return std::string();
         },
         true},
        {"temp fail", 1, 1, "N|always|off",
         [fault = std::make_shared<SensorFault>(board)](const Words &words) {
             fault->set(words[0]);
             return std::string();
         }},
        {"heat", 1, 1, "WATTS|off",
         [&heater](const Words &words) {
             if (words[0] == "off")
                 heater.off();
             else
                 heater.heat(parse_real(words[0], 0, Heater::max_watts));
             return std::string();
         }},
    };
}

std::vector<Verb> time_verbs(BoardTime &time, Drift &drift)
{
    return {
        {"time scale", 1, 1, "FACTOR",
         [&time](const Words &words) {
             time.set_scale(parse_real(words[0], 0.01, 1000));
             return std::string();
         }},
        {"drift", 1, 1, "on|off",
         [&drift](const Words &words) {
             if (to_flag(words[0]))
                 drift.start();
             else
                 drift.stop();
             return std::string();
         }},
    };
}

} // namespace sim
