// SPDX-License-Identifier: GPL-2.0-or-later
// The exported semaphore calls.  They serve any semaphore; that of the alarm store gets more: it is made
// again when it is gone, and whoever takes it finds the store that others use, with a chain that can be
// walked.
#include "platform/alarms/mapping.hpp"
#include "platform/alarms/store_semaphore.hpp"
#include "platform/system/semaphore.hpp"
#include "platform/trace/tq_trace.hpp"
#include "tq_api.h"

#include <atomic>
#include <cerrno>

namespace {

constexpr int board_key = 0x102410;      // access to the board
std::atomic<int> board_semaphore_id{-1}; // for the trace only

// What a reader of the trace knows the semaphore by.
struct SemaphoreArg {
    int id;
    void append_to(tq::TraceLine &line) const noexcept
    {
        if (id == alarm_log_sem_id)
            line.token("id", "alarm");
        else if (id == board_semaphore_id.load(std::memory_order_relaxed))
            line.token("id", "board");
        else
            line.integer("id", id);
    }
};

} // namespace

int semaphore_create(int *id, int key, int count)
{
    return tq::traced(
        "semaphore_create",
        [&] {
            if (!id) {
                errno = EINVAL;
                return -1;
            }
            const int result = tq::open_semaphore(*id, key, count);
            if (result == 0 && key == board_key)
                board_semaphore_id.store(*id, std::memory_order_relaxed);
            return result;
        },
        tq::hex("key", key), tq::arg("count", count));
}

int semaphore_p(int id)
{
    return tq::traced(
        "semaphore_p",
        [&] {
            if (id != alarm_log_sem_id)
                return tq::take_semaphore(id);
            const int result = tq::take_alarm_semaphore();
            if (result == 0)
                tq::alarm_mapping().refresh_for_reader();
            return result;
        },
        SemaphoreArg{id});
}

int semaphore_v(int id)
{
    return tq::traced(
        "semaphore_v", [&] { return tq::give_semaphore(id); }, SemaphoreArg{id});
}
