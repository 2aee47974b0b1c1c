// SPDX-License-Identifier: GPL-2.0-or-later
// Raising an alarm: its text is made once and goes through every action that is switched on for it.
// Failure policy: an action that fails is reported and never keeps the others from being taken.  What stays
// in the box comes first.
#include "platform/alarms/alarm.hpp"
#include "platform/trace/tq_trace.hpp"
#include "tq_api.h"
#include "tq_errno.h"

#include <array>
#include <atomic>
#include <cstdarg>
#include <cstdio>

namespace {

struct Action {
    std::uint32_t bit;
    int (*take)(const tq::Alarm &) noexcept;
};

constexpr std::array actions = {
    Action{TQ_ACTION_RECORD, tq::record_alarm},
    Action{TQ_ACTION_PRINT, tq::print_alarm},
    Action{TQ_ACTION_REMOTE, tq::remote_alarm},
    Action{TQ_ACTION_TRAP, tq::trap_alarm},
};

// localtime_r alone keeps to the zone that it found first.  To look for another costs more than all else of
// an alarm that is only recorded: once a second is enough.
std::tm local_time(std::time_t now) noexcept
{
    static std::atomic<std::time_t> last_look{-1};
    if (last_look.load(std::memory_order_relaxed) != now) {
        last_look.store(now, std::memory_order_relaxed);
        tzset();
    }
    std::tm local{};
    localtime_r(&now, &local);
    return local;
}

int raise_alarm(tq_database_t *db, const tq_alarm_req_t *request, const char *message) noexcept
{
    if (!request)
        return TQ_ERR_INVALID;
    const tq::AlarmSettings settings = tq::alarm_settings(request->alarm_id, db);
    timespec now{};
    clock_gettime(CLOCK_REALTIME, &now);
    tq::Alarm alarm{
        request->alarm_id, settings.level, {}, message, static_cast<int>(now.tv_nsec / 1000), *request, db};
    alarm.time = local_time(now.tv_sec);

    int result = TQ_OK;
    for (const Action &action : actions) {
        if (!(settings.actions & action.bit))
            continue;
        const int one = action.take(alarm);
        if (result == TQ_OK)
            result = one;
    }
    return result;
}

} // namespace

int cli_log(tq_database_t *db, tq_alarm_req_t *req, const char *fmt, ...)
{
    char message[1024] = "";
    if (fmt) {
        va_list values;
        va_start(values, fmt);
        if (std::vsnprintf(message, sizeof message, fmt, values) < 0)
            message[0] = '\0';
        va_end(values);
    }
    return tq::traced(
        "cli_log", [&] { return raise_alarm(db, req, message); },
        tq::arg("id", req ? int{req->alarm_id} : -1), tq::bytes("rec", req, sizeof(tq_alarm_req_t)),
        tq::arg("text", message));
}
