// SPDX-License-Identifier: GPL-2.0-or-later
#include "diagd/system_cli/clock_parser.hpp"

#include <charconv>
#include <cstdio>

namespace diagd {

std::optional<RunningTime> parse_uptime(std::string_view text) noexcept
{
    constexpr std::uint64_t minute = 60;
    constexpr std::uint64_t hour = 60 * minute;
    constexpr std::uint64_t day = 24 * hour;

    text = text.substr(0, text.find('.'));
    std::uint64_t uptime = 0;
    if (std::from_chars(text.data(), text.data() + text.size(), uptime).ec != std::errc{})
        return std::nullopt;
    return RunningTime{
        static_cast<std::uint32_t>(uptime % minute), static_cast<std::uint32_t>(uptime % hour / minute),
        static_cast<std::uint32_t>(uptime % day / hour), static_cast<std::uint32_t>(uptime / day)};
}

std::string running_time_text(const RunningTime &time)
{
    const auto number = [](std::uint32_t value) { return std::to_string(static_cast<std::int32_t>(value)); };
    return number(time.days) + " Days " + number(time.hours) + " Hours " + number(time.minutes) +
           " Minutes " + number(time.seconds) + " Seconds";
}

std::string calendar_text(const std::tm &time)
{
    std::array<char, 26> text; // what asctime_r needs
    return asctime_r(&time, text.data()) != nullptr ? std::string{text.data()} : std::string{};
}

std::string set_clock_line(const CalendarTime &time)
{
    const auto [year, month, day, hour, minute, second] = time;
    std::array<char, 128> line;
    std::snprintf(line.data(), line.size(), "date -s '%ld%02ld%02ld %ld:%ld:%ld' >> /dev/null", year, month,
                  day, hour, minute, second);
    return line.data();
}

} // namespace diagd
