// SPDX-License-Identifier: GPL-2.0-or-later
// The table of the commands that the daemon has to install, which says itself how it is written.
#pragma once

#include <string>
#include <vector>

struct ListedCommand {
    int node;
    std::string name; // of the element
    std::string syntax;
    std::string help; // lines as libfrr takes them; empty: any that explains each word
    bool hidden;
};

// Every command, in the order of the installing; one in two nodes comes twice.  A table that cannot be read
// fails the test and gives what came before the fault.
std::vector<ListedCommand> read_command_table(const char *path);
