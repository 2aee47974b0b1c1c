// SPDX-License-Identifier: GPL-2.0-or-later
// Owner of a file descriptor.
#pragma once

#include <unistd.h>

#include <utility>

namespace base {

class Fd {
public:
    Fd() noexcept = default;
    explicit Fd(int fd) noexcept : fd_(fd) {}
    Fd(Fd &&other) noexcept : fd_(other.release()) {}
    Fd &operator=(Fd &&other) noexcept
    {
        if (this != &other)
            reset(other.release());
        return *this;
    }
    ~Fd() { reset(); }

    explicit operator bool() const noexcept { return fd_ >= 0; }
    [[nodiscard]] int get() const noexcept { return fd_; }

    // Lets go of the descriptor without closing it.  Whoever leaves it open for good says why.
    int release() noexcept { return std::exchange(fd_, -1); }

    // Closes what it owns and owns `fd` from now on.
    void reset(int fd = -1) noexcept
    {
        if (fd_ >= 0)
            ::close(fd_);
        fd_ = fd;
    }

private:
    int fd_ = -1;
};

} // namespace base
