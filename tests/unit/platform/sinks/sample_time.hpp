// SPDX-License-Identifier: GPL-2.0-or-later
// A moment for messages that carry one.
#pragma once

#include <ctime>

// 2026-11-21 11:12:13, so many seconds east of Greenwich.
inline std::tm sample_time(long east)
{
    std::tm time{};
    time.tm_year = 126;
    time.tm_mon = 10;
    time.tm_mday = 21;
    time.tm_hour = 11;
    time.tm_min = 12;
    time.tm_sec = 13;
    time.tm_gmtoff = east;
    return time;
}
