// SPDX-License-Identifier: GPL-2.0-or-later
// The board's folder: one board at a time, its sockets.
#pragma once

#include <set>
#include <string>

#include "base/fd.hpp"

namespace sim {

// Holds a folder for one boardsim: makes it when missing, refuses one that a live boardsim holds, and
// replaces what a dead one left behind.  Sockets are removed at the end.
class BoardFolder {
public:
    // Throws std::runtime_error with one line.
    explicit BoardFolder(std::string path);
    BoardFolder(const BoardFolder &) = delete;
    BoardFolder &operator=(const BoardFolder &) = delete;
    ~BoardFolder();

    // Bound, listening and open to every user.  `type`: SOCK_SEQPACKET or SOCK_STREAM.
    base::Fd listen(const char *name, int type);
    // Takes the name of a socket away, so that nobody finds it.
    void remove(const char *name);
    [[nodiscard]] const std::string &path() const { return path_; }

private:
    std::string path_;
    base::Fd lock_;
    std::set<std::string> sockets_; // paths
};

} // namespace sim
