// SPDX-License-Identifier: GPL-2.0-or-later
// Starting worker threads.  Failure policy: a thread that cannot be started leaves nothing behind.
#include "diagd/core/worker_thread.hpp"

#include "diagd/core/frr.hpp"
#include "diagd/core/start_report.hpp"

#include <pthread.h>
#include <sys/prctl.h>

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <new>

namespace {

struct Start {
    const char *name;
    void (*body)() noexcept;
    struct rcu_thread *rcu;
};

void *run(void *argument)
{
    const std::unique_ptr<Start> start{static_cast<Start *>(argument)};
    prctl(PR_SET_NAME, start->name);
    // A thread begins inside a read section, which keeps libfrr from freeing anything until it ends.
    rcu_thread_start(start->rcu);
    rcu_read_unlock();
    start->body();
    rcu_read_lock(); // libfrr takes a thread back as it gave it
    return nullptr;
}

// A new thread inherits the signal mask: it must not take a signal that the event loop waits for.  Faults are
// its own: one that is blocked ends the process before any handler sees it.
class SignalsBlocked {
public:
    SignalsBlocked() noexcept
    {
        sigset_t all;
        sigfillset(&all);
        for (const int fault : {SIGBUS, SIGSEGV, SIGFPE, SIGILL})
            sigdelset(&all, fault);
        pthread_sigmask(SIG_BLOCK, &all, &before_);
    }
    ~SignalsBlocked() { pthread_sigmask(SIG_SETMASK, &before_, nullptr); }
    SignalsBlocked(const SignalsBlocked &) = delete;
    SignalsBlocked &operator=(const SignalsBlocked &) = delete;

private:
    sigset_t before_;
};

// 0, or what pthread_create reports.
int create(const char *name, void (*body)() noexcept, diagd::ThreadEnd end) noexcept
{
    std::unique_ptr<Start> start{new (std::nothrow) Start{name, body, nullptr}};
    if (!start)
        return -ENOMEM;
    start->rcu = rcu_thread_prepare();

    pthread_t thread;
    int result;
    {
        const SignalsBlocked blocked;
        result = pthread_create(&thread, nullptr, run, start.get());
    }
    if (result != 0) {
        rcu_thread_unprepare(start->rcu);
        return result;
    }
    static_cast<void>(start.release()); // the thread's now
    if (end == diagd::ThreadEnd::detached)
        pthread_detach(thread);
    return 0;
}

} // namespace

bool diagd::start_worker(const char *name, void (*body)() noexcept, ThreadEnd end) noexcept
{
    const int result = create(name, body, end);
    if (result != 0)
        goes_without(name, std::strerror(std::abs(result)));
    return result >= 0;
}

bool diagd::start_helper(const char *name, void (*body)() noexcept) noexcept
{
    return create(name, body, ThreadEnd::detached) == 0;
}
