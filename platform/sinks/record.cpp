// SPDX-License-Identifier: GPL-2.0-or-later
// The record action: an alarm becomes a record of the shared store.
// Failure policy: a record that the store cannot take is lost, and that is said in the log once.
#include "platform/alarms/alarm.hpp"
#include "platform/alarms/mapping.hpp"
#include "platform/alarms/store_semaphore.hpp"
#include "platform/sinks/sink_state.hpp"
#include "tq_errno.h"

#include <cerrno>
#include <cstring>
#include <mutex>
#include <new>
#include <string>

namespace tq {

namespace {

// Behind the six numbers a record holds the rest of a struct tm, as a 64-bit C library lays it out.
struct TimeRest {
    std::int32_t week_day, year_day, is_dst, padding;
    std::int64_t utc_offset_s;
    std::uint64_t zone; // a pointer there; no use to another process
};
static_assert(sizeof(TimeRest) == sizeof(tq_alarm_slot_t::tm_rest));

tq_alarm_slot_t make_record(const Alarm &alarm) noexcept
{
    tq_alarm_slot_t record{};
    record.valid = 1;
    record.level = alarm.level;
    record.alarm_id = alarm.id;
    record.sec = alarm.time.tm_sec;
    record.min = alarm.time.tm_min;
    record.hour = alarm.time.tm_hour;
    record.mday = alarm.time.tm_mday;
    record.mon = alarm.time.tm_mon + 1;
    record.year = alarm.time.tm_year + 1900;
    const TimeRest rest{
        alarm.time.tm_wday, alarm.time.tm_yday, alarm.time.tm_isdst, 0, alarm.time.tm_gmtoff, 0};
    std::memcpy(record.tm_rest, &rest, sizeof rest);
    std::memcpy(record.message, alarm.message, strnlen(alarm.message, sizeof record.message - 1));
    return record;
}

// 0 or an errno value.
int file_record(const tq_alarm_slot_t &record) noexcept
{
    const StoreGuard guard;
    auto chain = guard ? alarm_mapping().chain() : std::nullopt;
    if (!chain)
        return errno;
    chain->add(record);
    return AlarmMapping::is_lost() ? errno : 0;
}

void note(int error)
{
    static const std::string store = "the alarm store";
    static std::mutex mutex;
    static SinkState state;
    const std::lock_guard lock(mutex);
    state.note(store, error);
}

} // namespace

int record_alarm(const Alarm &alarm) noexcept
{
    const int error = file_record(make_record(alarm));
    try {
        note(error);
    } catch (const std::bad_alloc &) {
        return TQ_ERR_NO_MEMORY;
    }
    return error == 0 ? TQ_OK : TQ_ERR_STORE;
}

} // namespace tq
