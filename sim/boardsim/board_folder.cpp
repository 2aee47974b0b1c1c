// SPDX-License-Identifier: GPL-2.0-or-later
// The board's folder.  The lock on it, not the presence of a socket, tells a live boardsim from a dead one.
#include "sim/boardsim/board_folder.hpp"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <stdexcept>

namespace sim {

namespace {

[[noreturn]] void fail(const std::string &what)
{
    throw std::runtime_error(what + ": " + std::strerror(errno));
}

} // namespace

BoardFolder::BoardFolder(std::string path) : path_(std::move(path))
{
    if (::mkdir(path_.c_str(), 0755) != 0 && errno != EEXIST)
        fail(path_);
    lock_.reset(::open(path_.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (!lock_)
        fail(path_);
    if (::flock(lock_.get(), LOCK_EX | LOCK_NB) != 0) {
        if (errno == EWOULDBLOCK)
            throw std::runtime_error(path_ + ": another boardsim is running there");
        fail(path_);
    }
}

BoardFolder::~BoardFolder()
{
    for (const std::string &file : sockets_)
        ::unlink(file.c_str());
}

base::Fd BoardFolder::listen(const char *name, int type)
{
    const std::string file = path_ + "/" + name;
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    if (file.size() >= sizeof address.sun_path)
        throw std::runtime_error(file + ": name too long for a socket");
    std::copy(file.begin(), file.end(), address.sun_path);
    base::Fd fd(::socket(AF_UNIX, type | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
    if (!fd)
        fail(file);
    ::unlink(file.c_str());
    if (::bind(fd.get(), reinterpret_cast<const sockaddr *>(&address), sizeof address) != 0)
        fail(file);
    sockets_.insert(file);
    // The daemon talks to the board as an ordinary user.
    if (::chmod(file.c_str(), 0666) != 0 || ::listen(fd.get(), 64) != 0)
        fail(file);
    return fd;
}

void BoardFolder::remove(const char *name)
{
    const std::string file = path_ + "/" + name;
    ::unlink(file.c_str());
    sockets_.erase(file);
}

} // namespace sim
