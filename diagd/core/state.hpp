// SPDX-License-Identifier: GPL-2.0-or-later
// The process-wide objects: one instance of each, alive as long as the process.
#pragma once

#include "tq_database.h"

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>

struct thread_master;

namespace diagd {

// Written by commands and by the service bus, read by the monitor threads.  A reader may see a change one
// cycle late, so no order is needed: always load and store with std::memory_order_relaxed.
using MonitorSwitch = std::atomic<std::uint8_t>; // 1 enabled, 0 disabled
static_assert(sizeof(MonitorSwitch) == 1 && MonitorSwitch::is_always_lock_free);

// Thresholds of one optical alarm on one PON port.  They belong to the main thread, as the commands that
// change them and the threshold monitor do.
struct PonThreshold {
    std::uint8_t enabled; // 1: the alarm is watched
    float alarm;          // in the unit of the value
    float clear;
};
static_assert(sizeof(PonThreshold) == 12 && offsetof(PonThreshold, alarm) == 4);

inline constexpr std::size_t pon_type_count = 2; // GPON, XG-PON
inline constexpr std::size_t pon_port_count = 8; // ports 1 to 8
inline constexpr std::size_t pon_alarm_count = 8;

using PonPortThresholds = std::array<PonThreshold, pon_alarm_count>;

struct State {
    int sem_id;                 // board-access semaphore
    std::uint32_t pon_mode;     // 1 GPON, 2 XG-PON, 3 combo
    std::uint8_t cpld_i2c_bus;  // where the CPLD sits
    std::uint8_t cpld_i2c_addr; // 7-bit
    MonitorSwitch fan_monitor;
    MonitorSwitch usb_monitor;
    MonitorSwitch power_monitor;
    MonitorSwitch transceiver_monitor;
    struct thread_master *master; // libfrr's event loop
    std::array<std::array<PonPortThresholds, pon_port_count>, pon_type_count> pon_thresholds;

    // All four switches at once: the service bus and the CPLD upgrade suspend and resume monitoring as a
    // whole.
    void set_all_monitors(bool enabled) noexcept
    {
        const std::uint8_t value = enabled ? 1 : 0;
        for (MonitorSwitch *monitor : {&fan_monitor, &usb_monitor, &power_monitor, &transceiver_monitor})
            monitor->store(value, std::memory_order_relaxed);
    }
};
static_assert(offsetof(State, sem_id) == 0 && sizeof(State::sem_id) == 4);
static_assert(offsetof(State, pon_mode) == 4);
static_assert(offsetof(State, cpld_i2c_bus) == 8);
static_assert(offsetof(State, cpld_i2c_addr) == 9);
static_assert(offsetof(State, fan_monitor) == 10);
static_assert(offsetof(State, usb_monitor) == 11);
static_assert(offsetof(State, power_monitor) == 12);
static_assert(offsetof(State, transceiver_monitor) == 13);
static_assert(offsetof(State, master) == 16);
static_assert(offsetof(State, pon_thresholds) == 24);

} // namespace diagd

extern diagd::State diagm;       // all zero at start
extern tq_database_t g_diagd_db; // configuration database
extern tq_port_info_t port_info; // port counts; all zero when the database could not give them
extern tq_intf_table_t intf;     // interface table; all zero means no ports

namespace diagd {

// Hands the database library's debug word and sysrepo's log function back to the libraries, so that their
// debug output follows the database debug switch.
inline void register_database_debug() noexcept
{
    db_debug_flag_reg(db_debug_flag_return());
    sysrepo_debug_fun_reg(sysrepo_debug_func_return());
}

} // namespace diagd
