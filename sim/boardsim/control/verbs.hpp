// SPDX-License-Identifier: GPL-2.0-or-later
// What an operator can do to the board: one row per verb.
#pragma once

#include <functional>
#include <optional>
#include <string>

#include "sim/boardsim/bus/bus_service.hpp"
#include "sim/boardsim/bus/service_bus.hpp"
#include "sim/boardsim/control/control_service.hpp"
#include "sim/boardsim/devices/front_panel.hpp"
#include "sim/boardsim/physics/drift.hpp"
#include "sim/boardsim/physics/thermal.hpp"
#include "sim/boardsim/simulated_board.hpp"

namespace sim {

class Verbs {
public:
    Verbs(EventLoop &loop, SimulatedBoard &board, FrontPanel &panel, const BusService &bus,
          ServiceBus &service_bus, Drift &drift);

    // Answers the client: status digit, newline, text.  Never throws.
    void run(const Words &words, ControlClient &client);
    // Called after a verb that may have changed what the state folder keeps.
    void on_write(std::function<void()> written) { written_ = std::move(written); }
    void set_drift(bool on);

private:
    struct Row;
    static const Row rows[];

    // Each takes the words after the verb and returns the text to show, "" for "ok".  Mistakes are
    // std::exceptions whose text is shown after "error: ".
    std::string help(const Words &words);
    std::string show(const Words &words);
    std::string reg_get(const Words &words);
    std::string reg_set(const Words &words);
    std::string reg_plain(const Words &words);
    std::string power(const Words &words);
    std::string logic(const Words &words);
    std::string devtype(const Words &words);
    std::string temp_set(const Words &words);
    std::string temp_raw(const Words &words);
    std::string temp_fail(const Words &words);
    std::string heat(const Words &words);
    std::string plug(const Words &words);
    std::string unplug(const Words &words);
    std::string module_get(const Words &words);
    std::string module_set(const Words &words);
    std::string module_die(const Words &words);
    std::string module_revive(const Words &words);
    std::string channel_show(const Words &words);
    std::string button(const Words &words);
    std::string gpio_show(const Words &words);
    std::string gpio_get(const Words &words);
    std::string gpio_fail(const Words &words);
    std::string fault_add(const Words &words);
    std::string fault_list(const Words &words);
    std::string fault_delete(const Words &words);
    std::string fault_clear(const Words &words);
    std::string phy_get(const Words &words);
    std::string phy_set(const Words &words);
    std::string phy_link(const Words &words);
    std::string fru(const Words &words);
    std::string fru_get(const Words &words);
    std::string fru_set(const Words &words);
    std::string bus_send(const Words &words);
    std::string bus_raw(const Words &words);
    std::string bus_clients(const Words &words);
    std::string bus_log(const Words &words);
    std::string bus_clear(const Words &words);
    std::string bus_up(const Words &words);
    std::string bus_down(const Words &words);
    std::string time_scale(const Words &words);
    std::string drift(const Words &words);
    std::string log_clear(const Words &words);
    std::string log_mark(const Words &words);
    std::string log_next(const Words &words);
    // These answer over time.
    void reg_watch(const Words &words, ControlClient &client);
    void log_dump(const Words &words, ControlClient &client);
    void log_wait(const Words &words, ControlClient &client);

    void dispatch(const Words &words, ControlClient &client);
    Cage &cage(const std::string &kind, const std::string &port);
    Module &module(const std::string &kind, const std::string &port);
    PhyChip &phy(const Words &words);
    [[nodiscard]] std::chrono::microseconds scaled(double milliseconds) const;
    void drift_step();
    void set_heating(bool on);
    void heat_step();

    struct Watcher {
        ControlClient *client;
        std::uint8_t reg;
    };
    struct Waiter;

    EventLoop &loop_;
    SimulatedBoard &board_;
    FrontPanel &panel_;
    const BusService &bus_;
    ServiceBus &service_bus_;
    Drift &drift_;
    std::function<void()> written_;
    std::vector<Watcher> watchers_;
    std::vector<std::shared_ptr<Waiter>> waiters_;
    std::optional<EventLoop::TimerId> drift_timer_;
    std::optional<EventLoop::TimerId> button_timer_;
    std::optional<EventLoop::TimerId> heat_timer_;
    Thermal thermal_;
    std::optional<unsigned> temperature_fault_;
    double time_scale_ = 1;
    bool drifting_ = false;
};

} // namespace sim
