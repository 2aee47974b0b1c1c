// SPDX-License-Identifier: GPL-2.0-or-later
// The settings of the configuration database: where each stands in the data tree, what kind of value it has,
// how it reads when it was never set.
#pragma once

#include "tq_types.h"

#include <array>
#include <cstddef>
#include <cstdint>

namespace tq::db {

// Settings of the same parent node stand together: they are one object, which is changed at once.
enum class Field : std::uint8_t {
    server_ipv4_enable,
    server_ipv4_addr,
    server_ipv4_port,
    server_ipv6_enable,
    server_ipv6_addr,
    server_ipv6_port,
    flash_level,
    temp_high_alarm,
    temp_high_clear,
    temp_low_alarm,
    temp_low_clear,
    cpu_usage_high_alarm,
    cpu_usage_high_clear,
    mem_usage_high_alarm,
    mem_usage_high_clear,
    ntp_diff_time,
    // every alarm has these
    alarm_name,
    alarm_desc,
    alarm_type,
    alarm_class,
    alarm_level,
    action_print,
    action_record,
    action_trap,
    action_remote,
};

enum class Kind : std::uint8_t { text, flag, u16, i32 };

// What a getter says about a setting that was never set.
enum class Unset : std::uint8_t {
    fails,
    reads_empty, // and an empty text unsets it
};

struct Setting {
    Field field;
    const char *schema_path; // data path without the key of the alarm
    Kind kind;
    Unset unset = Unset::fails;
};

inline constexpr std::array our_modules{"olt-alarm-log", "olt-ntp"};
inline constexpr const char *alarm_list = "/olt-alarm-log:alarm-log/alarm";

// clang-format off
inline constexpr std::array settings{
    Setting{Field::server_ipv4_enable,   "/olt-alarm-log:alarm-log/remote-server-ipv4/enable",    Kind::flag},
    Setting{Field::server_ipv4_addr,     "/olt-alarm-log:alarm-log/remote-server-ipv4/ipv4-addr", Kind::text},
    Setting{Field::server_ipv4_port,     "/olt-alarm-log:alarm-log/remote-server-ipv4/port",      Kind::u16},
    Setting{Field::server_ipv6_enable,   "/olt-alarm-log:alarm-log/remote-server-ipv6/enable",    Kind::flag},
    Setting{Field::server_ipv6_addr,     "/olt-alarm-log:alarm-log/remote-server-ipv6/ipv6-addr", Kind::text},
    Setting{Field::server_ipv6_port,     "/olt-alarm-log:alarm-log/remote-server-ipv6/port",      Kind::u16},
    Setting{Field::flash_level,          "/olt-alarm-log:alarm-log/flash/level", Kind::text, Unset::reads_empty},
    Setting{Field::temp_high_alarm,      "/olt-alarm-log:alarm-log/threshold/temp-high/alarm-threshold", Kind::text, Unset::reads_empty},
    Setting{Field::temp_high_clear,      "/olt-alarm-log:alarm-log/threshold/temp-high/clear-threshold", Kind::text, Unset::reads_empty},
    Setting{Field::temp_low_alarm,       "/olt-alarm-log:alarm-log/threshold/temp-low/alarm-threshold", Kind::text, Unset::reads_empty},
    Setting{Field::temp_low_clear,       "/olt-alarm-log:alarm-log/threshold/temp-low/clear-threshold", Kind::text, Unset::reads_empty},
    Setting{Field::cpu_usage_high_alarm, "/olt-alarm-log:alarm-log/threshold/cpu-usage-high/alarm-threshold", Kind::text, Unset::reads_empty},
    Setting{Field::cpu_usage_high_clear, "/olt-alarm-log:alarm-log/threshold/cpu-usage-high/clear-threshold", Kind::text, Unset::reads_empty},
    Setting{Field::mem_usage_high_alarm, "/olt-alarm-log:alarm-log/threshold/mem-usage-high/alarm-threshold", Kind::text, Unset::reads_empty},
    Setting{Field::mem_usage_high_clear, "/olt-alarm-log:alarm-log/threshold/mem-usage-high/clear-threshold", Kind::text, Unset::reads_empty},
    Setting{Field::ntp_diff_time,        "/olt-ntp:ntp/ntp-diff-time", Kind::i32},
    Setting{Field::alarm_name,    "/olt-alarm-log:alarm-log/alarm/name",  Kind::text},
    Setting{Field::alarm_desc,    "/olt-alarm-log:alarm-log/alarm/desc",  Kind::text},
    Setting{Field::alarm_type,    "/olt-alarm-log:alarm-log/alarm/type",  Kind::text},
    Setting{Field::alarm_class,   "/olt-alarm-log:alarm-log/alarm/class", Kind::text},
    Setting{Field::alarm_level,   "/olt-alarm-log:alarm-log/alarm/level", Kind::text},
    Setting{Field::action_print,  "/olt-alarm-log:alarm-log/alarm/action/print",  Kind::flag},
    Setting{Field::action_record, "/olt-alarm-log:alarm-log/alarm/action/record", Kind::flag},
    Setting{Field::action_trap,   "/olt-alarm-log:alarm-log/alarm/action/trap",   Kind::flag},
    Setting{Field::action_remote, "/olt-alarm-log:alarm-log/alarm/action/remote", Kind::flag},
};
// clang-format on

inline constexpr std::size_t plain_count = static_cast<std::size_t>(Field::alarm_name);
inline constexpr std::size_t per_alarm_count = settings.size() - plain_count;

// Place of one value among all values: the plain settings, then the fields of alarm 0, of alarm 1, ...
using Slot = std::size_t;
inline constexpr Slot slot_count = plain_count + TQ_ALARM_COUNT * per_alarm_count;

constexpr Slot slot_of(Field plain)
{
    return static_cast<Slot>(plain);
}

// `id` below TQ_ALARM_COUNT
constexpr Slot slot_of(Field per_alarm, std::size_t id)
{
    return plain_count + id * per_alarm_count + (static_cast<std::size_t>(per_alarm) - plain_count);
}

constexpr bool is_of_alarm(Slot slot)
{
    return slot >= plain_count;
}

// `slot` of an alarm
constexpr unsigned alarm_of(Slot slot)
{
    return static_cast<unsigned>((slot - plain_count) / per_alarm_count);
}

constexpr const Setting &setting_of(Slot slot)
{
    return settings[is_of_alarm(slot) ? plain_count + (slot - plain_count) % per_alarm_count : slot];
}

// The values that are changed together with that of `slot`: first to last - 1.
struct SlotRange {
    Slot first, last;
};
SlotRange object_of(Slot slot);

// Data path of a value, long enough for every row of the table.
using Path = std::array<char, 96>;
Path path_of(Slot slot);

} // namespace tq::db
