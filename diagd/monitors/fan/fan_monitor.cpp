// SPDX-License-Identifier: GPL-2.0-or-later
// The fan monitor: a pass every five seconds.
// Failure policy: without the sensor's bus or the CPLD's there is no fan control, silently, and the fans stay
// as they are; the commands are there nevertheless.  A sensor that does not answer costs a pass about three
// seconds and counts with its last good reading, see lm75.hpp; a register write that fails is taken as done.
// Whatever fails, the thread lives on.
#include "diagd/board/lm75.hpp"
#include "diagd/board/registers.hpp"
#include "diagd/board/semaphore.hpp"
#include "diagd/core/alarm_record.hpp"
#include "diagd/core/privileges.hpp"
#include "diagd/core/start_report.hpp"
#include "diagd/core/state.hpp"
#include "diagd/core/worker_thread.hpp"
#include "diagd/monitors/fan/fan.hpp"
#include "diagd/monitors/fan/fan_policy.hpp"

#include "util_cpld.h"
#include "util_i2c.h"

#include <chrono>
#include <cstdio>
#include <optional>
#include <thread>

using std::memory_order_relaxed;
using namespace std::chrono_literals;

namespace {

constexpr const char *thread_name = "fan_monitor";
constexpr int cpld_bus = 0;
constexpr int last_tick = 4; // ticks of a second; a pass comes after the one behind it

int cpld_handle = -1; // set before the thread starts

bool mode_is_automatic() noexcept
{
    return fan_master.mode.load(memory_order_relaxed) == diagd::fan_auto;
}

bool speed_is_automatic() noexcept
{
    return fan_master.speed.load(memory_order_relaxed) == diagd::speed_auto;
}

void write(diagd::CpldRegister reg, int value) noexcept
{
    diagd::write_register(cpld_handle, reg, static_cast<std::uint8_t>(value));
}

// Writes every time, changed or not: the operator's command may have written something else.
void set_automatic_speed(int temperature) noexcept
{
    const int level = diagd::automatic_fan_speed(temperature);
    const diagd::Semaphore board{diagm.sem_id};
    // The command stores its speed with the board in hand, and this may have waited for it.
    if (!speed_is_automatic())
        return;
    write(diagd::CpldRegister::fan_speed, level);
    fan_master.current_speed.store(level, memory_order_relaxed);
}

// Whether the settings of this moment want the fans open.
bool decide(int temperature) noexcept
{
    const std::int32_t reference = fan_master.reference_temperature.load(memory_order_relaxed);
    const diagd::FanDecision decision =
        diagd::decide_fans(fan_master.mode.load(memory_order_relaxed), temperature,
                           fan_master.open_temperature.load(memory_order_relaxed), reference);
    diagd::lift_reference(reference, decision.reference);
    return decision.open;
}

void switch_fans(int temperature) noexcept
{
    const auto state = [](bool open) { return open ? 1 : 0; };
    if (state(decide(temperature)) == fan_master.state.load(memory_order_relaxed))
        return;
    bool open;
    {
        const diagd::Semaphore board{diagm.sem_id};
        // The board may have been somebody else's for long, and a mode that came meanwhile is in force.
        open = decide(temperature);
        if (state(open) == fan_master.state.load(memory_order_relaxed))
            return;
        write(diagd::CpldRegister::fan_power, state(open));
        fan_master.state.store(state(open), memory_order_relaxed);
    }
    diagd::file_alarm(TQ_ALARM_FAN, open ? diagd::AlarmState::on : diagd::AlarmState::off,
                      open ? "Open!" : "Close!");
}

// Reading a dead sensor takes seconds: what the operator has chosen meanwhile is in force at the end of the
// pass.
void pass() noexcept
{
    std::optional<int> temperature;
    if (mode_is_automatic() || speed_is_automatic())
        temperature = lm75_temperature_get();
    if (temperature && speed_is_automatic())
        set_automatic_speed(*temperature);
    if (temperature ||
        !mode_is_automatic()) // the automatic mode of a moment ago waits for the next pass's reading
        switch_fans(temperature.value_or(0));
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

int fan_init()
{
    diagd::reset_fan_master();
    fan_cmd_init();

    diagd::Privileges raised{"fan_monitor_init"};
    if (!diagd::open_board_sensor()) {
        diagd::goes_without(thread_name, "the sensor's bus cannot be opened");
        return 0;
    }
    cpld_handle = misc_i2c_device_init(cpld_bus);
    if (cpld_handle < 0) {
        diagd::goes_without(thread_name, "the fans' bus cannot be opened");
        return 0;
    }
    raised.lower();

    if (!diagd::start_worker(thread_name, run, diagd::ThreadEnd::detached)) {
        std::puts("fan_monitor_thread init failed!\r");
        return 0;
    }
    diagm.fan_monitor.store(1, memory_order_relaxed);
    return 0;
}
