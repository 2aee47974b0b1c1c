// SPDX-License-Identifier: GPL-2.0-or-later
// The one loop that boardsim runs in: descriptors, timers, end by signal.
#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <vector>

#include "base/fd.hpp"

namespace sim {

using Clock = std::chrono::steady_clock;

class EventLoop {
public:
    // Called with epoll's event bits.
    using Ready = std::function<void(std::uint32_t)>;
    using Timer = std::function<void()>;
    using TimerId = std::pair<Clock::time_point, std::uint64_t>;

    // Blocks SIGTERM and SIGINT for the process and ends run() when one arrives.
    EventLoop();

    void watch(int fd, std::uint32_t events, Ready ready);
    void change(int fd, std::uint32_t events);
    // Call before closing the descriptor; may be called from inside its own callback.
    void unwatch(int fd);
    TimerId after(std::chrono::microseconds delay, Timer timer);
    void cancel(const TimerId &id) { timers_.erase(id); }
    void run();

private:
    struct Watch {
        std::uint32_t generation = 0;
        std::shared_ptr<Ready> ready;
    };

    void dispatch(std::uint64_t tag, std::uint32_t events);
    void run_timers();
    [[nodiscard]] int wait_ms() const;

    base::Fd epoll_;
    base::Fd signals_;
    std::vector<Watch> watches_; // by descriptor
    std::map<TimerId, Timer> timers_;
    std::uint64_t timer_count_ = 0;
    bool ended_ = false;
};

} // namespace sim
