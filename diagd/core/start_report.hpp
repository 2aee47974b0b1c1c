// SPDX-License-Identifier: GPL-2.0-or-later
// What a start could not do.  It is gathered while the start goes on and told on one line of the log once the
// configuration has been read, since that names the log file.
// Failure policy: what does not fit into the line any more is left out, and "..." says so.
#pragma once

#include "tq_api.h"

namespace diagd {

// The daemon goes on without `what`, a few words; `why` says what was tried or the system's error text.
// From any thread.  What comes after the line was written gets a line of its own at once.
void goes_without(const char *what, const char *why) noexcept;

// The same for a call of the platform that gave `code`, when that is negative.
inline void goes_without_if_failed(const char *what, int code) noexcept
{
    if (code < 0)
        goes_without(what, tq_strerror(code));
}

// Writes the line: a warning when something is missing, otherwise a notice.
void report_start() noexcept;

} // namespace diagd
