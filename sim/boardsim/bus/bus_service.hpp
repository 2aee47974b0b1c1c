// SPDX-License-Identifier: GPL-2.0-or-later
// The transaction socket: serves the board libraries.
#pragma once

#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

#include "sim/boardsim/bus/bus_handle.hpp"
#include "sim/boardsim/event_loop.hpp"
#include "sim/boardsim/simulated_board.hpp"

namespace sim {

class BusService {
public:
    // Listens on an already bound socket.
    BusService(EventLoop &loop, SimulatedBoard &board, base::Fd listener);
    ~BusService();
    // Called after a transaction that may have changed what the state folder keeps.
    void on_write(std::function<void()> written) { written_ = std::move(written); }
    // "h=N bus B channel C" of every open handle.
    [[nodiscard]] std::vector<std::string> handles() const;

private:
    struct Handle;
    void accept();
    void serve(Handle &handle);
    void drop(std::uint32_t number);
    static void send(const Handle &handle, std::uint32_t sequence, const BusAnswer &answer);

    EventLoop &loop_;
    SimulatedBoard &board_;
    base::Fd listener_;
    std::unordered_map<std::uint32_t, std::unique_ptr<Handle>> handles_;
    std::uint32_t last_number_ = 0;
    std::function<void()> written_;
    std::vector<std::uint8_t> packet_;
    BusAnswer answer_;
};

} // namespace sim
