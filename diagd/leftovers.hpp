// SPDX-License-Identifier: GPL-2.0-or-later
// What a daemon that was killed leaves behind: the configuration that it was writing, and the folder in which
// libfrr buffers its log.
#pragma once

#include <string>

namespace diagd {

// Removes, beside the configuration `file`, what was to become it or its backup: files of root's or the
// daemon's with the names that libfrr gives them.  An operator's copies have other names or another owner.
void clear_unfinished_configuration(const std::string &file);

// Removes, in `folder`, the log buffers of processes of this `program` that run no longer, but for what
// one that crashed has said.  A folder that a stranger
// made is moved away: libfrr would give to the daemon what a link there leads to.
void clear_log_buffers(const std::string &folder, const std::string &program);

} // namespace diagd

// Both, in the daemon's own places.  What cannot be removed stays.
void clear_leftovers();
