// SPDX-License-Identifier: GPL-2.0-or-later
// Owner of a file descriptor.
#pragma once

#include <unistd.h>

#include <utility>

namespace diagd {

class UniqueFd {
public:
    UniqueFd() noexcept = default;
    explicit UniqueFd(int fd) noexcept : fd_(fd) {}
    UniqueFd(UniqueFd &&other) noexcept : fd_(other.release()) {}
    UniqueFd &operator=(UniqueFd &&other) noexcept
    {
        if (this != &other) {
            reset();
            fd_ = other.release();
        }
        return *this;
    }
    ~UniqueFd() { reset(); }

    explicit operator bool() const noexcept { return fd_ >= 0; }
    [[nodiscard]] int get() const noexcept { return fd_; }

    // Lets go of the descriptor without closing it.  Whoever leaves it open for good says why.
    int release() noexcept { return std::exchange(fd_, -1); }

    void reset() noexcept
    {
        if (fd_ >= 0)
            ::close(fd_);
        fd_ = -1;
    }

private:
    int fd_ = -1;
};

} // namespace diagd
