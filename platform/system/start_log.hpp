// SPDX-License-Identifier: GPL-2.0-or-later
// Warnings that a daemon may have before it has read its configuration, which names its log file.  Until then
// libfrr writes them to standard error alone.
#pragma once

namespace tq {

// Logs the line at once, and once more when the log file is known, if it is not yet.  The thread must be one
// that libfrr knows.
void warn_from_the_start(const char *line) noexcept;

} // namespace tq
