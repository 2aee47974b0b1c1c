// SPDX-License-Identifier: GPL-2.0-or-later
// Asking a running boardsim.
#pragma once

#include <string>
#include <vector>

namespace sim {

// Sends a request and passes the answer on as it arrives: text to standard output, complaints to standard
// error.  Returns the exit status, 1 also when there is no board.
int ask_board(const std::string &folder, const std::vector<std::string> &words);

} // namespace sim
