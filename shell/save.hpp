// SPDX-License-Identifier: GPL-2.0-or-later
// Saving the configuration of all daemons of an OLT.
#pragma once

#include "shell/paths.hpp"

#include <string>

namespace diagsh {

// "write", alone or with "file" or "memory".
bool is_save_command(const std::string &command);

// Has every daemon with a vty socket in the run folder write its configuration file; what each says goes to
// standard output.  One that cannot is named on standard error and never keeps the others from saving; a
// socket that a dead daemon left behind is passed over.  Returns the exit status, 0 when all saved.
int save_configurations(const OltPaths &olt);

} // namespace diagsh
