// SPDX-License-Identifier: GPL-2.0-or-later
// The thread that keeps the fans in step with the board's temperature.
#pragma once

namespace diagd {

// Starts it; `cpld` is a handle that stays open.  False when the thread was refused.
bool start_fan_monitor(int cpld) noexcept;

} // namespace diagd
