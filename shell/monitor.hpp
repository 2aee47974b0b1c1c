// SPDX-License-Identifier: GPL-2.0-or-later
// The daemon's log as it is written: `diagsh -m`.
#pragma once

#include "shell/paths.hpp"

namespace diagsh {

// Writes what the daemon logs from now on to standard output, a line at a time, until a signal ends diagsh or
// its reader goes away.  Throws Failure EX_UNAVAILABLE when the daemon ends; lines lost because the reader is
// slow are counted on standard error.  Returns only when the daemon refuses, with the command's status.
int monitor_log(const OltPaths &olt);

} // namespace diagsh
