// SPDX-License-Identifier: GPL-2.0-or-later
// The options of diagsh.
#include "shell/options.hpp"

#include "shell/failure.hpp"

#include <getopt.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string_view>

namespace diagsh {

namespace {

constexpr const char *help_text =
    R"(usage: diagsh [-s FOLDER] [-n NODE]                     a session for a person
       diagsh [-s FOLDER] [-n NODE] -c COMMAND [-c ...]  run commands
       diagsh [-s FOLDER] [-n NODE] < FILE               run the lines of a file
       diagsh [-s FOLDER] -m                             show the log as it is written
       diagsh [-s FOLDER] --find WORD | --help-for WORDS look commands up
       diagsh [-s FOLDER] VERB ...                       jobs of several commands

  -c, --command COMMAND  run COMMAND and print its output; may be repeated; one that ends
                         in "?" shows what can follow
  -n, --node NODE        where the commands run or the session begins: view (default of
                         sessions), enable, config (default of -c), or a command that
                         enters another node from configuration, such as diagnose or
                         "interface gpon 0/3"
  -m, --monitor          print what the daemon logs from now on, alarms among it, until
                         Control-C; status 69 when the daemon ends
      --find WORD        commands with WORD in them or in their help, one a line
      --help-for WORDS   the commands that begin so, with the help of each word
      --wide[=scroll]    on a terminal, show tables that are too wide in parts, or in a
                         view that scrolls
  -s, --state FOLDER     state folder of the OLT (default: $OLT_STATE, else the OLT of
                         this machine, else the one that ./run started)
  -V, --version          the version of diagsh
  -h, --help             this text

  threshold NAME RAISE CLEAR [PORT...], threshold NAME off [PORT...]
                         a threshold of PON modules on all ports, or these, in the node
                         that fits each module
  traps                  where alarms are sent
  fans                   what the fans do, and why
  logic cpld upgrade ... replace the logic and say whether that worked

Under the name vtysh it is the box's shell: -c commands run in enable, and "write" saves
the configuration of every daemon that has a vty socket beside diagd's.

In a session ? helps, TAB completes, Control-R searches what was typed, Control-D and
exit end, Control-] leaves at once; "| fold" and "| scroll" behind a command are --wide.
The first command that fails ends the run.  Exit status: the command's, 0 for success;
64 and up when diagsh itself cannot go on.  Errors go to standard error.
)";

enum Long { find = 256, help_for, wide };

Wide parse_wide(const char *how)
{
    const std::string_view text = how ? how : "fold";
    if (text == "fold")
        return Wide::fold;
    if (text == "scroll")
        return Wide::scroll;
    throw Failure(EX_USAGE, "--wide takes fold or scroll");
}

} // namespace

Options parse_options(int argc, char **argv)
{
    static const option long_options[] = {{"command", required_argument, nullptr, 'c'},
                                          {"node", required_argument, nullptr, 'n'},
                                          {"monitor", no_argument, nullptr, 'm'},
                                          {"find", required_argument, nullptr, Long::find},
                                          {"help-for", required_argument, nullptr, Long::help_for},
                                          {"wide", optional_argument, nullptr, Long::wide},
                                          {"state", required_argument, nullptr, 's'},
                                          {"version", no_argument, nullptr, 'V'},
                                          {"help", no_argument, nullptr, 'h'},
                                          {nullptr, 0, nullptr, 0}};
    Options options;
    options.is_box_shell = argc > 0 && std::filesystem::path(argv[0]).filename() == "vtysh";
    if (const char *state = std::getenv("OLT_STATE"))
        options.state = state;
    int letter = 0;
    while ((letter = ::getopt_long(argc, argv, "+c:n:ms:Vh", long_options, nullptr)) != -1) {
        switch (letter) {
        case 'c':
            options.commands.emplace_back(optarg);
            break;
        case 'n':
            options.node = optarg;
            break;
        case 'm':
            options.monitor = true;
            break;
        case Long::find:
            options.find = optarg;
            break;
        case Long::help_for:
            options.help_for = optarg;
            break;
        case Long::wide:
            options.wide = parse_wide(optarg);
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
            throw Failure(EX_USAGE, "try diagsh --help");
        }
    }
    options.verb.assign(argv + optind, argv + argc);
    if (options.monitor && (!options.node.empty() || !options.commands.empty()))
        throw Failure(EX_USAGE, "-m runs no commands; it goes without -c and -n");
    return options;
}

} // namespace diagsh
