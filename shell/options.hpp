// SPDX-License-Identifier: GPL-2.0-or-later
// The words of diagsh's own command line.
#pragma once

#include "shell/output.hpp"

#include <string>
#include <vector>

namespace diagsh {

struct Options {
    std::string state;         // folder of the OLT; empty: that of this machine
    std::string node;          // empty when not given
    bool is_box_shell = false; // called by the name vtysh
    bool monitor = false;
    Wide wide = Wide::as_is;
    std::string find;     // pattern of --find
    std::string help_for; // words of --help-for
    std::vector<std::string> commands;
    std::vector<std::string> verb; // what stands behind the options, its own words included
};

// Prints what --help and --version ask for and exits; throws Failure EX_USAGE for what it does not know.
Options parse_options(int argc, char **argv);

} // namespace diagsh
