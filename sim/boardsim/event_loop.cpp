// SPDX-License-Identifier: GPL-2.0-or-later
// Event loop.  Failure policy: without epoll there is no board, so set-up errors are exceptions.
#include "sim/boardsim/event_loop.hpp"

#include <csignal>
#include <sys/epoll.h>
#include <sys/signalfd.h>

#include <cerrno>
#include <memory>
#include <system_error>

namespace sim {

namespace {

[[noreturn]] void fail(const char *what)
{
    throw std::system_error(errno, std::generic_category(), what);
}

} // namespace

EventLoop::EventLoop() : epoll_(::epoll_create1(EPOLL_CLOEXEC))
{
    sigset_t set;
    sigemptyset(&set);
    sigaddset(&set, SIGTERM);
    sigaddset(&set, SIGINT);
    ::sigprocmask(SIG_BLOCK, &set, nullptr);
    signals_.reset(::signalfd(-1, &set, SFD_CLOEXEC | SFD_NONBLOCK));
    if (!epoll_ || !signals_)
        fail("epoll");
    watch(signals_.get(), EPOLLIN, [this](std::uint32_t) { ended_ = true; });
}

// The generation tells an event of a closed descriptor from one of its successor with the same number.
void EventLoop::watch(int fd, std::uint32_t events, Ready ready)
{
    const auto index = static_cast<std::size_t>(fd);
    if (index >= watches_.size())
        watches_.resize(index + 1);
    Watch &slot = watches_[index];
    ++slot.generation;
    slot.ready = std::make_shared<Ready>(std::move(ready));
    epoll_event event{};
    event.events = events;
    event.data.u64 = static_cast<std::uint64_t>(slot.generation) << 32 | static_cast<std::uint32_t>(fd);
    if (::epoll_ctl(epoll_.get(), EPOLL_CTL_ADD, fd, &event) != 0)
        fail("epoll_ctl");
}

void EventLoop::change(int fd, std::uint32_t events)
{
    epoll_event event{};
    event.events = events;
    event.data.u64 = static_cast<std::uint64_t>(watches_[static_cast<std::size_t>(fd)].generation) << 32 |
                     static_cast<std::uint32_t>(fd);
    if (::epoll_ctl(epoll_.get(), EPOLL_CTL_MOD, fd, &event) != 0)
        fail("epoll_ctl");
}

void EventLoop::unwatch(int fd)
{
    ::epoll_ctl(epoll_.get(), EPOLL_CTL_DEL, fd, nullptr);
    Watch &slot = watches_[static_cast<std::size_t>(fd)];
    ++slot.generation;
    slot.ready.reset();
}

EventLoop::TimerId EventLoop::after(std::chrono::microseconds delay, Timer timer)
{
    const TimerId id{Clock::now() + delay, ++timer_count_};
    timers_.emplace(id, std::move(timer));
    return id;
}

void EventLoop::dispatch(std::uint64_t tag, std::uint32_t events)
{
    const Watch &slot = watches_[static_cast<std::uint32_t>(tag)];
    if (slot.generation != tag >> 32 || !slot.ready)
        return;
    const auto ready = slot.ready; // survives an unwatch() by the callback itself
    (*ready)(events);
}

void EventLoop::run_timers()
{
    while (!timers_.empty() && timers_.begin()->first.first <= Clock::now()) {
        const Timer timer = std::move(timers_.begin()->second);
        timers_.erase(timers_.begin());
        timer();
    }
}

int EventLoop::wait_ms() const
{
    if (timers_.empty())
        return -1;
    const auto left = timers_.begin()->first.first - Clock::now();
    const auto ms = std::chrono::ceil<std::chrono::milliseconds>(left).count();
    return ms < 0 ? 0 : static_cast<int>(std::min<long>(ms, 1000));
}

void EventLoop::run()
{
    constexpr int batch = 32;
    epoll_event events[batch];
    while (!ended_) {
        const int count = ::epoll_wait(epoll_.get(), events, batch, wait_ms());
        if (count < 0 && errno != EINTR)
            fail("epoll_wait");
        for (int i = 0; i < count; ++i)
            dispatch(events[i].data.u64, events[i].events);
        run_timers();
    }
}

} // namespace sim
