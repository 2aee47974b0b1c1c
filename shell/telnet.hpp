// SPDX-License-Identifier: GPL-2.0-or-later
// The interactive session: the terminal and the daemon's telnet vty, passed through to each other.
#pragma once

#include <string>

namespace diagsh {

// Connects to the vty on this machine's port 2709 and passes it through until either side ends.  Line
// editing, completion and `?` are the vty's own.  When the vty asks for the password before the person has
// typed anything, and `password` is not empty, it is given once; after that the person is asked.  Control-]
// leaves at once.  Throws Failure when no daemon answers.
void run_interactive(const std::string &password);

} // namespace diagsh
