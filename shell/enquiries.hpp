// SPDX-License-Identifier: GPL-2.0-or-later
// What a session asks beside its commands: a line that begins with ENQ is answered and not executed
// (platform/frr/13-vty-enquiries.patch).  Help and completion are those of the daemon's own terminals.
// All throw Failure as VtySession does, and EX_PROTOCOL when the daemon's library answers no enquiries.
#pragma once

#include "shell/vty_session.hpp"

#include <string>
#include <string_view>
#include <vector>

namespace diagsh {

struct SessionState {
    int lines = -1;     // of a page, as "terminal length" set it: -1 those of the terminal, 0 no pages
    std::string node;   // its name, as ask_nodes() has them
    std::string prompt; // with its trailing blank
};
SessionState ask_state(VtySession &session);

// What can stand at the end of `line`, one word and its help a line: "?".
std::string ask_help(VtySession &session, std::string_view line);

// Words that the last one of `line` can become, or a further one after a blank.
std::vector<std::string> ask_words(VtySession &session, std::string_view line);

// Names of the nodes that know the command `line`, also when it is incomplete there.
std::vector<std::string> ask_nodes(VtySession &session, std::string_view line);

struct Command {
    std::string node;
    std::string syntax;            // as "list" shows it
    std::vector<std::string> help; // one line for each word of the syntax, in its order
};
// Every command that is not hidden, of every node.
std::vector<Command> ask_commands(VtySession &session);

// The same from the daemon's answer.
std::vector<Command> parse_commands(std::string_view answer);

} // namespace diagsh
