// SPDX-License-Identifier: GPL-2.0-or-later
// `diagsh VERB ...`: jobs of several commands, with one answer.  Each returns diagsh's exit status: 0 when
// done, 1 when the daemon refused or the answer is bad; Failure EX_USAGE for words that it does not take.
#pragma once

#include "shell/paths.hpp"

#include <string>
#include <string_view>
#include <vector>

namespace diagsh {

using Words = std::vector<std::string>;

// Runs the verb that `words` begins with.
int run_verb(const OltPaths &olt, const Words &words);

// threshold NAME ALARM CLEAR [PORT...], threshold NAME off [PORT...]: a threshold of PON modules on all
// ports, or on these, each in the node that fits its module.
int set_port_thresholds(const OltPaths &olt, const Words &words);

// traps: where alarms are sent, and which.
int tell_receivers(const OltPaths &olt, const Words &words);

// fans: what the fans do, and why.
int explain_fans(const OltPaths &olt, const Words &words);

// logic COMMAND...: replaces the CPLD's logic by a command of diagnose, and judges what came of it.
int replace_logic(const OltPaths &olt, const Words &words);

} // namespace diagsh
