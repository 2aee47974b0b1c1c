// SPDX-License-Identifier: GPL-2.0-or-later
// Access to the board through the CPLD: semaphore, privileges, open, lower, the caller's work, close,
// release. Failure policy: a bracket that could not open the CPLD is false, has given everything back and
// leaves errno as the open left it; what to say about it is the caller's business.
//
// The semaphore is not recursive: whoever holds a bracket must call nothing that opens another one.
#pragma once

#include "diagd/board/semaphore.hpp"

namespace diagd {

// What a bracket gives back first when the CPLD cannot be opened.
enum class OpenFailure {
    release_then_lower, // fan, power and CPLD register commands
    lower_then_release, // module access
};

class BoardBracket {
public:
    // `reason` names the operation for the privilege raise; it must be a literal.
    BoardBracket(const char *reason, OpenFailure order) noexcept;
    ~BoardBracket();
    BoardBracket(const BoardBracket &) = delete;
    BoardBracket &operator=(const BoardBracket &) = delete;

    explicit operator bool() const noexcept { return handle_ >= 0; }
    // Handle for the misc_cpld_ functions, and for misc_i2c_read and misc_i2c_write on a selected channel.
    [[nodiscard]] int handle() const noexcept { return handle_; }

private:
    Semaphore semaphore_;
    int handle_ = -1;
};

// Which channels are ended: those that were selected, or every one that was to be.
enum class ChannelEnd { when_selected, always };

// Connects a bracket's handle to one module channel.  Failure is only reported: whether it means absence or
// is passed over differs between the callers, and with it what is ended.
class ChannelSelect {
public:
    ChannelSelect(const BoardBracket &board, int channel,
                  ChannelEnd end = ChannelEnd::when_selected) noexcept;
    ~ChannelSelect();
    ChannelSelect(const ChannelSelect &) = delete;
    ChannelSelect &operator=(const ChannelSelect &) = delete;

    explicit operator bool() const noexcept { return selected_; }

private:
    int handle_;
    bool selected_;
    bool ends_;
};

} // namespace diagd
