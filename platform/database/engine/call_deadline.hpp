// SPDX-License-Identifier: GPL-2.0-or-later
// How long one call of the engine may take before its state counts as stuck: longer than its own times for
// callbacks, reading and locks together, so that whoever waits for longer waits for a lock whose holder has
// died.
#pragma once

#include <atomic>
#include <chrono>

namespace tq::db {

class CallDeadline {
public:
    explicit CallDeadline(std::atomic<bool> &is_stuck) : is_stuck_(is_stuck) {}

    // Remembers it in `is_stuck`, too.
    bool is_over() const
    {
        constexpr std::chrono::seconds longest{8};
        if (std::chrono::steady_clock::now() - begin_ > longest)
            is_stuck_ = true;
        return is_stuck_;
    }

private:
    std::atomic<bool> &is_stuck_;
    const std::chrono::steady_clock::time_point begin_ = std::chrono::steady_clock::now();
};

} // namespace tq::db
