// SPDX-License-Identifier: GPL-2.0-or-later
// diagsh: the shell of the diagnostics daemon, for a person (alone) and for scripts (-c, -m).
#include "shell/failure.hpp"
#include "shell/modes.hpp"
#include "shell/paths.hpp"

#include <getopt.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <string>
#include <vector>

namespace {

constexpr const char *help_text =
    R"(usage: diagsh [-s FOLDER]                                a session for a person
       diagsh [-s FOLDER] [-n NODE] -c COMMAND [-c ...]  run commands
       diagsh [-s FOLDER] [-n NODE] < FILE               run the lines of a file
       diagsh [-s FOLDER] -m                             show the log as it is written

  -c, --command COMMAND  run COMMAND and print its output; may be repeated
  -n, --node NODE        where the commands run: view, enable, config (default), or a
                         command that enters another node from configuration, such as
                         diagnose or "interface gpon 0/3"
  -m, --monitor          print what the daemon logs from now on, alarms among it, until
                         Control-C; status 69 when the daemon ends
  -s, --state FOLDER     state folder of the OLT (default: $OLT_STATE, else the OLT of
                         this machine, else the one that ./run started)
  -V, --version          the version of diagsh
  -h, --help             this text

Under the name vtysh it is the box's shell: -c commands run in enable, and "write" saves
the configuration of every daemon that has a vty socket beside diagd's.

A session passes the vty on port 2709 through; Control-] leaves it at once.
The first command that fails ends the run.  Exit status: the command's, 0 for success;
64 and up when diagsh itself cannot go on.  Errors go to standard error.
)";

struct Options {
    std::string state;
    std::string node = "config";
    bool node_given = false;
    bool is_box_shell = false; // called by the name vtysh
    bool monitor = false;
    std::vector<std::string> commands;
};

Options parse(int argc, char **argv)
{
    static const option long_options[] = {{"command", required_argument, nullptr, 'c'},
                                          {"node", required_argument, nullptr, 'n'},
                                          {"monitor", no_argument, nullptr, 'm'},
                                          {"state", required_argument, nullptr, 's'},
                                          {"version", no_argument, nullptr, 'V'},
                                          {"help", no_argument, nullptr, 'h'},
                                          {nullptr, 0, nullptr, 0}};
    Options options;
    options.is_box_shell = argc > 0 && std::filesystem::path(argv[0]).filename() == "vtysh";
    if (options.is_box_shell)
        options.node = "enable";
    if (const char *state = std::getenv("OLT_STATE"))
        options.state = state;
    int letter = 0;
    while ((letter = ::getopt_long(argc, argv, "c:n:ms:Vh", long_options, nullptr)) != -1) {
        switch (letter) {
        case 'c':
            options.commands.emplace_back(optarg);
            break;
        case 'n':
            options.node = optarg;
            options.node_given = true;
            break;
        case 'm':
            options.monitor = true;
            break;
        case 's':
            options.state = optarg;
            break;
        case 'V':
            std::puts("diagsh " DIAGD_VERSION);
            std::exit(EXIT_SUCCESS);
        case 'h':
            std::fputs(help_text, stdout);
            std::exit(EXIT_SUCCESS);
        default:
            throw diagsh::Failure(EX_USAGE, "try diagsh --help");
        }
    }
    if (optind < argc)
        throw diagsh::Failure(EX_USAGE, "unexpected argument \"" + std::string(argv[optind]) +
                                            "\"; commands are given with -c, try diagsh --help");
    return options;
}

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

int run(int argc, char **argv)
{
    Options options = parse(argc, argv);
    const diagsh::OltPaths olt = diagsh::find_olt(options.state);

    if (options.monitor) {
        if (options.node_given || !options.commands.empty())
            throw diagsh::Failure(EX_USAGE, "-m runs no commands; it goes without -c and -n");
        return diagsh::monitor_log(olt);
    }
    if (options.commands.empty() && ::isatty(STDIN_FILENO) != 0) {
        if (options.node_given)
            throw diagsh::Failure(EX_USAGE, "-n goes with -c; a session starts where the vty starts");
        diagsh::run_interactive(diagsh::read_password(olt));
        return EXIT_SUCCESS;
    }
    if (options.commands.empty())
        options.commands = read_lines(std::cin);
    if (options.is_box_shell && options.commands.size() == 1 &&
        diagsh::is_save_command(options.commands.front()))
        return diagsh::save_configurations(olt);
    return diagsh::run_commands(olt, options.node, options.commands);
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
