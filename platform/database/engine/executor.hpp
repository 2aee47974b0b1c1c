// SPDX-License-Identifier: GPL-2.0-or-later
// A thread that works for callers who do not wait longer than they can afford: sysrepo waits up to 15 seconds
// for a lock whose holder has died.
#pragma once

#include <chrono>
#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>
#include <thread>

namespace tq::db {

class Executor {
public:
    // `look` is called by the thread every `period` in which nobody asked for anything.
    Executor(std::function<void()> look, std::chrono::milliseconds period);
    ~Executor();
    Executor(const Executor &) = delete;
    Executor &operator=(const Executor &) = delete;

    int start();

    // Has `work` done and gives its result.  TQ_ERR_TIMEOUT: not done in time; it goes on, so it must own
    // what it needs.  TQ_ERR_NO_DB: what was begun before has not ended in time; it will not be done.
    // While such work goes on, nobody waits for it again.
    int run(std::function<int()> work, std::chrono::milliseconds wait);

    // For the work: whether somebody still waits for its result.
    bool is_awaited();

private:
    using Clock = std::chrono::steady_clock;
    struct Job {
        std::function<int()> work;
        int code = 0;
        bool is_begun = false, is_done = false, is_awaited = true;
    };
    void work() noexcept;

    const std::function<void()> look_;
    const std::chrono::milliseconds period_;
    std::mutex mutex_;
    std::condition_variable asked_, ended_;
    std::shared_ptr<Job> job_;
    bool is_busy_ = false, is_stopped_ = false;
    Clock::time_point busy_since_;
    std::thread thread_;
};

} // namespace tq::db
