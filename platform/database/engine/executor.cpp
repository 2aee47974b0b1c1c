// SPDX-License-Identifier: GPL-2.0-or-later
// The thread that waits in the callers' place.
#include "platform/database/engine/executor.hpp"

#include "platform/database/engine/thread.hpp"
#include "tq_errno.h"

#include <new>
#include <utility>

namespace tq::db {

Executor::Executor(std::function<void()> look, std::chrono::milliseconds period)
    : look_(std::move(look)), period_(period)
{
}

Executor::~Executor()
{
    {
        const std::lock_guard lock(mutex_);
        is_stopped_ = true;
    }
    asked_.notify_one();
    if (thread_.joinable())
        thread_.join();
}

int Executor::start()
{
    return thread_.joinable() ? TQ_OK : start_thread(thread_, "tq_executor", [this] { work(); });
}

int Executor::run(std::function<int()> work, std::chrono::milliseconds wait)
{
    std::unique_lock lock(mutex_);
    const auto deadline = (is_busy_ ? busy_since_ : Clock::now()) + wait;
    // Callers take turns: another job is one that was given up.
    if (!ended_.wait_until(lock, deadline, [this] { return !job_; }))
        return TQ_ERR_NO_DB;
    const auto job = std::make_shared<Job>();
    job->work = std::move(work);
    job_ = job;
    asked_.notify_one();
    if (ended_.wait_until(lock, deadline, [&] { return job->is_done; }))
        return job->code;
    job->is_awaited = false;
    if (job->is_begun)
        return TQ_ERR_TIMEOUT;
    job_.reset();
    return TQ_ERR_NO_DB;
}

bool Executor::is_awaited()
{
    const std::lock_guard lock(mutex_);
    return !job_ || job_->is_awaited;
}

void Executor::work() noexcept
{
    std::unique_lock lock(mutex_);
    while (!is_stopped_) {
        asked_.wait_for(lock, period_, [this] { return job_ || is_stopped_; });
        if (is_stopped_)
            return;
        const std::shared_ptr<Job> job = job_;
        if (job)
            job->is_begun = true;
        is_busy_ = true;
        busy_since_ = Clock::now();
        lock.unlock();
        int code = TQ_OK;
        try {
            if (job)
                code = job->work();
            else
                look_();
        } catch (const std::bad_alloc &) {
            code = TQ_ERR_NO_MEMORY;
        } catch (...) { // a mutex or a stream that the system refused
            code = TQ_ERR;
        }
        lock.lock();
        is_busy_ = false;
        if (job) {
            job->code = code;
            job->is_done = true;
            job_.reset();
        }
        ended_.notify_all();
    }
}

} // namespace tq::db
