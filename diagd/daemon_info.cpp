// SPDX-License-Identifier: GPL-2.0-or-later
// What libfrr is told about the daemon, and what its signals do.  libfrr delivers signals as events of its
// loop, not in signal context, so the handlers may log and call the database library.
// Failure policy of the end: it takes a second at most and has status 0, whatever other threads wait for.
// What the event loop itself does is finished first.
#include "diagd/start_steps.hpp"

#include "diagd/core/alarm_record.hpp"
#include "diagd/core/configuration_reading.hpp"
#include "diagd/core/lock_wait.hpp"
#include "diagd/core/privileges.hpp"
#include "diagd/units.hpp"

#include <sys/time.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <iterator>

namespace {

// Applies the configuration file on top of the running state; nothing is reset first.
void sighup() noexcept
{
    const diagd::EventLoopKept kept; // the signal is delivered between events, not as one
    zlog_info("SIGHUP received");
    const diagd::ConfigurationReading reading;
    vty_read_config(nullptr, diagd_di.config_file, config_default);
}

void sigusr1() noexcept
{
    zlog_rotate();
}

// The end of the process, whatever its threads wait for.  A second is given to it; most of that may be spent
// on a record that waits for the alarm store.
constexpr std::chrono::milliseconds longest_end{900};
constexpr std::chrono::milliseconds longest_filing{400};
constexpr std::chrono::milliseconds longest_keeping{100};

// A database that does not answer, or a log that nobody reads, has no say in it either.
void limit_end() noexcept
{
    struct sigaction action {};
    action.sa_handler = [](int) { _exit(0); };
    sigaction(SIGALRM, &action, nullptr);
    sigset_t alarm;
    sigemptyset(&alarm);
    sigaddset(&alarm, SIGALRM);
    pthread_sigmask(SIG_UNBLOCK, &alarm, nullptr);
    const struct itimerval once {
        .it_interval = {}, .it_value = {.tv_sec = 0, .tv_usec = longest_end.count() * 1000 }
    };
    setitimer(ITIMER_REAL, &once, nullptr);
}

// Ends the daemon.  The semaphore, the alarm store and the board records stay: other daemons use them.
void sigint() noexcept
{
    limit_end();
    zlog_notice("Terminating on signal");
    diag_zebra_reset_send_waiting();
    const bool all_filed = diagd::stop_filing_alarms(longest_filing);
    alarm_log_database_free();
    // A handler that waits on a stack of its own waits among objects that exit() destroys.
    if (all_filed && !diagd::is_handler_waiting()) {
#ifdef __SANITIZE_ADDRESS__
        std::signal(SIGALRM, SIG_IGN); // the look for leaks takes its time
#endif
        std::exit(0);
    }
    // A monitor still waits for the alarm store.  It must not run on among objects that exit() destroys.
    diagd::keep_alarm_store(longest_keeping);
    zlog_tls_buffer_flush();
    _exit(0);
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
