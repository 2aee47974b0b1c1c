// SPDX-License-Identifier: GPL-2.0-or-later
// The daemon's nodes: how a session gets there, and which of them know a command.
#pragma once

#include "shell/vty_session.hpp"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace diagsh {

// The commands that lead a new session, which starts in the view node, to `node`: "view", "enable", "config",
// or any command of the configuration node that enters another one ("diagnose", "interface gpon 0/3").
std::vector<std::string> way_to_node(const std::string &node);

// Leads a new session there.  None when it is there, else the step that failed and what it said.
struct FailedStep {
    std::string command;
    VtyAnswer answer;
};
std::optional<FailedStep> enter_node(VtySession &session, const std::string &node);

// What -n takes for the node of this name: a port's has no name but by a port, 0/1.  Empty for nodes that
// nobody enters.
std::string option_for_node(std::string_view name);

// What a person types in `current` to get into node `name`, both names of the daemon; empty when nobody does.
std::vector<std::string> steps_between(std::string_view current, std::string_view name);

// The line that tells a person in `current` where `command`, unknown there, is known; empty when nowhere.
std::string told_in_session(VtySession &session, std::string_view current, std::string_view command);

// The same for who used -n or left it out.
std::string told_for_option(VtySession &session, std::string_view command);

} // namespace diagsh
