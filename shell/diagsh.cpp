// SPDX-License-Identifier: GPL-2.0-or-later
// diagsh: the shell of the diagnostics daemon, for a person (alone) and for scripts (-c, -m).
#include "shell/failure.hpp"
#include "shell/modes.hpp"
#include "shell/options.hpp"
#include "shell/paths.hpp"
#include "shell/verbs.hpp"

#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <iostream>
#include <string>
#include <vector>

namespace {

std::vector<std::string> read_lines(std::istream &input)
{
    std::vector<std::string> lines;
    for (std::string line; std::getline(input, line);) {
        if (!line.empty() && line.back() == '\r')
            line.pop_back();
        if (line.find_first_not_of(" \t") != std::string::npos)
            lines.push_back(line);
    }
    return lines;
}

int run_interactive(const diagsh::OltPaths &olt, const diagsh::Options &options)
{
    try {
        return diagsh::run_session(olt, options.node, options.wide);
    } catch (const diagsh::Refused &) {
        // The port is this machine's, whichever OLT listens there, and begins in view.
        if (!olt.state.empty() || !options.node.empty())
            throw;
    }
    diagsh::run_telnet_session();
    return EXIT_SUCCESS;
}

int run(int argc, char **argv)
{
    diagsh::Options options = diagsh::parse_options(argc, argv);
    const diagsh::OltPaths olt = diagsh::find_olt(options.state);

    if (!options.verb.empty())
        return diagsh::run_verb(olt, options.verb);
    if (options.monitor)
        return diagsh::monitor_log(olt);
    if (!options.find.empty())
        return diagsh::print_found(olt, options.find);
    if (!options.help_for.empty())
        return diagsh::print_help_for(olt, options.help_for);
    if (options.commands.empty() && ::isatty(STDIN_FILENO) != 0)
        return run_interactive(olt, options);

    if (options.commands.empty())
        options.commands = read_lines(std::cin);
    if (options.node.empty())
        options.node = options.is_box_shell ? "enable" : "config";
    if (options.is_box_shell && options.commands.size() == 1 &&
        diagsh::is_save_command(options.commands.front()))
        return diagsh::save_configurations(olt);
    return diagsh::run_commands(olt, options.node, options.commands, options.wide);
}

} // namespace

int main(int argc, char **argv)
{
    try {
        return run(argc, argv);
    } catch (const diagsh::Failure &failure) {
        std::fprintf(stderr, "diagsh: %s\n", failure.what());
        return failure.status();
    } catch (const std::exception &error) {
        std::fprintf(stderr, "diagsh: %s\n", error.what());
        return EX_SOFTWARE;
    }
}
