// SPDX-License-Identifier: GPL-2.0-or-later
// The clock and the running time as texts.  Pure: no file, no clock.
#pragma once

#include <array>
#include <cstdint>
#include <ctime>
#include <optional>
#include <string>
#include <string_view>

namespace diagd {

struct RunningTime {
    std::uint32_t seconds, minutes, hours, days;
};

// From /proc/uptime: the whole seconds since the start stand before its first point.  Nothing when there is
// no number.
[[nodiscard]] std::optional<RunningTime> parse_uptime(std::string_view text) noexcept;

// "1 Days 2 Hours 3 Minutes 4 Seconds"
[[nodiscard]] std::string running_time_text(const RunningTime &time);

// asctime's form with its line feed, "Tue Mar  5 07:08:09 2024\n"; empty when that has no place for the year.
[[nodiscard]] std::string calendar_text(const std::tm &time);

// Year, month, day, hour, minute, second as numbers.
using CalendarTime = std::array<long, 6>;

// The shell line that sets the clock.
[[nodiscard]] std::string set_clock_line(const CalendarTime &time);

} // namespace diagd
