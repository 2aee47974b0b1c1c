// SPDX-License-Identifier: GPL-2.0-or-later
// Replacing the CPLD's logic with the JTAG programmer.
// Failure policy: a CPLD that cannot be opened is not touched, nor is it with an image that may be somebody
// else's. Once begun, everything is done to the end whatever the programmer makes of it: the monitors must
// come back.
#pragma once

#include <string>

namespace diagd {

// Makes the programmer, which comes without the mode for it, a program.
inline constexpr const char *permit_programmer_line = "chmod -R 777 /usr/sbin/jtag ";

// Programs the image at `path` and removes it.  The board's semaphore is held all the while and the monitors
// are off; afterwards every one of them is on.  Without a CPLD, or when others hold
// the path, nothing is done, and what is there stays.
void program_image(const std::string &path) noexcept;

} // namespace diagd
