// SPDX-License-Identifier: GPL-2.0-or-later
// Access to the board through the CPLD: semaphore, privileges, open, lower, the caller's work, close,
// release.
//
// Failure policy: a session that could not open the CPLD is false, has given everything back and leaves errno
// as the open left it; what to say about it is up to the caller.
//
// The semaphore is not recursive: whoever is in a session must call nothing that begins another one.
#pragma once

#include "diagd/board/semaphore.hpp"

#include <optional>

namespace diagd {

// How a session uses the board's semaphore, and what it gives back first when the CPLD cannot be opened.
enum class SessionPolicy {
    release_then_lower, // held throughout: fan, power and CPLD register commands
    lower_then_release, // held throughout: module access
    lock_free, // not taken: for the start, and for handles that stay open, whose users take it each time
};

class BoardSession {
public:
    // `reason` names the operation for the privilege raise; it must be a literal.
    BoardSession(const char *reason, SessionPolicy policy) noexcept;
    ~BoardSession();
    BoardSession(const BoardSession &) = delete;
    BoardSession &operator=(const BoardSession &) = delete;

    explicit operator bool() const noexcept { return handle_ >= 0; }
    // For the misc_cpld_ functions, and for misc_i2c_read and misc_i2c_write on a selected channel.
    [[nodiscard]] int handle() const noexcept { return handle_; }
    // The handle, which is not closed any more.
    [[nodiscard]] int keep_open() noexcept;

private:
    std::optional<Semaphore> semaphore_;
    int handle_ = -1;
};

// Opens the CPLD for the life of the process; `reason` as above.  -1 when it cannot be opened, which is said
// on standard output.
[[nodiscard]] int open_board_for_life(const char *reason) noexcept;

} // namespace diagd
