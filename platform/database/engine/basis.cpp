// SPDX-License-Identifier: GPL-2.0-or-later
// What a connection stands on.
#include "platform/database/engine/basis.hpp"

#include "platform/database/engine/shared_state.hpp"
#include "platform/database/model/settings.hpp"
#include "tq_errno.h"

#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <utility>

namespace tq::db {

Basis::Place Basis::place_of(std::string path)
{
    struct stat status {};
    ::stat(path.c_str(), &status);
    return {std::move(path), status.st_dev, status.st_ino, status.st_size};
}

Basis::Basis(const SharedState &state)
{
    for (const char *folder : {"/yang", "/data"})
        folders_.push_back(place_of(state.repository() + folder));
    // The size of the first changes only when modules are installed, with nobody connected.
    for (const char *file : {"_main", "_ext"})
        mapped_.push_back(place_of(state.shared(file)));
    // The second grows and is made compact; sysrepo maps it anew then, unless nothing is left of it.
    mapped_.back().size = 1;
    for (const char *module : our_modules)
        data_.push_back(state.running_of(module));
}

Standing Basis::look(int &code) const
{
    struct stat status {};
    for (const Place &folder : folders_) {
        if (::stat(folder.path.c_str(), &status) != 0) {
            code = errno == EACCES ? TQ_ERR_ACCESS : TQ_ERR_NO_DB;
            return Standing::away;
        }
        if (status.st_dev != folder.device || status.st_ino != folder.inode)
            return Standing::replaced;
    }
    if (is_broken())
        return Standing::broken;
    const bool is_as_it_was = std::all_of(mapped_.begin(), mapped_.end(), [&](const Place &file) {
        return ::stat(file.path.c_str(), &status) == 0 && status.st_dev == file.device &&
               status.st_ino == file.inode;
    });
    const bool has_data = std::all_of(data_.begin(), data_.end(), [&](const std::string &path) {
        return ::stat(path.c_str(), &status) == 0;
    });
    return is_as_it_was && has_data ? Standing::firm : Standing::replaced;
}

bool Basis::is_broken() const
{
    struct stat status {};
    return std::any_of(mapped_.begin(), mapped_.end(), [&](const Place &file) {
        return ::stat(file.path.c_str(), &status) == 0 && status.st_dev == file.device &&
               status.st_ino == file.inode && status.st_size < file.size;
    });
}

} // namespace tq::db
