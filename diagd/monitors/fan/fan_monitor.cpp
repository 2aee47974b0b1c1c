// SPDX-License-Identifier: GPL-2.0-or-later
// The fan monitor: a pass every five seconds.
// Failure policy: a sensor that does not answer costs a pass about three seconds and counts with its last
// good reading, see lm75.hpp; a register write that fails is taken as done.  Whatever fails, the thread lives
// on.
#include "diagd/monitors/fan/fan_monitor.hpp"

#include "diagd/board/lm75.hpp"
#include "diagd/board/monitor_registers.hpp"
#include "diagd/board/semaphore.hpp"
#include "diagd/core/alarm_record.hpp"
#include "diagd/core/state.hpp"
#include "diagd/core/worker_thread.hpp"
#include "diagd/monitors/fan/fan_policy.hpp"
#include "diagd/monitors/fan/fan_settings.hpp"

#include "util_cpld.h"

#include <chrono>
#include <thread>

using std::memory_order_relaxed;
using namespace std::chrono_literals;

namespace {

constexpr int last_tick = 4; // ticks of a second; a pass comes after the one behind it

int cpld_handle = -1; // set before the thread starts

bool speed_is_automatic() noexcept
{
    return fan_master.speed.load(memory_order_relaxed) == diagd::speed_auto;
}

// Writes every time, changed or not: the operator's command may have written something else.
void set_automatic_speed(int temperature) noexcept
{
    const int level = diagd::automatic_fan_speed(temperature);
    const diagd::Semaphore board{diagm.sem_id};
    // The command stores its speed with the board in hand, and this may have waited for it.
    if (!speed_is_automatic())
        return;
    misc_cpld_i2c_set_byte(cpld_handle, static_cast<std::uint8_t>(diagd::MonitorRegister::fan_speed),
                           static_cast<std::uint8_t>(level));
    fan_master.current_speed.store(level, memory_order_relaxed);
}

void switch_fans(bool open) noexcept
{
    const std::int32_t state = open ? 1 : 0;
    if (fan_master.state.load(memory_order_relaxed) == state)
        return;
    diagd::write_register(cpld_handle, diagd::MonitorRegister::fan_power, open ? 1 : 0);
    fan_master.state.store(state, memory_order_relaxed);
    diagd::file_alarm(TQ_ALARM_FAN, open ? diagd::AlarmState::on : diagd::AlarmState::off,
                      open ? "Open!" : "Close!");
}

void pass() noexcept
{
    const int mode = fan_master.mode.load(memory_order_relaxed);
    const bool looks_at_sensor = mode == diagd::fan_auto || speed_is_automatic();

    int temperature = 0;
    if (looks_at_sensor)
        temperature = lm75_temperature_get();
    // Asked again: reading a dead sensor takes seconds, and a speed the operator chose meanwhile stands.
    if (looks_at_sensor && speed_is_automatic())
        set_automatic_speed(temperature);

    std::int32_t reference = fan_master.reference_temperature.load(memory_order_relaxed);
    const diagd::FanDecision decision = diagd::decide_fans(
        mode, temperature, fan_master.open_temperature.load(memory_order_relaxed), reference);
    // A reference that the operator has set meanwhile stands.
    if (decision.reference != reference)
        fan_master.reference_temperature.compare_exchange_strong(reference, decision.reference,
                                                                 memory_order_relaxed);
    switch_fans(decision.open);
}

void run() noexcept
{
    std::this_thread::sleep_for(1s);
    for (int tick = 1;;) {
        // While switched off, the switch is looked at every second.
        do {
            ++tick;
            std::this_thread::sleep_for(1s);
        } while (tick <= last_tick);
        if (diagm.fan_monitor.load(memory_order_relaxed) == 0)
            continue;
        pass();
        tick = 0;
    }
}

} // namespace

bool diagd::start_fan_monitor(int cpld) noexcept
{
    cpld_handle = cpld;
    return start_worker("fan_monitor", run, ThreadEnd::detached);
}
