// SPDX-License-Identifier: GPL-2.0-or-later
// Filing alarm records; the failure policy stands in alarm_record.hpp.
#include "diagd/core/alarm_record.hpp"

#include "diagd/core/lock_wait.hpp"
#include "diagd/core/state.hpp"

#include "tq_api.h"

#include <sys/sem.h>

#include <condition_variable>
#include <mutex>

namespace diagd {

namespace {

struct Records {
    std::mutex mutex;
    std::condition_variable changed;
    int in_the_making = 0;
    bool stopped = false;
};

// Never destroyed: a monitor may be at the end of a record while the process ends around it.
Records &records()
{
    static Records &all = *new Records;
    return all;
}

bool begin() noexcept
{
    const std::lock_guard lock{records().mutex};
    if (!records().stopped)
        ++records().in_the_making;
    return !records().stopped;
}

void end() noexcept
{
    {
        const std::lock_guard lock{records().mutex};
        --records().in_the_making;
    }
    records().changed.notify_all();
}

} // namespace

void file_alarm(tq_alarm_id alarm, AlarmState state, const char *message) noexcept
{
    tq_alarm_req_t request{};
    request.alarm_id = alarm;
    request.state = static_cast<std::uint32_t>(state);
    await_free(alarm_log_sem_id);
    if (!begin())
        return;
    cli_log(&g_diagd_db, &request, "%s", message);
    end();
}

bool stop_filing_alarms(std::chrono::milliseconds limit) noexcept
{
    std::unique_lock lock{records().mutex};
    records().stopped = true;
    return records().changed.wait_for(lock, limit, [] { return records().in_the_making == 0; });
}

void keep_alarm_store(std::chrono::milliseconds limit) noexcept
{
    struct sembuf take {
        .sem_num = 0, .sem_op = -1, .sem_flg = SEM_UNDO
    };
    const struct timespec longest {
        .tv_sec = limit.count() / 1000, .tv_nsec = limit.count() % 1000 * 1'000'000
    };
    semtimedop(alarm_log_sem_id, &take, 1, &longest);
}

} // namespace diagd
