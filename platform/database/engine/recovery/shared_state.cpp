// SPDX-License-Identifier: GPL-2.0-or-later
// Files of sysrepo's shared state (see shared_state.hpp).
// Failure policy: what cannot be repaired stays; connecting then fails as it would have failed without.
#include "platform/database/engine/recovery/shared_state.hpp"

#include "base/fd.hpp"
#include "base/thread_identity.hpp"
#include "platform/database/model/settings.hpp"

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>
#include <system_error>

namespace fs = std::filesystem;

namespace tq::db {

namespace {
constexpr const char *shared_memory = "/dev/shm";
constexpr const char *startup_suffix = ".startup";

template <class Work>
void for_each_file(const fs::path &folder, std::string_view prefix, Work work)
{
    std::error_code error;
    for (fs::directory_iterator entry(folder, error), end; !error && entry != end; entry.increment(error))
        if (entry->path().filename().string().starts_with(prefix))
            work(entry->path());
}

std::string content_of(const fs::path &file)
{
    std::ifstream in(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
}

// Whether a line of /proc/PID/maps is about this file: "start-end perms offset major:minor inode path".
bool is_mapping_of(const std::string &line, const struct stat &file)
{
    std::istringstream in(line);
    std::string range, permissions, offset, device, path;
    ino_t inode = 0;
    if (!(in >> range >> permissions >> offset >> device >> inode) || inode != file.st_ino)
        return false;
    unsigned major_number = 0, minor_number = 0;
    const char *const end = device.data() + device.size();
    const auto colon = std::from_chars(device.data(), end, major_number, 16);
    if (colon.ptr == end)
        return false;
    std::from_chars(colon.ptr + 1, end, minor_number, 16);
    return makedev(major_number, minor_number) == file.st_dev;
}
} // namespace

void write_state_file(const std::string &path, const std::string &content)
{
    std::ofstream(path, std::ios::binary | std::ios::trunc) << content;
}

SharedState::SharedState(std::string repository) : repository_(std::move(repository))
{
    const char *prefix = std::getenv("SYSREPO_SHM_PREFIX");
    prefix_ = prefix ? prefix : "sr";
}

std::string SharedState::shared(const char *suffix) const
{
    return std::string(shared_memory) + "/" + prefix_ + suffix;
}

std::string SharedState::running_of(const char *module) const
{
    return shared("_") + module + ".running";
}

bool SharedState::is_absent() const
{
    return ::access(shared("_main").c_str(), F_OK) != 0 && errno == ENOENT;
}

bool SharedState::is_running_lost(const char *module) const
{
    return ::access(running_of(module).c_str(), F_OK) != 0 && errno == ENOENT;
}

bool SharedState::has_lost_running() const
{
    return std::any_of(our_modules.begin(), our_modules.end(),
                       [this](const char *module) { return is_running_lost(module); });
}

void SharedState::replace_lost_running() const
{
    for (const char *module : our_modules)
        if (is_running_lost(module))
            put_startup(module);
}

std::map<std::string, std::string> SharedState::data() const
{
    std::map<std::string, std::string> data;
    for (const char *module : our_modules)
        for (const char *datastore : {".running", ".operational"}) {
            const std::string path = shared("_") + module + datastore;
            if (::access(path.c_str(), R_OK) == 0)
                data[path] = content_of(path);
        }
    return data;
}

void SharedState::put_startup(const std::string &module) const
{
    const std::string from = repository_ + "/data/" + module + startup_suffix;
    const std::string to = running_of(module.c_str());
    write_state_file(to, content_of(from));
    struct stat startup {};
    if (::stat(from.c_str(), &startup) == 0)
        ::chmod(to.c_str(), startup.st_mode & ACCESSPERMS);
}

void SharedState::repair_permissions() const
{
    for_each_file(repository_ + "/data", "", [this](const fs::path &file) {
        struct stat startup {};
        if (file.extension() != startup_suffix || ::stat(file.c_str(), &startup) != 0)
            return;
        for (const char *datastore : {".running", ".operational"}) {
            const std::string data = shared("_") + file.stem().string() + datastore;
            struct stat status {};
            if (::stat(data.c_str(), &status) == 0 && (status.st_mode & ACCESSPERMS) == 0)
                ::chmod(data.c_str(), startup.st_mode & ACCESSPERMS);
        }
    });
}

bool SharedState::has_dead_subscriber() const
{
    bool is_found = false;
    for_each_file(repository_, "sr_evpipe", [&](const fs::path &pipe) {
        const base::Fd writer(::open(pipe.c_str(), O_WRONLY | O_NONBLOCK | O_CLOEXEC));
        if (!writer && errno == ENXIO)
            is_found = true;
    });
    return is_found;
}

bool SharedState::is_unused() const
{
    const base::RootIdentity root;
    struct stat main_state {};
    if (!root || ::stat(shared("_main").c_str(), &main_state) != 0)
        return false;
    const std::string own = std::to_string(::getpid());
    std::error_code error;
    for (fs::directory_iterator entry("/proc", error), end; !error && entry != end; entry.increment(error)) {
        const std::string process = entry->path().filename();
        if (process == own || process.find_first_not_of("0123456789") != process.npos)
            continue;
        std::ifstream maps(entry->path() / "maps");
        for (std::string line; std::getline(maps, line);)
            if (is_mapping_of(line, main_state))
                return false;
    }
    return !error;
}

void SharedState::remove()
{
    const auto erase = [](const fs::path &file) { ::unlink(file.c_str()); };
    for_each_file(repository_ + "/data", "", [&](const fs::path &file) {
        if (file.extension() != startup_suffix)
            return;
        const std::string module = file.stem().string();
        const fs::path running = shared("_") + module + ".running";
        if (::access(running.c_str(), R_OK) == 0)
            running_[module] = content_of(running);
        // Nobody is there to whom operational data could belong, and they may be cut, too.
        erase(shared("_") + module + ".operational");
    });
    for (const char *state : {"_main", "_ext"})
        erase(shared(state));
    for_each_file(shared_memory, prefix_ + "sub_", erase);
    for_each_file(repository_, "sr_evpipe", erase);
}

void SharedState::restore() const
{
    for (const auto &[module, content] : running_)
        if (!content.empty())
            write_state_file(shared("_") + module + ".running", content);
}

void SharedState::restore_startup() const
{
    for (const auto &entry : running_)
        put_startup(entry.first);
}

} // namespace tq::db
