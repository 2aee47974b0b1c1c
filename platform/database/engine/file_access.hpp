// SPDX-License-Identifier: GPL-2.0-or-later
// Who gets at the files of the engine's shared state.
//
// sysrepo opens them to everybody: it makes them with mode 0666 and the umask cleared, and uses what is
// there, whoever put it there.  Random bytes in them, a lock taken in them or their end cut off stop every
// process that uses them. So its calls of umask and shm_open lead here, by the table through which a library
// calls others: what it makes is for the owner and the box's group from the moment it exists, and what a
// stranger planted is not opened.  Other calls of the process stay what they are.
#pragma once

namespace tq::db {

// From the first time on, for the life of the process.  False: sysrepo's calls were not found; access is then
// what shut_files makes of it.
bool guard_files();

// Takes from others what they may do with the files that are there: programs without the above may have made
// them. Files of other owners stay as they are, unless the process is root's.
void shut_files();

} // namespace tq::db
