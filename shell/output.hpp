// SPDX-License-Identifier: GPL-2.0-or-later
// What the daemon says, on the streams of diagsh.
#pragma once

#include "shell/vty_session.hpp"

#include <string>

namespace diagsh {

// Writes text to standard output at once.  A reader that went away (`| head`) ends diagsh through SIGPIPE;
// throws Failure when the text cannot be written, for a full disk must not pass for success.
void write_out(const std::string &text);

// Writes what a failed command said, or that it failed, to standard error.  Returns the command's status.
int report_failed(const std::string &command, const VtyAnswer &answer);

} // namespace diagsh
