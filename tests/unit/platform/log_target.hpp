// SPDX-License-Identifier: GPL-2.0-or-later
// What this process logs through libfrr.
#pragma once

#include <zebra.h>

#include <log.h>
#include <zlog_targets.h>

#include <string>
#include <utility>
#include <vector>

// Log lines of this process with their priorities.
struct LogTarget {
    LogTarget()
    {
        target.prio_min = LOG_DEBUG;
        target.logfn = [](zlog_target *, zlog_msg *messages[], std::size_t count) {
            for (std::size_t i = 0; i < count; ++i) {
                std::size_t size = 0;
                const char *text = zlog_msg_text(messages[i], &size);
                lines.emplace_back(zlog_msg_prio(messages[i]), std::string(text, size));
            }
        };
        zlog_target_replace(nullptr, &target);
    }
    ~LogTarget() { zlog_target_replace(&target, nullptr); }

    zlog_target target{};
    static inline std::vector<std::pair<int, std::string>> lines;
};
