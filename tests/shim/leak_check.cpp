// SPDX-License-Identifier: GPL-2.0-or-later
// Preloaded into a daemon built with AddressSanitizer, so that its leaks are reported when it exits.
//
// The report is made at the very end of the process by a thread that traces it.  The kernel allows that to
// the process's own user only: privileges come back first, and with them what dropping them took away.
#include <cstdlib>
#include <cstring>
#include <string_view>

#include <sys/prctl.h>
#include <unistd.h>

namespace {

// The programs that the daemon starts have its preloads and environment; their leaks are their own affair.
// The text is changed where it stands: a call of setenv would be among the daemon's recorded calls.
[[gnu::constructor]] void spare_children()
{
    constexpr std::string_view wanted = "detect_leaks=1";
    char *options = std::getenv("ASAN_OPTIONS");
    if (char *leaks = options != nullptr ? std::strstr(options, wanted.data()) : nullptr)
        leaks[wanted.size() - 1] = '0';
}

[[gnu::destructor]] void allow_tracing()
{
    if (::seteuid(0) == 0)
        ::prctl(PR_SET_DUMPABLE, 1);
}

} // namespace
