// SPDX-License-Identifier: GPL-2.0-or-later
// The transaction socket: serves the board libraries.
#pragma once

#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

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
    void answer(const Handle &handle, const board::SimRequest &request, int result, std::uint32_t value,
                std::span<const std::uint8_t> data);
    int perform(Handle &handle, const board::SimRequest &request, std::span<const std::uint8_t> out,
                Transaction &transaction, std::uint32_t &value, std::vector<std::uint8_t> &in);

    EventLoop &loop_;
    SimulatedBoard &board_;
    base::Fd listener_;
    std::unordered_map<std::uint32_t, std::unique_ptr<Handle>> handles_;
    std::uint32_t last_number_ = 0;
    std::function<void()> written_;
    std::vector<std::uint8_t> packet_;
    std::vector<std::uint8_t> in_;
};

} // namespace sim
