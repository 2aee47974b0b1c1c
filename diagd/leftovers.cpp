// SPDX-License-Identifier: GPL-2.0-or-later
// Clearing up after a daemon that was killed (see leftovers.hpp).
#include "diagd/leftovers.hpp"

#include "base/box_identity.hpp"
#include "base/foreign_file.hpp"
#include "diagd/core/frr.hpp"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <fstream>
#include <string_view>
#include <system_error>

namespace fs = std::filesystem;

namespace {

// What a daemon that crashed had to say stays until somebody has read it.
constexpr const char *crash_log = "crashlog";

// What libfrr puts behind the configuration's name: what mkstemps makes of XXXXXX.tmp, and the backup's.
bool is_unfinished(std::string_view suffix)
{
    constexpr std::string_view end = ".tmp";
    if (!suffix.ends_with(end))
        return false;
    suffix.remove_suffix(end.size());
    return suffix == "sav" ||
           (suffix.size() == 6 &&
            std::all_of(suffix.begin(), suffix.end(), [](unsigned char c) { return std::isalnum(c) != 0; }));
}

bool is_ours(const fs::path &path, mode_t type)
{
    struct stat status {};
    return ::lstat(path.c_str(), &status) == 0 && (status.st_mode & S_IFMT) == type &&
           base::is_box_owner(status.st_uid);
}

// A number that has gone to another program since is as good as none.
bool is_running(const std::string &number, const std::string &program)
{
    std::string name;
    std::getline(std::ifstream("/proc/" + number + "/comm"), name);
    return name == program;
}

template <class Work>
void for_each_entry(const fs::path &folder, std::string_view prefix, Work work)
{
    std::error_code error;
    for (fs::directory_iterator entry(folder, error), end; !error && entry != end; entry.increment(error)) {
        const std::string name = entry->path().filename().string();
        if (name.starts_with(prefix))
            work(entry->path(), name.substr(prefix.size()));
    }
}

} // namespace

void diagd::clear_unfinished_configuration(const std::string &file)
{
    const fs::path path(file);
    for_each_entry(path.parent_path(), path.filename().string() + ".",
                   [](const fs::path &entry, const std::string &suffix) {
                       if (is_unfinished(suffix) && is_ours(entry, S_IFREG))
                           ::unlink(entry.c_str());
                   });
}

void diagd::clear_log_buffers(const std::string &folder, const std::string &program)
{
    struct stat status {};
    if (::lstat(folder.c_str(), &status) == 0 && !is_ours(folder, S_IFDIR))
        base::remove_foreign_file(folder);
    for_each_entry(folder, program + ".", [&](const fs::path &entry, const std::string &number) {
        const bool is_number = !number.empty() && number.find_first_not_of("0123456789") == number.npos;
        if (!is_number || !is_ours(entry, S_IFDIR) || is_running(number, program))
            return;
        std::error_code error;
        for (fs::directory_iterator file(entry, error), end; !error && file != end; file.increment(error))
            if (file->path().filename() != crash_log)
                ::unlink(file->path().c_str());
        ::rmdir(entry.c_str());
    });
}

void clear_leftovers()
{
    constexpr const char *log_buffers = "/var/tmp/frr"; // built into libfrr
    diagd::clear_unfinished_configuration(std::string(frr_sysconfdir) + "diagd.conf");
    diagd::clear_log_buffers(log_buffers, "diagd");
}
