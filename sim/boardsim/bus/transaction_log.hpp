// SPDX-License-Identifier: GPL-2.0-or-later
// Transactions on the board's buses, as faults are matched against them, and the ring of the last ones.
#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "platform/board/sim_protocol.hpp"
#include "sim/boardsim/event_loop.hpp"

namespace sim {

inline constexpr int no_channel = -1;

// Names of the operations, in the order of board::SimOp.
inline constexpr std::array<std::string_view, board::sim_op_count> op_names = {
    "open",   "i2c_read", "i2c_write", "cpld_read", "cpld_write",
    "select", "deselect", "phy_read",  "phy_write"};

struct Transaction {
    board::SimOp op{};
    std::uint8_t address = 0;
    std::uint8_t reg = 0;
    std::uint8_t data_size = 0;        // of `data`
    std::int16_t bus = 0;              // of the handle
    std::int16_t channel = no_channel; // selected on the handle, or asked for by a select
    std::uint32_t handle = 0;          // number of the connection
    std::uint32_t length = 0;          // bytes to transfer
    std::uint32_t phy = 0;
    std::uint32_t phy_reg = 0;
    std::array<char, 16> thread{};
    std::array<std::uint8_t, 8> data{}; // first bytes written or read, or the register's value
    std::int32_t result = 0;

    [[nodiscard]] std::string_view thread_name() const
    {
        const std::string_view all(thread.data(), thread.size());
        return all.substr(0, all.find('\0'));
    }
    // "OP ARGS -> RESULT"
    [[nodiscard]] std::string text() const;
};

// Ring of the last transactions and operator actions.  Entries become text only when somebody looks.
class TransactionLog {
public:
    explicit TransactionLog(std::size_t capacity = 65536) : capacity_(capacity) {}

    void add(const Transaction &transaction) { add_entry(transaction); }
    // Operator action or mark.
    void add_text(std::string text) { add_entry(std::move(text)); }
    void clear();
    // Lines "SEQ MONOTONIC_MS THREAD OP ARGS -> RESULT" of the entries from `since` on, oldest first.
    void each(std::uint64_t since, const std::function<void(const std::string &line)> &use) const;
    // Sequence number that the next entry gets.
    [[nodiscard]] std::uint64_t next() const { return next_; }
    // Called after each new entry, when set.
    void on_add(std::function<void()> added) { added_ = std::move(added); }

private:
    struct Entry {
        std::uint64_t sequence;
        Clock::time_point time;
        std::variant<Transaction, std::string> what;
    };
    void add_entry(std::variant<Transaction, std::string> what);
    static std::string line(const Entry &entry);

    std::size_t capacity_;
    std::vector<Entry> entries_;
    std::uint64_t first_ = 1; // of the entries kept
    std::uint64_t next_ = 1;
    std::function<void()> added_;
};

} // namespace sim
