// SPDX-License-Identifier: GPL-2.0-or-later
// The database's apply lock, for a command that changes several values at once: the changes made with apply
// flag 0 while it lives take effect together.
// Failure policy: a lock that cannot be had is no error, the changes are made anyway; changes that the
// database refuses are said in the log.
#pragma once

#include "diagd/core/frr.hpp"
#include "diagd/core/state.hpp"

#include "tq_api.h"
#include "tq_database.h"

#include <cstdio>

namespace diagd {

class ApplyLock {
public:
    // `function` names the command in the database's debug output and must outlive the lock.
    explicit ApplyLock(const char *function) noexcept : function_(function)
    {
        if (db_apply_lock(&g_diagd_db) == 0 && is_debugged())
            std::printf("[DATABASE LOCK] !!!!!!!! %s: db apply lock!!!!!!!!!\n", function_);
    }
    ~ApplyLock()
    {
        if (db_apply_unlock(&g_diagd_db) == 0 && is_debugged())
            std::printf("[DATABASE LOCK] !!!!!!!! %s: db apply unlock!!!!!!!!\n", function_);
    }
    ApplyLock(const ApplyLock &) = delete;
    ApplyLock &operator=(const ApplyLock &) = delete;

    // Make what is pending effective, or forget it.
    void apply() noexcept
    {
        if (const int code = db_apply_changes(g_diagd_db.conn); code != 0)
            zlog_err("%s: changes not applied: %s", function_, tq_strerror(code));
    }
    void discard() noexcept { db_discard_changes(g_diagd_db.conn); }

private:
    static bool is_debugged() noexcept
    {
        constexpr std::uint32_t lock_debug = 8;
        return (db_debug_get() & lock_debug) != 0;
    }

    const char *function_;
};

} // namespace diagd
