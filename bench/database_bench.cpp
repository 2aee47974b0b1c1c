// SPDX-License-Identifier: GPL-2.0-or-later
// Start-up and bulk commands against sysrepo alone: the 106 alarms set to their defaults, each in one
// transaction of nine values, and one switch of 102 alarms changed at once.  Both take turns, and the best of
// several counts, for a busy machine.  Prints the times and ratios; exit status 1 when setting the defaults
// takes more than 1.5 times as long as its bare transactions.  `bench/run` runs it where a database is.
#include "tq_database.h"

#include <sysrepo.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <functional>
#include <string>

namespace {

constexpr int rounds = 15;
constexpr double defaults_ratio_max = 1.5; // times the bare transactions
constexpr std::uint16_t bulk_entries = 102;
constexpr const char *actions[] = {"action/print", "action/record", "action/trap", "action/remote"};

void check(int code, const char *what)
{
    if (code == 0)
        return;
    std::fprintf(stderr, "%s: %d\n", what, code);
    std::exit(1);
}

// By the clock, and of the processor by all threads: other programs disturb the latter less.
struct Cost {
    double clock_ms = 1e9, cpu_ms = 1e9;
};

double cpu_ms()
{
    timespec time{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) * 1e3 + static_cast<double>(time.tv_nsec) / 1e6;
}

void keep_least(Cost &least, const std::function<void()> &work)
{
    const auto begin = std::chrono::steady_clock::now();
    const double cpu_begin = cpu_ms();
    work();
    least.cpu_ms = std::min(least.cpu_ms, cpu_ms() - cpu_begin);
    const std::chrono::duration<double, std::milli> time = std::chrono::steady_clock::now() - begin;
    least.clock_ms = std::min(least.clock_ms, time.count());
}

std::string name_of(std::uint16_t id, unsigned variant)
{
    return "alarm-" + std::to_string(id) + "-" + std::to_string(variant);
}

// Every variant differs from the one before, so that each transaction has something to change.
void set_defaults(tq_database_t &db, unsigned variant)
{
    const std::uint8_t on = variant % 2;
    const char *const level = variant % 2 ? "major" : "alert";
    for (std::uint16_t id = 0; id < TQ_ALARM_COUNT; ++id) {
        int code = db_olt_alarm_log_set_alarm_name(id, &db, name_of(id, variant).c_str(), 32, 0);
        code |= db_olt_alarm_log_set_alarm_desc(id, &db, name_of(id, variant).c_str(), 32, 0);
        code |= db_olt_alarm_log_set_alarm_level(id, &db, level, 16, 0);
        code |= db_olt_alarm_log_set_alarm_type(id, &db, variant % 2 ? "environment" : "equipment", 16, 0);
        code |= db_olt_alarm_log_set_alarm_class(id, &db, variant % 2 ? "alarm" : "event", 8, 0);
        code |= db_olt_alarm_log_set_action_print(id, &db, &on, 1, 0);
        code |= db_olt_alarm_log_set_action_record(id, &db, &on, 1, 0);
        code |= db_olt_alarm_log_set_action_trap(id, &db, &on, 1, 0);
        code |= db_olt_alarm_log_set_action_remote(id, &db, &on, 1, 1);
        check(code, "setting defaults");
    }
}

std::string path_of(std::uint16_t id, const char *leaf)
{
    return "/olt-alarm-log:alarm-log/alarm[id='" + std::to_string(id) + "']/" + leaf;
}

void set_barely(sr_session_ctx_t *session, std::uint16_t id, const char *leaf, const std::string &value)
{
    check(sr_set_item_str(session, path_of(id, leaf).c_str(), value.c_str(), nullptr, SR_EDIT_DEFAULT), leaf);
}

void set_defaults_barely(sr_session_ctx_t *session, unsigned variant)
{
    for (std::uint16_t id = 0; id < TQ_ALARM_COUNT; ++id) {
        set_barely(session, id, "name", name_of(id, variant));
        set_barely(session, id, "desc", name_of(id, variant));
        set_barely(session, id, "level", variant % 2 ? "major" : "alert");
        set_barely(session, id, "type", variant % 2 ? "environment" : "equipment");
        set_barely(session, id, "class", variant % 2 ? "alarm" : "event");
        for (const char *action : actions)
            set_barely(session, id, action, variant % 2 ? "true" : "false");
        check(sr_apply_changes(session, 0, 0), "apply");
    }
}

void switch_all(tq_database_t &db, std::uint8_t on)
{
    check(db_apply_lock(&db), "lock");
    for (std::uint16_t id = 0; id < bulk_entries; ++id)
        check(db_olt_alarm_log_set_action_trap(id, &db, &on, 1, 0), "set");
    check(db_apply_changes(db.conn), "apply");
    check(db_apply_unlock(&db), "unlock");
}

void switch_all_barely(sr_session_ctx_t *session, bool on)
{
    for (std::uint16_t id = 0; id < bulk_entries; ++id)
        set_barely(session, id, "action/trap", on ? "true" : "false");
    check(sr_apply_changes(session, 0, 0), "apply");
}

struct Costs {
    Cost defaults, bulk;
};

// Nobody else is connected to listen to either.
void run_barely(Costs &costs, unsigned variant)
{
    sr_conn_ctx_t *connection = nullptr;
    sr_session_ctx_t *session = nullptr;
    check(sr_connect(SR_CONN_DEFAULT, &connection), "sr_connect");
    check(sr_session_start(connection, SR_DS_RUNNING, &session), "sr_session_start");
    keep_least(costs.defaults, [&] { set_defaults_barely(session, variant); });
    keep_least(costs.bulk, [&] { switch_all_barely(session, variant % 2 == 0); });
    sr_disconnect(connection);
}

void run(Costs &costs, unsigned variant)
{
    tq_database_t db{};
    check(database_init(&db), "database_init");
    keep_least(costs.defaults, [&] { set_defaults(db, variant); });
    keep_least(costs.bulk, [&] { switch_all(db, variant % 2 == 0); });
    database_disconnect(&db);
}

void print(const char *what, const Cost &ours, const Cost &bare, const char *bound)
{
    std::printf(
        "%-26s sysrepo alone %7.2f ms, here %7.2f ms, ratio %.2f%s; of the processor %7.2f and %7.2f ms, "
        "ratio %.2f\n",
        what, bare.clock_ms, ours.clock_ms, ours.clock_ms / bare.clock_ms, bound, bare.cpu_ms, ours.cpu_ms,
        ours.cpu_ms / bare.cpu_ms);
}

} // namespace

int main()
{
    Costs bare, ours;
    unsigned variant = 0;
    Costs unused; // a database that fills is quicker than one that is full
    run_barely(unused, ++variant);
    for (int round = 0; round < rounds; ++round) {
        run_barely(bare, ++variant);
        run(ours, ++variant);
    }
    print("106 alarms of nine values", ours.defaults, bare.defaults, " (at most 1.5)");
    print("102 alarms at once", ours.bulk, bare.bulk, "");
    return ours.defaults.clock_ms / bare.defaults.clock_ms <= defaults_ratio_max ? 0 : 1;
}
