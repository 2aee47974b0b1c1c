// SPDX-License-Identifier: GPL-2.0-or-later
// Debug switch.  TQ_DATABASE_DEBUG in the environment gives its value at start, a word of bits:
//   1  sysrepo's errors and warnings to standard error
//   2  all of sysrepo's messages
//   8  trace of the apply lock, printed by the daemon
// A message function is called on any thread of the process, also on those that libfrr does not know: it must
// not log through libfrr.
#include "platform/database/engine/messages.hpp"

#include "platform/database/engine/sysrepo.hpp"
#include "platform/trace/tq_trace.hpp"
#include "tq_database.h"

#include <atomic>
#include <cstdio>
#include <cstdlib>

namespace {

enum : std::uint32_t { debug_failures = 1, debug_everything = 2 };

void print_message(sr_log_level_t level, const char *message)
{
    std::fprintf(stderr, "sysrepo %d: %s\n", level, message);
}

std::uint32_t own_flag = [] {
    const char *text = std::getenv("TQ_DATABASE_DEBUG");
    return text ? static_cast<std::uint32_t>(std::strtoul(text, nullptr, 0)) : 0U;
}();

std::atomic<std::uint32_t *> flag = &own_flag;
std::atomic<sr_log_cb> message_function = print_message;

void pass_on(sr_log_level_t level, const char *message)
{
    const std::uint32_t bits = *flag.load();
    if ((bits & debug_everything) != 0 || ((bits & debug_failures) != 0 && level <= SR_LL_WRN))
        if (const sr_log_cb function = message_function.load())
            function(level, message);
}

} // namespace

// sysrepo formats every message for a log function, wanted or not: there is one only while it is asked for.
void tq::db::apply_log_setting()
{
    const bool is_wanted = (*flag.load() & (debug_failures | debug_everything)) != 0;
    sr_log_stderr(SR_LL_NONE);
    sr_log_set_cb(is_wanted ? pass_on : nullptr);
    if (!is_wanted)
        ly_log_options(0); // libyang's own messages neither
}

void *db_debug_flag_return(void)
{
    return tq::traced("db_debug_flag_return", [] { return static_cast<void *>(flag.load()); });
}

void db_debug_flag_reg(void *new_flag)
{
    tq::traced("db_debug_flag_reg", [&] {
        flag = new_flag ? static_cast<std::uint32_t *>(new_flag) : &own_flag;
        tq::db::apply_log_setting();
    });
}

void *sysrepo_debug_func_return(void)
{
    return tq::traced("sysrepo_debug_func_return",
                      [] { return reinterpret_cast<void *>(message_function.load()); });
}

void sysrepo_debug_fun_reg(void *func)
{
    tq::traced("sysrepo_debug_fun_reg", [&] {
        message_function = reinterpret_cast<sr_log_cb>(func);
        tq::db::apply_log_setting();
    });
}

uint32_t db_debug_get(void)
{
    return tq::traced("db_debug_get", [] { return *flag.load(); });
}
