// SPDX-License-Identifier: GPL-2.0-or-later
// Records per second of the shared alarm store, against the least that filing a record can take: the
// semaphore taken and given back, and the 200 bytes of a record copied.  Prints both and their ratio. The
// store is that of the IPC namespace the program runs in; run it in one of its own (unshare -m -i).
#include "platform/alarms/alarm.hpp"
#include "platform/system/semaphore.hpp"
#include "tq_api.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <vector>

namespace {

constexpr int rounds = 7;
constexpr int records = 100'000;

// Median time of one call, in nanoseconds.
template <class F>
double time_ns(F &&call)
{
    std::vector<double> times;
    for (int round = 0; round < rounds; ++round) {
        const auto begin = std::chrono::steady_clock::now();
        for (int i = 0; i < records; ++i)
            call(i);
        const std::chrono::duration<double, std::nano> time = std::chrono::steady_clock::now() - begin;
        times.push_back(time.count() / records);
    }
    std::nth_element(times.begin(), times.begin() + rounds / 2, times.end());
    return times[rounds / 2];
}

void print(const char *what, double ns, double floor_ns)
{
    std::printf("%-44s %8.0f ns %10.0f per second  ratio %.2f\n", what, ns, 1e9 / ns, ns / floor_ns);
}

} // namespace

int main()
{
    if (tq_alarm_log_init() < 0) {
        std::perror("tq_alarm_log_init");
        return 1;
    }
    tq_alarm_store_t *store = tq_alarm_log_get_shm_pointer();
    if (!store)
        return 1;

    std::vector<tq_alarm_slot_t> ring(TQ_ALARM_CAPACITY);
    const double floor_ns = time_ns([&](int i) {
        tq::take_semaphore(alarm_log_sem_id);
        std::memcpy(&ring[static_cast<std::size_t>(i) % ring.size()], &store->slot[i % 16],
                    sizeof(tq_alarm_slot_t));
        tq::give_semaphore(alarm_log_sem_id);
    });
    print("floor: semaphore pair and 200-byte copy", floor_ns, floor_ns);

    const std::time_t now = std::time(nullptr);
    tq::Alarm alarm{29, 1, {}, "port 0/3 is down, and this is a message of usual length"};
    localtime_r(&now, &alarm.time);
    print("record filed, store full", time_ns([&](int) { tq::record_alarm(alarm); }), floor_ns);

    tq_alarm_req_t request{};
    request.alarm_id = TQ_ALARM_CONFIG_SAVE; // recorded, not printed
    print("cli_log, store full", time_ns([&](int i) {
              cli_log(nullptr, &request, "%s 0/%d is down, and this is a message of usual length", "port",
                      i % 16);
          }),
          floor_ns);

    print("semaphore_p and _v with the reader's check", time_ns([](int) {
              semaphore_p(alarm_log_sem_id);
              semaphore_v(alarm_log_sem_id);
          }),
          floor_ns);
    return 0;
}
