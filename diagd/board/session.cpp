// SPDX-License-Identifier: GPL-2.0-or-later
// Sessions with the board; their failure policy stands in session.hpp.
#include "diagd/board/session.hpp"

#include "diagd/board/registers.hpp"
#include "diagd/core/privileges.hpp"
#include "diagd/core/start_report.hpp"
#include "diagd/core/state.hpp"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <utility>

namespace diagd {

BoardSession::BoardSession(const char *reason, SessionPolicy policy) noexcept
{
    if (policy != SessionPolicy::lock_free)
        semaphore_.emplace(diagm.sem_id);
    int open_errno = 0;
    handle_ = with_privileges(reason, [&] {
        const int handle = misc_cpld_i2c_open(diagm.cpld_i2c_bus);
        open_errno = errno;
        if (handle < 0 && policy == SessionPolicy::release_then_lower)
            semaphore_.reset();
        return handle;
    });
    if (handle_ < 0)
        semaphore_.reset();
    errno = open_errno;
}

BoardSession::~BoardSession()
{
    if (handle_ >= 0)
        misc_cpld_i2c_close(handle_);
}

int BoardSession::keep_open() noexcept
{
    return std::exchange(handle_, -1);
}

int open_board_for_life(const char *reason) noexcept
{
    BoardSession session{reason, SessionPolicy::lock_free};
    if (!session) {
        const char *const error = std::strerror(errno);
        std::printf("open fan failed: %s\r\n", error); // whoever opens: consoles are watched for it
        goes_without(reason, error);
    }
    return session.keep_open();
}

void lock_and_write_register(int handle, CpldRegister reg, std::uint8_t value) noexcept
{
    const Semaphore board{diagm.sem_id};
    write_register(handle, reg, value);
}

} // namespace diagd
