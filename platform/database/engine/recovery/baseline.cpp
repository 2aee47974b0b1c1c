// SPDX-License-Identifier: GPL-2.0-or-later
// The files that a connection uses (see recovery.hpp).
#include "platform/database/engine/recovery.hpp"
#include "platform/database/engine/recovery/shared_state.hpp"
#include "platform/database/model/settings.hpp"
#include "tq_errno.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <utility>

namespace tq::db {

Baseline::Entry Baseline::entry_of(std::string path)
{
    struct stat status {};
    ::stat(path.c_str(), &status);
    return {std::move(path), status.st_dev, status.st_ino, status.st_size};
}

Baseline::Baseline(const SharedState &state) : data_(state.data())
{
    for (const char *folder : {"/yang", "/data"})
        folders_.push_back(entry_of(state.repository() + folder));
    // The size of the first changes only when modules are installed, with nobody connected.
    for (const char *file : {"_main", "_ext"})
        mapped_.push_back(entry_of(state.shared(file)));
    // The second grows and is made compact; sysrepo maps it again then, unless nothing is left of it.
    mapped_.back().size = 1;
    for (const char *module : our_modules)
        running_.push_back(state.running_of(module));
}

Condition Baseline::compare(int &code) const
{
    struct stat status {};
    for (const Entry &folder : folders_) {
        if (::stat(folder.path.c_str(), &status) != 0) {
            code = errno == EACCES ? TQ_ERR_ACCESS : TQ_ERR_NO_DB;
            return Condition::away;
        }
        if (status.st_dev != folder.device || status.st_ino != folder.inode)
            return Condition::replaced;
    }
    if (is_broken())
        return Condition::broken;
    const bool is_as_it_was = std::all_of(mapped_.begin(), mapped_.end(), [&](const Entry &file) {
        return ::stat(file.path.c_str(), &status) == 0 && status.st_dev == file.device &&
               status.st_ino == file.inode;
    });
    const bool has_data = std::all_of(running_.begin(), running_.end(), [&](const std::string &path) {
        return ::stat(path.c_str(), &status) == 0;
    });
    return is_as_it_was && has_data ? Condition::sound : Condition::replaced;
}

bool Baseline::is_broken() const
{
    struct stat status {};
    return std::any_of(mapped_.begin(), mapped_.end(), [&](const Entry &file) {
        return ::stat(file.path.c_str(), &status) == 0 && status.st_dev == file.device &&
               status.st_ino == file.inode && status.st_size < file.size;
    });
}

DataFiles::DataFiles(const Baseline &baseline)
{
    for (const auto &[path, content] : baseline.data_)
        if (::access(path.c_str(), F_OK) != 0 && errno == ENOENT) {
            write_state_file(path, content);
            made_.push_back(path);
        }
}

DataFiles::~DataFiles()
{
    for (const std::string &path : made_)
        ::unlink(path.c_str());
}

} // namespace tq::db
