// SPDX-License-Identifier: GPL-2.0-or-later
// The table of "show alarm-log all configuration".  Pure.
#pragma once

#include <string>
#include <string_view>

namespace diagsh {

// Alarms and events of `table` whose action (print, record, trap, remote) is on.  Words are counted from the
// end of a line: a type may be wider than its column and moves what is behind it, and descriptions have
// blanks.
unsigned count_enabled(std::string_view table, std::string_view action);

} // namespace diagsh
