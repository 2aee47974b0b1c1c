// SPDX-License-Identifier: GPL-2.0-or-later
// Single registers through an open CPLD handle.  The hardware's answer to a write is not asked for, and a
// register that cannot be read reads as 0.
#pragma once

#include "diagd/board/registers.hpp"

#include "util_cpld.h"

namespace diagd {

inline std::uint8_t read_register(int handle, CpldRegister reg) noexcept
{
    std::uint8_t value = 0;
    misc_cpld_i2c_read_byte(handle, static_cast<std::uint8_t>(reg), &value);
    return value;
}

inline void write_register(int handle, CpldRegister reg, std::uint8_t value) noexcept
{
    misc_cpld_i2c_set_byte(handle, static_cast<std::uint8_t>(reg), value);
}

} // namespace diagd
