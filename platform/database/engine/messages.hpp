// SPDX-License-Identifier: GPL-2.0-or-later
// Debug switch of the library and sysrepo's messages, which are off unless the switch asks for them.
#pragma once

namespace tq::db {

// Turns sysrepo's messages on or off as the switch says now.
void apply_log_setting();

} // namespace tq::db
