// SPDX-License-Identifier: GPL-2.0-or-later
// What every reset does before the board goes down.  Failures are passed over: nothing holds a reset up.
#include "diagd/monitors/reset_button/system_reset.hpp"

#include "diagd/core/privileges.hpp"

#include "tq_api.h"

#include <unistd.h>

namespace {

// Flash outlives the reset, /var/log does not.
constexpr const char *backup_line = "cp /var/log/* /media/config/var/log/laststart/ -rf";
// The shell, which is no bash, runs this in the background: the watchdog may outlive the call by a moment.
constexpr const char *stop_watchdog_line = "killall -9 watchfrr &> /dev/null";

// The reason is a literal, see Privileges.
void run_as_root(const char *reason, const char *line) noexcept
{
    const diagd::Privileges raised{reason};
    pal_system(line);
}

} // namespace

void system_backup()
{
    run_as_root("log_backup", backup_line);
    sync();
}

void stop_watchdog(const char *reason)
{
    run_as_root(reason, stop_watchdog_line);
}

void system_reboot()
{
    stop_watchdog("system_reboot");
    sync();
}
