// SPDX-License-Identifier: GPL-2.0-or-later
// The line that sums up a start; see start_report.hpp.
#include "diagd/core/start_report.hpp"

#include "diagd/core/frr.hpp"
#include "diagd/core/text.hpp"

#include <cstdio>
#include <cstring>
#include <mutex>
#include <span>
#include <string_view>

namespace diagd {

namespace {

// Where each of the words below is explained.
constexpr const char *explained = "diagd(8), Starting without";

struct Report {
    std::mutex mutex;
    bool told = false;
    char missing[1000] = "";
};
Report report;

// Appends a part as a whole, or the mark that something was left out.
void append(const char *what, const char *why) noexcept
{
    constexpr std::string_view mark = " ...";
    if (std::string_view{report.missing}.ends_with(mark))
        return;
    const std::size_t used = std::strlen(report.missing);
    const std::size_t room = sizeof report.missing - mark.size() - used;
    const int size = std::snprintf(report.missing + used, room, "%s%s (%s)", used > 0 ? ", " : "", what, why);
    if (size < 0 || static_cast<std::size_t>(size) >= room)
        copy_text(std::span{report.missing}.subspan(used), mark);
}

} // namespace

void goes_without(const char *what, const char *why) noexcept
{
    {
        const std::lock_guard lock{report.mutex};
        if (!report.told) {
            append(what, why);
            return;
        }
    }
    zlog_warn("goes on without %s (%s); see %s", what, why, explained);
}

void report_start() noexcept
{
    {
        const std::lock_guard lock{report.mutex};
        report.told = true;
    }
    if (report.missing[0] == '\0') // nobody writes there any more
        zlog_notice("started, nothing is missing");
    else
        zlog_warn("started without %s; see %s", report.missing, explained);
}

} // namespace diagd
