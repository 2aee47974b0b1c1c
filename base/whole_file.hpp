// SPDX-License-Identifier: GPL-2.0-or-later
// Writing a file as a whole: whoever reads it finds what was there before or all of the new content, whatever
// fails and whenever the program is killed.
#pragma once

#include "base/fd.hpp"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>
#include <utility>

namespace base {

enum class Sync {
    no, // for what a crash of the machine may take along
    yes
};

namespace detail {

inline int write_all(int fd, std::string_view content)
{
    while (!content.empty()) {
        const ssize_t written = ::write(fd, content.data(), content.size());
        if (written < 0 && errno != EINTR)
            return errno;
        if (written > 0)
            content.remove_prefix(static_cast<std::size_t>(written));
    }
    return 0;
}

inline int write_and_close(Fd file, std::string_view content, Sync sync)
{
    int error = write_all(file.get(), content);
    if (error == 0 && sync == Sync::yes && ::fsync(file.get()) != 0)
        error = errno;
    // Some file systems tell only now that there is no room.
    if (::close(file.release()) != 0 && error == 0)
        error = errno;
    return error;
}

} // namespace detail

// Puts `content` into the place of the file, which keeps its mode; a new one has the usual.  0, or the errno
// of what failed: then the file is as it was, and nothing else stays.  What is no regular file, a pipe or a
// device, is written to.
inline int write_whole_file(const std::string &path, std::string_view content, Sync sync)
{
    struct stat before {};
    const bool is_there = ::stat(path.c_str(), &before) == 0;
    if (is_there && !S_ISREG(before.st_mode)) {
        Fd file(::open(path.c_str(), O_WRONLY | O_CLOEXEC));
        return file ? detail::write_and_close(std::move(file), content, Sync::no) : errno;
    }
    std::string target = path;
    if (char *const resolved = is_there ? ::realpath(path.c_str(), nullptr) : nullptr) {
        target = resolved;
        std::free(resolved);
    }
    std::string fresh = target + ".XXXXXX";
    Fd file(::mkostemp(fresh.data(), O_CLOEXEC));
    if (!file)
        return errno;
    const mode_t mask = ::umask(0);
    ::umask(mask);
    int error = ::fchmod(file.get(), is_there ? before.st_mode & 07777 : 0666 & ~mask) == 0 ? 0 : errno;
    const int write_error = detail::write_and_close(std::move(file), content, sync);
    if (error == 0)
        error = write_error;
    if (error == 0 && std::rename(fresh.c_str(), target.c_str()) != 0)
        error = errno;
    if (error != 0)
        ::unlink(fresh.c_str());
    return error;
}

} // namespace base
