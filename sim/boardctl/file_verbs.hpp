// SPDX-License-Identifier: GPL-2.0-or-later
// Verbs that read or write files: plug, module make, check.
#pragma once

#include <string>
#include <vector>

namespace sim {

bool is_file_verb(const std::vector<std::string> &words);

// Does the verb's work on files.  Returns the request left for the board, empty when there is none.  Throws
// std::exception with what is wrong, in one line but for check.
std::vector<std::string> prepare_file_verb(const std::vector<std::string> &words);

} // namespace sim
