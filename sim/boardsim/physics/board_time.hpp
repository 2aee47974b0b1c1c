// SPDX-License-Identifier: GPL-2.0-or-later
// The board's own time, in which it warms up and its values move: as fast as the clock's, or scaled.
#pragma once

#include <optional>
#include <utility>

#include "sim/boardsim/event_loop.hpp"

namespace sim {

class BoardTime {
public:
    explicit BoardTime(EventLoop &loop) : loop_(loop) {}

    // Seconds of the board in one of the clock, for timers started from now on.
    void set_scale(double scale) { scale_ = scale; }

private:
    friend class BoardTimer;
    EventLoop &loop_;
    double scale_ = 1;
};

// One timer at a time; starting it again replaces it, and it ends with its owner.
class BoardTimer {
public:
    explicit BoardTimer(BoardTime &time) : time_(time) {}
    BoardTimer(const BoardTimer &) = delete;
    BoardTimer &operator=(const BoardTimer &) = delete;
    ~BoardTimer() { stop(); }

    void start(double board_ms, EventLoop::Timer work)
    {
        stop();
        const std::chrono::microseconds delay(static_cast<long>(board_ms * 1000 / time_.scale_));
        id_ = time_.loop_.after(delay, [this, work = std::move(work)] {
            id_.reset();
            work();
        });
    }
    void stop()
    {
        if (id_)
            time_.loop_.cancel(*id_);
        id_.reset();
    }
    [[nodiscard]] bool runs() const { return id_.has_value(); }

private:
    BoardTime &time_;
    std::optional<EventLoop::TimerId> id_;
};

} // namespace sim
