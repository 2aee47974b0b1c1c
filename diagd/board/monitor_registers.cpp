// SPDX-License-Identifier: GPL-2.0-or-later
// Registers of the hardware monitors; the failure policy stands in monitor_registers.hpp.
#include "diagd/board/monitor_registers.hpp"

#include "diagd/board/semaphore.hpp"
#include "diagd/core/privileges.hpp"
#include "diagd/core/state.hpp"

#include "util_cpld.h"

#include <cerrno>
#include <cstdio>
#include <cstring>

int diagd::open_monitored_cpld(const char *reason) noexcept
{
    Privileges raised{reason};
    const int handle = misc_cpld_i2c_open(diagm.cpld_i2c_bus);
    const int open_errno = errno;
    raised.lower();
    if (handle < 0)
        std::printf("open fan failed: %s\r\n", std::strerror(open_errno));
    return handle;
}

void diagd::write_register(int handle, MonitorRegister reg, std::uint8_t value) noexcept
{
    const Semaphore board{diagm.sem_id};
    misc_cpld_i2c_set_byte(handle, static_cast<std::uint8_t>(reg), value);
}
