// SPDX-License-Identifier: GPL-2.0-or-later
// How the shim, a library that tests preload into the daemon, stands between it and the functions that it
// calls: they appear in the call trace (TQ_TRACE) among those of the platform, and obey the fault table
// (TQ_FAULTS), by the function's name.
// A call that the trace itself makes, or that a recorded one makes in turn inside libc, is not recorded.
// With CALL_SHIM_DISTURB=SEED some of these calls, and those that take and give semaphores, sleep a little
// before and after, so that threads and processes meet in orders that a quiet machine never shows.
#pragma once

#include "platform/trace/tq_trace.hpp"

#include <dlfcn.h>
#include <sys/auxv.h>

#include <cerrno>
#include <cstdint>
#include <cstdlib>
#include <ctime>

namespace shim {

inline thread_local bool inside = false;

template <class Function>
Function *next(const char *name)
{
    return reinterpret_cast<Function *>(dlsym(RTLD_NEXT, name));
}

// Sleeps now and then.  Each thread has choices of its own, which the seed and its name decide.
class Disturbance {
public:
    void sleep_now_and_then()
    {
        if (chance_ == 0) [[unlikely]]
            chance_ = seed_of_thread();
        const std::uint32_t choice = next_choice();
        constexpr std::uint32_t one_in = 16;
        constexpr std::uint32_t long_one_in = 512;
        if (choice % one_in != 0)
            return;
        constexpr long short_us = 1'000;
        constexpr long long_us = 20'000;
        const long most_us = choice % long_one_in == 0 ? long_us : short_us;
        const timespec pause{0,
                             static_cast<long>(next_choice() % static_cast<std::uint32_t>(most_us)) * 1'000};
        const int saved = errno;
        clock_nanosleep(CLOCK_MONOTONIC, 0, &pause, nullptr);
        errno = saved;
    }

    static bool is_wanted()
    {
        static const bool wanted = std::getenv("CALL_SHIM_DISTURB") != nullptr;
        return wanted;
    }

private:
    static std::uint32_t seed_of_thread()
    {
        std::uint32_t hash = 2'166'136'261U; // FNV-1a
        const auto mix = [&hash](const char *text) {
            for (; *text != '\0'; ++text)
                hash = (hash ^ static_cast<unsigned char>(*text)) * 16'777'619U;
        };
        if (const char *const seed = std::getenv("CALL_SHIM_DISTURB"))
            mix(seed);
        mix(tq::current_thread_name().text);
        return hash != 0 ? hash : 1;
    }

    std::uint32_t next_choice()
    {
        chance_ ^= chance_ << 13; // xorshift
        chance_ ^= chance_ >> 17;
        chance_ ^= chance_ << 5;
        return chance_;
    }

    std::uint32_t chance_ = 0;
};
inline thread_local Disturbance disturbance;

// Runs `call` with a little sleep before and after it, if that is wanted.
template <class F>
auto disturbed(F &&call)
{
    if (!Disturbance::is_wanted())
        return call();
    disturbance.sleep_now_and_then();
    struct After {
        ~After() { disturbance.sleep_now_and_then(); }
    } after;
    return call();
}

// Runs `call`, recorded unless this thread is recording already.  libfrr's own functions call one another,
// and those calls are part of the order: `nested` lets them through.
template <bool nested, class F, class... Args>
auto recorded(const char *op, F &&call, const Args &...args)
{
    if (inside)
        return call();
    inside = true;
    auto once = [&] {
        inside = !nested;
        struct Restore {
            ~Restore() { inside = true; }
        } restore;
        return call();
    };
    struct Leave {
        ~Leave() { inside = false; }
    } leave;
    return disturbed([&] { return tq::traced(op, once, args...); });
}

// Whether a call comes from the daemon's own code.  What libraries do for themselves with threads and sockets
// is no part of any order.
inline bool is_of_the_daemon(const void *return_address)
{
    static const void *const daemon = [] {
        Dl_info program{};
        dladdr(reinterpret_cast<const void *>(getauxval(AT_ENTRY)), &program);
        return static_cast<const void *>(program.dli_fbase);
    }();
    Dl_info caller{};
    return dladdr(return_address, &caller) != 0 && caller.dli_fbase == daemon;
}

inline constexpr bool leaf = false;
inline constexpr bool nested = true;

} // namespace shim

#define OF_THE_DAEMON() shim::is_of_the_daemon(__builtin_return_address(0))
#define NEXT(function) static auto *const real = shim::next<decltype(function)>(#function)
