// SPDX-License-Identifier: GPL-2.0-or-later
// The power supply monitor: a look at the CPLD's status byte every two seconds.
// Failure policy: without a handle there is no monitor and one line on standard output says so.  A status
// that cannot be read is passed over in silence, an all-zero one with a line each time; the next look comes
// two seconds later and is held against the last good one.
#include "diagd/board/registers.hpp"
#include "diagd/board/semaphore.hpp"
#include "diagd/board/session.hpp"
#include "diagd/core/alarm_record.hpp"
#include "diagd/core/state.hpp"
#include "diagd/core/worker_thread.hpp"
#include "diagd/monitors/power/power_policy.hpp"

#include "util_cpld.h"

#include <chrono>
#include <cstdio>
#include <thread>

namespace {

constexpr std::chrono::seconds poll_interval{2};

int cpld_handle = -1; // set before the thread starts

// False: there is no answer.
bool read_status(std::uint8_t &status) noexcept
{
    status = 0;
    const diagd::Semaphore board{diagm.sem_id};
    return misc_cpld_i2c_power_state_get(cpld_handle, &status) >= 0;
}

void file(tq_alarm_id alarm, const char *message) noexcept
{
    if (message != nullptr)
        diagd::file_alarm(alarm, diagd::AlarmState::event, message);
}

void poll(diagd::PowerStates &last_seen) noexcept
{
    std::uint8_t status;
    if (!read_status(status))
        return;
    const std::optional<diagd::PowerStates> now = diagd::read_power_status(status);
    if (!now) {
        std::puts("not get power state 2\r");
        return;
    }
    const diagd::PowerReport report = diagd::report_power(last_seen, *now);
    file(TQ_ALARM_POWER1_UPDOWN, report.supply1);
    file(TQ_ALARM_POWER2_UPDOWN, report.supply2);
    if (report.temperature != nullptr) {
        file(TQ_ALARM_DEVICE_TEMPERATURE_HIGH, report.temperature);
        diagd::lock_and_write_register(cpld_handle, diagd::CpldRegister::over_temperature_seen, 1);
    }
    last_seen = *now;
}

void run() noexcept
{
    // Kept while switched off: what changed meanwhile is reported afterwards.
    diagd::PowerStates last_seen;
    for (;;) {
        std::this_thread::sleep_for(poll_interval);
        if (diagm.power_monitor.load(std::memory_order_relaxed) != 0)
            poll(last_seen);
    }
}

} // namespace

int power_init()
{
    cpld_handle = diagd::open_board_for_life("power_monitor");
    if (cpld_handle < 0)
        return 0;
    if (!diagd::start_worker("power_monitor", run, diagd::ThreadEnd::detached)) {
        std::puts("power monitorfailed!\r");
        return 0;
    }
    diagm.power_monitor.store(1, std::memory_order_relaxed);
    return 0;
}
