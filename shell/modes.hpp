// SPDX-License-Identifier: GPL-2.0-or-later
// The ways in which diagsh works: commands without a person, saving, the log, a session; and what they say.
#pragma once

#include "shell/output.hpp"
#include "shell/paths.hpp"
#include "shell/vty_session.hpp"

#include <string>
#include <vector>

namespace diagsh {

// --- commands: `diagsh -c`, and lines piped into diagsh

// Runs `commands` in `node`.  What a command prints goes to standard output when it succeeds and to standard
// error when it fails; the first failure ends the run.  A command that ends in "?" is a question for help,
// unless a command takes the "?" at the end of its last word.  `wide` is for a terminal; elsewhere output
// stays as it is. Returns the exit status: the last command's.
int run_commands(const OltPaths &olt, const std::string &node, const std::vector<std::string> &commands,
                 Wide wide);

// --- looking commands up: `diagsh --find`, `diagsh --help-for`

// Each writes what it finds to standard output; returns the exit status, 1 when there is nothing.
int print_found(const OltPaths &olt, const std::string &pattern);
int print_help_for(const OltPaths &olt, const std::string &words);

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

// --- a session for a person

// On the daemon's vty socket, which belongs to the OLT named and asks no password: lines are edited here,
// help and completion are the daemon's.  Begins in `node`, which is view when empty.  Returns the exit
// status: 0 when the person ends it, EX_UNAVAILABLE (thrown) when the daemon does.
int run_session(const OltPaths &olt, const std::string &node, Wide wide);

// On this machine's port 2709, for who may not use the socket: the daemon's own terminal, which asks for the
// password and edits lines.  Control-] leaves at once.  Throws Failure when no daemon answers.
void run_telnet_session();

// --- what the daemon says, on the streams of diagsh

// Writes text to standard output at once.  A reader that went away (`| head`) ends diagsh through SIGPIPE;
// throws Failure when the text cannot be written, for a full disk must not pass for success.
void write_out(const std::string &text);

// Writes what a failed command said, or that it failed, to standard error.  Returns the command's status.
int report_failed(const std::string &command, const VtyAnswer &answer);

} // namespace diagsh
