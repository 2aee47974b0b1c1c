// SPDX-License-Identifier: GPL-2.0-or-later
// Looking commands up: `diagsh --find`, `diagsh --help-for`, "find" in a session.  Pure.
#pragma once

#include "shell/enquiries.hpp"

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace diagsh {

// The commands in whose syntax or help `pattern` is found, one a line: nodes, syntax with long lists of names
// as <ALARM> and the like, help.  `pattern` is an extended regular expression, or plain text where it is
// none; capitals and small letters are the same.  Where people have another word for a thing than the
// commands, those that have the commands' word follow, behind a line that says so.
std::string find_commands(const std::vector<Command> &commands, const std::string &pattern);

// The commands that begin with these words, which may be shortened: for each its nodes, its syntax and the
// help of each word, in `width` columns.  Empty when there are none.
std::string help_for(const std::vector<Command> &commands, std::string_view words, std::size_t width);

// `syntax` with a name in the place of each list that is too long to be read in passing.
std::string short_syntax(std::string_view syntax);

// Names of all alarms and events, in order of the alphabet.
std::vector<std::string> alarm_names(const std::vector<Command> &commands);

} // namespace diagsh
