// SPDX-License-Identifier: GPL-2.0-or-later
// Commands run one after another without a person: `diagsh -c`, and lines piped into diagsh.
#pragma once

#include "shell/paths.hpp"

#include <string>
#include <vector>

namespace diagsh {

// The commands that lead a new session, which starts in the view node, to `node`: "view", "enable", "config",
// or any command of the configuration node that enters another one ("diagnose", "interface gpon 0/3").
std::vector<std::string> way_to_node(const std::string &node);

// Runs `commands` in `node`.  What a command prints goes to standard output when it succeeds and to standard
// error when it fails; the first failure ends the run.  Returns the exit status: the last command's.
int run_commands(const OltPaths &olt, const std::string &node, const std::vector<std::string> &commands);

} // namespace diagsh
