// SPDX-License-Identifier: GPL-2.0-or-later
// Who holds the path of an image (see image_file.hpp).
#include "diagd/cpld/image_file.hpp"

#include "diagd/core/frr.hpp"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

diagd::PathHolder diagd::holder_of(const std::string &path) noexcept
{
    struct stat status {};
    if (::lstat(path.c_str(), &status) == 0) {
        const bool owned = status.st_uid == 0 || status.st_uid == ::geteuid();
        if (S_ISREG(status.st_mode) && owned && status.st_nlink == 1)
            return PathHolder::ours;
    } else if (errno == ENOENT) {
        return PathHolder::nobody;
    }
    zlog_err("%s is left alone: not a regular file of root's or the daemon's with a single link",
             path.c_str());
    return PathHolder::others;
}
