// SPDX-License-Identifier: GPL-2.0-or-later
// What libfrr is told about the daemon, and what its signals do.  libfrr delivers signals as events of its
// loop, not in signal context, so the handlers may log and call the database library.
#include "diagd/daemon_info.hpp"

#include "diagd/core/alarm_record.hpp"
#include "diagd/core/privileges.hpp"
#include "diagd/units.hpp"

#include <cstdlib>
#include <iterator>

namespace {

// Applies the configuration file on top of the running state; nothing is reset first.
void sighup() noexcept
{
    zlog_info("SIGHUP received");
    vty_read_config(nullptr, diagd_di.config_file, config_default);
}

void sigusr1() noexcept
{
    zlog_rotate();
}

// Ends the daemon.  The semaphore, the alarm store and the board records stay: other daemons use them.
void sigint() noexcept
{
    zlog_notice("Terminating on signal");
    diagd::stop_filing_alarms();
    alarm_log_database_free();
    std::exit(0);
}

struct frr_signal_t diagd_signals[] = {
    {.signal = SIGHUP, .handler = &sighup},
    {.signal = SIGUSR1, .handler = &sigusr1},
    {.signal = SIGINT, .handler = &sigint},
    {.signal = SIGTERM, .handler = &sigint},
};

} // namespace

FRR_DAEMON_INFO(diagd, DIAGD, .vty_port = 2709, .proghelp = "Implementation of the diagd.",
                .signals = diagd_signals, .n_signals = std::size(diagd_signals), .privs = &diagd_privs, );
