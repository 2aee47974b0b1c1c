// SPDX-License-Identifier: GPL-2.0-or-later
// Handlers that wait for a semaphore, and the event loop that goes on meanwhile (see lock_wait.hpp).
//
// One stack runs: the first, on which libfrr's own loop runs, or one of those made here, each with a loop of
// its own. The others belong to handlers that wait, but for the first when it has lent the loop to a handler
// that goes on.
//
// Failure policy: with no memory for another stack, or too many of them, the event loop waits with the
// handler.
#include "diagd/core/lock_wait.hpp"

#include "base/semaphore_holder.hpp"
#include "diagd/core/frr.hpp"
#include "diagd/core/loop_stack.hpp"
#include "diagd/core/state.hpp"
#include "diagd/core/worker_thread.hpp"

#include <pthread.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <list>
#include <memory>
#include <mutex>
#include <new>
#include <utility>

DECLARE_HOOK(cmd_execute, (struct vty * vty, const char *cmd_in, char **cmd_out), (vty, cmd_in, cmd_out));
DECLARE_KOOH(cmd_execute_done, (struct vty * vty, const char *cmd_exec), (vty, cmd_exec));

namespace {

using diagd::LoopStack;

// What a semaphore is held for as a rule is over long before.
constexpr timespec patience{0, 100'000'000};
constexpr std::size_t most_waiting = 128;

// A handler's place in the queue for a semaphore, which a thread of its own keeps.
struct Place {
    explicit Place(int id) noexcept : semaphore(id) {}

    const int semaphore;
    std::atomic<bool> is_reached = false;
};

struct Waiting {
    std::shared_ptr<Place> place;
    std::unique_ptr<LoopStack> own; // none: the first stack
    LoopStack *stack = nullptr;
};

pthread_t main_thread;
LoopStack *first = nullptr;
LoopStack *running = nullptr;
std::unique_ptr<LoopStack> running_own; // none while the first runs
std::unique_ptr<LoopStack> left_for_good;
bool is_first_lent = false; // it can go on at any time
std::list<Waiting> *waiting = nullptr;
struct vty *session = nullptr; // whose command runs on this stack; none in a timer
std::mutex places_mutex;       // of the places whose threads have not begun
std::list<std::shared_ptr<Place>> *places = nullptr;

bool is_held(int semaphore) noexcept
{
    return semctl(semaphore, 0, GETVAL) == 0;
}

// Takes and gives it in one operation, in turn with all others who wait.  False: it took too long.
bool comes_free(int semaphore, const timespec &limit) noexcept
{
    struct sembuf through[] = {{0, -1, 0}, {0, 1, 0}};
    return semtimedop(semaphore, through, 2, &limit) == 0 || (errno != EAGAIN && errno != EINTR);
}

bool is_waited_for(int semaphore) noexcept
{
    return std::any_of(waiting->begin(), waiting->end(),
                       [&](const Waiting &one) { return one.place->semaphore == semaphore; });
}

void look(struct thread *) noexcept;

// A thread that waits in a handler's place, and names whoever lets it wait for long.
void keep_place() noexcept
{
    std::shared_ptr<Place> place;
    {
        const std::lock_guard lock{places_mutex};
        place = std::move(places->front());
        places->pop_front();
    }
    constexpr timespec long_wait{base::long_wait_s, 0};
    int named = -1;
    while (!comes_free(place->semaphore, long_wait)) {
        const base::SemaphoreHolder holder = base::holder_of(place->semaphore);
        if (holder.process >= 0 && holder.process != named)
            zlog_warn("%s", holder.line);
        named = holder.process;
    }
    place->is_reached = true;
    thread_add_event(diagm.master, look, nullptr, 0, nullptr);
}

bool start_keeping(const std::shared_ptr<Place> &place)
{
    const std::lock_guard lock{places_mutex};
    places->push_back(place);
    if (diagd::start_helper("lock_wait", keep_place))
        return true;
    places->pop_back();
    return false;
}

// Takes the one that waits longest of those whose semaphore is free out of the list.
bool take_ready(Waiting &ready) noexcept
{
    const auto one = std::find_if(waiting->begin(), waiting->end(),
                                  [](const Waiting &each) { return each.place->is_reached.load(); });
    if (one == waiting->end())
        return false;
    ready = std::move(*one);
    waiting->erase(one);
    --diagd::detail::waiting_handlers;
    return true;
}

// `own` is the next one's; what ran belongs to whoever waits on it, or is left for good.
void go_on_with(LoopStack &next, std::unique_ptr<LoopStack> own) noexcept
{
    LoopStack &before = *std::exchange(running, &next);
    running_own = std::move(own);
    before.switch_to(next);
    left_for_good.reset();
}

// Loops of other stacks look by themselves; this one's is libfrr's.
void look(struct thread *) noexcept
{
    Waiting ready;
    while (running == first && take_ready(ready)) {
        is_first_lent = true;
        go_on_with(*ready.stack, std::move(ready.own));
        is_first_lent = false;
    }
}

// The loop on a stack of its own, until somebody else can go on with it.
void run_loop() noexcept
{
    left_for_good.reset();
    struct thread event;
    for (;;) {
        Waiting ready;
        LoopStack *next = nullptr;
        if (is_first_lent)
            next = first;
        else if (take_ready(ready))
            next = ready.stack;
        if (next != nullptr) {
            ready.place.reset(); // nothing on this stack is ended any more
            left_for_good = std::move(running_own);
            go_on_with(*next, std::move(ready.own));
        }
        if (thread_fetch(diagm.master, &event) != nullptr)
            thread_call(&event);
    }
}

// A session must not be closed, nor take more input, under its command.  The end of the command brings both
// back.
void hold_session() noexcept
{
    if (session == nullptr)
        return;
    THREAD_OFF(session->t_read);
    THREAD_OFF(session->t_write);
    THREAD_OFF(session->t_timeout);
}

// False: the loop cannot go on without this handler.
bool leave_handler(int semaphore)
{
    std::unique_ptr<LoopStack> made;
    if (!is_first_lent) {
        made = std::make_unique<LoopStack>();
        if (!made->prepare(run_loop))
            return false;
    }
    auto place = std::make_shared<Place>(semaphore);
    waiting->push_back({place, nullptr, running});
    if (!start_keeping(place)) {
        waiting->pop_back();
        return false;
    }
    waiting->back().own = std::move(running_own);
    ++diagd::detail::waiting_handlers;
    hold_session();
    struct vty *const of_this_stack = std::exchange(session, nullptr);
    LoopStack &next = made ? *made : *first;
    go_on_with(next, std::move(made));
    session = of_this_stack;
    return true;
}

void wait_for(int semaphore) noexcept
{
    if (!pthread_equal(pthread_self(), main_thread) || diagd::detail::is_loop_kept > 0)
        return;
    while (is_held(semaphore)) {
        if (!is_waited_for(semaphore) && comes_free(semaphore, patience))
            return;
        try {
            if (waiting->size() >= most_waiting || !leave_handler(semaphore))
                return;
        } catch (const std::bad_alloc &) {
            return;
        }
    }
}

int on_command(struct vty *vty, const char *, char **) noexcept
{
    session = vty;
    return 0;
}

int on_command_done(struct vty *, const char *) noexcept
{
    session = nullptr;
    return 0;
}

int on_config_read(struct thread_master *) noexcept
{
    diagd::detail::lock_wait = wait_for;
    return 0;
}

} // namespace

void lock_wait_init()
{
    main_thread = pthread_self();
    first = running = new LoopStack;
    waiting = new std::list<Waiting>;
    places = new std::list<std::shared_ptr<Place>>;
    hook_register(cmd_execute, on_command);
    hook_register(cmd_execute_done, on_command_done);
    hook_register(frr_config_post, on_config_read);
}
