// SPDX-License-Identifier: GPL-2.0-or-later
// Hands the database library's debug word and sysrepo's log function back to the libraries, so that their
// debug output follows the database debug switch.
#pragma once

#include "tq_database.h"

namespace diagd {

inline void register_database_debug() noexcept
{
    db_debug_flag_reg(db_debug_flag_return());
    sysrepo_debug_fun_reg(sysrepo_debug_func_return());
}

} // namespace diagd
