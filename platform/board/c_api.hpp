// SPDX-License-Identifier: GPL-2.0-or-later
// What the three C libraries share: errno at the boundary, the debug switch, debug lines.
#pragma once

#include <cerrno>
#include <cstdarg>
#include <cstdint>
#include <cstdio>

#include "platform/board/bus.hpp"

namespace board {

// Runs `operation` on this box's bus.  The result as it is, or -1 with errno set.
template <class Operation>
int on_bus(Operation &&operation)
{
    const Bus *bus = this_bus();
    const int result = bus != nullptr ? operation(*bus) : -ENODEV;
    if (result >= 0)
        return result;
    errno = -result;
    return -1;
}

inline int fail(int error)
{
    errno = error;
    return -1;
}

// One line of debug output, ended with "\r\n", on standard output; keeps errno.
__attribute__((format(printf, 2, 3))) inline void debug_line(const std::uint8_t &enabled, const char *format,
                                                             ...)
{
    if (__atomic_load_n(&enabled, __ATOMIC_RELAXED) == 0) [[likely]]
        return;
    const int saved = errno;
    char line[160];
    va_list args;
    va_start(args, format);
    std::vsnprintf(line, sizeof line, format, args);
    va_end(args);
    std::printf("%s\r\n", line);
    errno = saved;
}

inline int set_debug(std::uint8_t &enabled, int on)
{
    __atomic_store_n(&enabled, static_cast<std::uint8_t>(on != 0), __ATOMIC_RELAXED);
    return 0;
}

inline int get_debug(const std::uint8_t &enabled)
{
    return __atomic_load_n(&enabled, __ATOMIC_RELAXED);
}

} // namespace board
