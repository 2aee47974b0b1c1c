// SPDX-License-Identifier: GPL-2.0-or-later
// The ways in which diagsh works: commands without a person, saving, the log, a session; and what they say.
#pragma once

#include "shell/paths.hpp"
#include "shell/vty_session.hpp"

#include <string>
#include <vector>

namespace diagsh {

// --- commands: `diagsh -c`, and lines piped into diagsh

// The commands that lead a new session, which starts in the view node, to `node`: "view", "enable", "config",
// or any command of the configuration node that enters another one ("diagnose", "interface gpon 0/3").
std::vector<std::string> way_to_node(const std::string &node);

// Runs `commands` in `node`.  What a command prints goes to standard output when it succeeds and to standard
// error when it fails; the first failure ends the run.  Returns the exit status: the last command's.
int run_commands(const OltPaths &olt, const std::string &node, const std::vector<std::string> &commands);

// --- saving the configuration of all daemons of an OLT: "write" of the box's shell

// "write", alone or with "file" or "memory".
bool is_save_command(const std::string &command);

// Has every daemon with a vty socket in the run folder write its configuration file; what each says goes to
// standard output.  One that cannot is named on standard error and never keeps the others from saving; a
// socket that a dead daemon left behind is passed over.  Returns the exit status, 0 when all saved.
int save_configurations(const OltPaths &olt);

// --- the daemon's log as it is written: `diagsh -m`

// Writes what the daemon logs from now on to standard output, a line at a time, until a signal ends diagsh or
// its reader goes away.  Throws Failure EX_UNAVAILABLE when the daemon ends; lines lost because the reader is
// slow are counted on standard error.  Returns only when the daemon refuses, with the command's status.
int monitor_log(const OltPaths &olt);

// --- a session: the terminal and the daemon's telnet vty, passed through to each other

// Connects to the vty on this machine's port 2709 and passes it through until either side ends.  Line
// editing, completion and `?` are the vty's own.  When the vty asks for the password before the person has
// typed anything, and `password` is not empty, it is given once; after that the person is asked.  Control-]
// leaves at once.  Throws Failure when no daemon answers.
void run_interactive(const std::string &password);

// --- what the daemon says, on the streams of diagsh

// Writes text to standard output at once.  A reader that went away (`| head`) ends diagsh through SIGPIPE;
// throws Failure when the text cannot be written, for a full disk must not pass for success.
void write_out(const std::string &text);

// Writes what a failed command said, or that it failed, to standard error.  Returns the command's status.
int report_failed(const std::string &command, const VtyAnswer &answer);

} // namespace diagsh
