// SPDX-License-Identifier: GPL-2.0-or-later
// Failure policy: a running time that cannot be read is said on standard output and counts as 0.
#include "diagd/system_cli/running_time.hpp"

#include "base/owner.hpp"

#include <array>
#include <cerrno>
#include <cstdio>
#include <cstring>

namespace {

// Nothing, with errno set, when the file cannot be read or says no number.
std::optional<diagd::RunningTime> read_uptime() noexcept
{
    const base::File file{std::fopen("/proc/uptime", "re")};
    if (!file)
        return std::nullopt;
    std::array<char, 512> text;
    errno = EINVAL;
    return diagd::parse_uptime({text.data(), std::fread(text.data(), 1, text.size(), file.get())});
}

} // namespace

void system_running_time_get(diagd::RunningTime *time) noexcept
{
    *time = {};
    if (const auto uptime = read_uptime())
        *time = *uptime;
    else
        std::printf("%s error: %s\r\n", __func__, std::strerror(errno));
}
