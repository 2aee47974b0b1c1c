// SPDX-License-Identifier: GPL-2.0-or-later
// Warnings of a daemon's start (see start_log.hpp).
// Failure policy: a line that there is no memory for is in the log once only.
#include "platform/system/start_log.hpp"

#include "platform/system/config_hook.h"

#include <mutex>
#include <new>
#include <string>
#include <vector>

#include <zebra.h>

#include <log.h>

namespace tq {

namespace {

constexpr std::size_t longest = 16; // lines; a program that reads no configuration keeps no more

std::mutex mutex;
bool is_config_read = false;
std::vector<std::string> &lines()
{
    static auto &kept = *new std::vector<std::string>;
    return kept;
}

void log_again() noexcept
{
    std::vector<std::string> kept;
    {
        const std::lock_guard lock(mutex);
        is_config_read = true;
        kept.swap(lines());
    }
    for (const std::string &line : kept)
        zlog_warn("%s", line.c_str());
}

void keep(const char *line)
{
    const std::lock_guard lock(mutex);
    static const bool is_registered = [] {
        tq_config_hook_register(log_again);
        return true;
    }();
    if (is_registered && !is_config_read && lines().size() < longest)
        lines().emplace_back(line);
}

} // namespace

void warn_from_the_start(const char *line) noexcept
{
    zlog_warn("%s", line);
    try {
        keep(line);
    } catch (const std::bad_alloc &) {
    }
}

} // namespace tq
