// SPDX-License-Identifier: GPL-2.0-or-later
// What a line that is typed in a session means to diagsh, and what it says itself there.  Pure.
#pragma once

#include "shell/enquiries.hpp"
#include "shell/output.hpp"

#include <cstddef>
#include <string>
#include <string_view>

namespace diagsh {

struct SessionLine {
    std::string command; // for the daemon
    std::string pattern; // of "find", which is diagsh's own; then there is no command
    Wide wide;
};
// "| fold" and "| scroll" at the end decide about this command's output, which is `wide` otherwise.
SessionLine parse_session_line(std::string_view line, Wide wide);

// The first line of a session: where it is, and how to find things.  `state`: folder of the OLT that was
// asked for, empty for that of the machine.
std::string greeting(const SessionState &session, std::string_view state);

// "exit" and "quit", also shortened: what ends a session in view and enable.
bool is_exit(std::string_view command);

// `line` goes on with the name of an alarm or event, which the daemon takes as any word.
bool wants_alarm_name(std::string_view line);

// Where the text begins in a row of help, behind the word that it is for.
std::size_t help_begins(std::string_view row);

} // namespace diagsh
