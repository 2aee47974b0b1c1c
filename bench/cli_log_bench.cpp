// SPDX-License-Identifier: GPL-2.0-or-later
// Alarms per second through cli_log with record as the only action, the switches read from the configuration
// database as the daemon does it: one process, then four at once, of which none may lose a record.  The floor
// is the least that filing a record can take: the semaphore taken and given back, and 200 bytes copied.
// Prints the rates and their ratio to the floor; exit status 1 when a record was lost or the rate is below
// 100,000 a second.  `bench/in_box cli_log_bench` runs it where a database is.
#include "platform/alarms/mapping.hpp"
#include "platform/system/semaphore.hpp"
#include "tq_api.h"
#include "tq_database.h"

#include <sys/wait.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <unistd.h>

namespace {

constexpr std::uint16_t alarm_id = TQ_ALARM_CONFIG_SAVE;
constexpr int records = 400'000;
constexpr int processes = 4;
constexpr double wanted_per_s = 100'000;

[[noreturn]] void fail(const char *what)
{
    std::fprintf(stderr, "%s failed\n", what);
    std::exit(1);
}

double seconds_since(std::chrono::steady_clock::time_point begin)
{
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
}

void print(const char *what, double per_s, double floor_per_s)
{
    std::printf("%-52s %10.0f per second  ratio %.2f\n", what, per_s, floor_per_s / per_s);
}

// Records ever filed in the store, counted by the store itself.
std::uint64_t filed()
{
    tq::take_semaphore(alarm_log_sem_id);
    const auto chain = tq::alarm_mapping().chain();
    const std::uint64_t count = chain ? chain->filed() : 0;
    tq::give_semaphore(alarm_log_sem_id);
    return count;
}

double floor_per_s()
{
    static tq_alarm_slot_t ring[TQ_ALARM_CAPACITY];
    tq::take_semaphore(alarm_log_sem_id);
    const tq_alarm_store_t *store = tq_alarm_log_get_shm_pointer();
    tq::give_semaphore(alarm_log_sem_id);
    if (!store)
        fail("attaching the store");
    const auto begin = std::chrono::steady_clock::now();
    for (int i = 0; i < records; ++i) {
        tq::take_semaphore(alarm_log_sem_id);
        std::memcpy(&ring[i % TQ_ALARM_CAPACITY], &store->slot[i % 16], sizeof ring[0]);
        tq::give_semaphore(alarm_log_sem_id);
    }
    return records / seconds_since(begin);
}

void set_record_only(tq_database_t &db)
{
    const std::uint8_t on = 1, off = 0;
    if (db_olt_alarm_log_set_alarm_level(alarm_id, &db, "major", 8, 0) != 0 ||
        db_olt_alarm_log_set_action_print(alarm_id, &db, &off, 1, 0) != 0 ||
        db_olt_alarm_log_set_action_trap(alarm_id, &db, &off, 1, 0) != 0 ||
        db_olt_alarm_log_set_action_remote(alarm_id, &db, &off, 1, 0) != 0 ||
        db_olt_alarm_log_set_action_record(alarm_id, &db, &on, 1, 1) != 0)
        fail("setting the actions");
}

void file_records(tq_database_t &db)
{
    tq_alarm_req_t request{};
    request.alarm_id = alarm_id;
    for (int i = 0; i < records; ++i)
        if (cli_log(&db, &request, "%s 0/%d is down, and this is a message of usual length", "port",
                    i % 16) != 0)
            fail("cli_log");
}

// One of several processes: says when it is ready, starts when the pipe closes.
[[noreturn]] void be_process(int ready, int go)
{
    tq_database_t db{};
    char byte = 0;
    if (database_init(&db) != 0 || tq_alarm_log_init() < 0 || ::write(ready, &byte, 1) != 1)
        std::_Exit(1);
    if (::read(go, &byte, 1) != 0)
        std::_Exit(1);
    file_records(db);
    std::_Exit(0);
}

// Rate of all together.
double several_per_s()
{
    int ready[2], go[2];
    if (pipe(ready) != 0 || pipe(go) != 0)
        fail("pipe");
    for (int i = 0; i < processes; ++i)
        if (fork() == 0) {
            ::close(go[1]);
            be_process(ready[1], go[0]);
        }
    char byte;
    for (int i = 0; i < processes; ++i)
        if (::read(ready[0], &byte, 1) != 1)
            fail("starting a process");
    const auto begin = std::chrono::steady_clock::now();
    ::close(go[1]);
    for (int i = 0; i < processes; ++i) {
        int status = 0;
        if (::wait(&status) < 0 || status != 0)
            fail("a process");
    }
    return double{records} * processes / seconds_since(begin);
}

} // namespace

int main()
{
    // Before this process has threads.
    if (tq_alarm_log_init() < 0)
        fail("tq_alarm_log_init");
    {
        tq_database_t db{};
        if (database_init(&db) != 0)
            fail("database_init");
        set_record_only(db);
        database_disconnect(&db);
    }
    const std::uint64_t before = filed();
    const double floor = floor_per_s();
    const double together = several_per_s();
    const std::uint64_t lost = before + std::uint64_t{records} * processes - filed();

    tq_database_t db{};
    if (database_init(&db) != 0)
        fail("database_init");
    const auto begin = std::chrono::steady_clock::now();
    file_records(db);
    const double alone = records / seconds_since(begin);
    database_disconnect(&db);

    print("floor: semaphore pair and 200-byte copy", floor, floor);
    print("cli_log, record only, one process", alone, floor);
    print("cli_log, record only, four processes together", together, floor);
    std::printf("records of the four processes that the store lost: %llu\n",
                static_cast<unsigned long long>(lost));
    return lost == 0 && alone >= wanted_per_s ? 0 : 1;
}
