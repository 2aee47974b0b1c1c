// SPDX-License-Identifier: GPL-2.0-or-later
// The board bracket; its failure policy stands in session.hpp.
#include "diagd/board/session.hpp"

#include "diagd/core/privileges.hpp"
#include "diagd/core/state.hpp"

#include "util_cpld.h"

#include <cerrno>

namespace diagd {

BoardBracket::BoardBracket(const char *reason, OpenFailure order) noexcept : semaphore_(diagm.sem_id)
{
    Privileges raised{reason};
    handle_ = misc_cpld_i2c_open(diagm.cpld_i2c_bus);
    const int open_errno = errno;

    if (handle_ < 0 && order == OpenFailure::release_then_lower)
        semaphore_.release();
    raised.lower();
    if (handle_ < 0)
        semaphore_.release();
    errno = open_errno;
}

BoardBracket::~BoardBracket()
{
    if (handle_ >= 0)
        misc_cpld_i2c_close(handle_);
}

ChannelSelect::ChannelSelect(const BoardBracket &board, int channel, ChannelEnd end) noexcept
    : handle_(board.handle()), selected_(misc_cpld_channel_select(handle_, channel) >= 0),
      ends_(selected_ || end == ChannelEnd::always)
{
}

ChannelSelect::~ChannelSelect()
{
    if (ends_)
        misc_cpld_channel_select_end(handle_);
}

} // namespace diagd
