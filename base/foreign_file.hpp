// SPDX-License-Identifier: GPL-2.0-or-later
// Names in folders that everybody may write to, as that of shared memory, and what others have put there.
#pragma once

#include "base/thread_identity.hpp"

#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <string>

namespace base {

// Takes the name from what another user put there, of whatever kind, where this process is root's.  True: it
// is free now.  EPERM for all other processes.
inline bool remove_foreign_file(const std::string &path)
{
    const RootIdentity root;
    if (!root) {
        errno = EPERM;
        return false;
    }
    if (::unlink(path.c_str()) == 0 || errno == ENOENT)
        return true;
    if (errno != EISDIR)
        return false;
    if (::rmdir(path.c_str()) == 0)
        return true;
    if (errno != ENOTEMPTY)
        return false;
    // A folder of others is not walked into, for they could exchange what is in it meanwhile: a full one goes
    // where nobody else gets at it.
    std::string away = path + ".removed.XXXXXX";
    return ::mkdtemp(away.data()) && std::rename(path.c_str(), (away + "/it").c_str()) == 0;
}

} // namespace base
