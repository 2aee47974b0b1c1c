// SPDX-License-Identifier: GPL-2.0-or-later
// Faults: which transactions fail, or come late.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "sim/boardsim/bus/transaction_log.hpp"

namespace sim {

struct Fault {
    unsigned id = 0;
    std::optional<board::SimOp> op; // every operation when empty; likewise below
    std::optional<int> bus;
    std::optional<int> address;
    std::optional<int> reg;
    std::optional<int> channel;
    std::string thread;
    unsigned long nth = 1;   // first matching transaction hit, counted from 1
    unsigned long count = 0; // hits, 0: no end
    int error = 0;           // errno value; 0: only late
    int delay_ms = 0;
    unsigned long seen = 0;
    unsigned long hits = 0;

    [[nodiscard]] bool matches(const Transaction &transaction) const;
    [[nodiscard]] std::string text() const;
};

class Faults {
public:
    struct Effect {
        int result = 0; // 0 or a negative errno value
        int delay_ms = 0;
    };

    // Counts the transaction and says what becomes of it.  The first failing fault decides the result;
    // delays add up.
    Effect evaluate(const Transaction &transaction);
    unsigned add(Fault fault);
    // False when there is no such fault.
    bool remove(unsigned id);
    void clear() { faults_.clear(); }
    [[nodiscard]] const std::vector<Fault> &all() const { return faults_; }

private:
    std::vector<Fault> faults_;
    unsigned last_id_ = 0;
};

// Fault from words such as "i2c_read addr=0x51 reg=96 nth=2 count=1 errno=5 delay=20"; the first word is an
// operation or "any".  Throws std::invalid_argument with the reason.
Fault parse_fault(const std::vector<std::string> &words);

} // namespace sim
