// SPDX-License-Identifier: GPL-2.0-or-later
// Asking a running boardsim.
#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace sim {

// Takes a piece of the answer: `good` is false for complaints.
using AnswerSink = std::function<void(bool good, std::string_view text)>;

// Sends a request and passes the answer on as it arrives.  Returns the exit status, 1 also when there is no
// board.
int ask_board(const std::string &folder, const std::vector<std::string> &words, const AnswerSink &sink);

} // namespace sim
