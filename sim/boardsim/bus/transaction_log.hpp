// SPDX-License-Identifier: GPL-2.0-or-later
// Ring of the last transactions and operator actions.  Entries become text only when somebody looks.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <variant>
#include <vector>

#include "sim/boardsim/bus/transaction.hpp"
#include "sim/boardsim/event_loop.hpp"

namespace sim {

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
