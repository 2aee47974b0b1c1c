// SPDX-License-Identifier: GPL-2.0-or-later
// Start-up and bulk commands against sysrepo alone: the 106 alarms seeded, each in one transaction of nine
// values, and one switch of 102 alarms changed at once.  Prints the times and ratios; exit status 1 when seeding
// costs more than 1.5 times its bare transactions, or a bulk change more than one.  `bench/run` runs it where
// a database is.
#include "tq_database.h"

#include <sysrepo.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <string>

namespace {

constexpr int rounds = 9;
constexpr double longest_seeding = 1.5; // times the bare transactions
constexpr double longest_bulk = 1.5;
constexpr std::uint16_t bulk_entries = 102;
constexpr const char *actions[] = {"action/print", "action/record", "action/trap", "action/remote"};

void check(int code, const char *what)
{
    if (code == 0)
        return;
    std::fprintf(stderr, "%s: %d\n", what, code);
    std::exit(1);
}

double ms_of(const std::function<void()> &work)
{
    const auto begin = std::chrono::steady_clock::now();
    work();
    return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - begin).count();
}

std::string name_of(std::uint16_t id, unsigned variant)
{
    return "alarm-" + std::to_string(id) + "-" + std::to_string(variant);
}

// Every variant differs from the one before, so that each transaction has something to change.
void seed(tq_database_t &db, unsigned variant)
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
        check(code, "seeding");
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

void seed_barely(sr_session_ctx_t *session, unsigned variant)
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

// The best of several, for a busy machine.
double best_ms(const std::function<void(unsigned variant)> &work)
{
    double best = 1e9;
    static unsigned variant = 0;
    for (int round = 0; round < rounds; ++round, ++variant)
        best = std::min(best, ms_of([&] { work(variant); }));
    return best;
}

bool compare(const char *what, double ours, double bare, double longest)
{
    std::printf("%-28s sysrepo alone %7.2f ms, here %7.2f ms, ratio %.2f (at most %.1f)\n", what, bare, ours,
                ours / bare, longest);
    return ours / bare <= longest;
}

} // namespace

int main()
{
    sr_conn_ctx_t *connection = nullptr;
    sr_session_ctx_t *session = nullptr;
    check(sr_connect(SR_CONN_DEFAULT, &connection), "sr_connect");
    check(sr_session_start(connection, SR_DS_RUNNING, &session), "sr_session_start");
    const double bare_seeding = best_ms([&](unsigned variant) { seed_barely(session, variant); });
    const double bare_bulk = best_ms([&](unsigned variant) { switch_all_barely(session, variant % 2 != 0); });
    sr_disconnect(connection); // nobody listens to the bare ones, and nobody of them to ours

    tq_database_t db{};
    check(database_init(&db), "database_init");
    const double seeding = best_ms([&](unsigned variant) { seed(db, variant); });
    const double bulk = best_ms([&](unsigned variant) { switch_all(db, variant % 2 != 0); });
    database_disconnect(&db);

    const bool is_seeding_good = compare("106 alarms of nine values", seeding, bare_seeding, longest_seeding);
    const bool is_bulk_good = compare("102 alarms at once", bulk, bare_bulk, longest_bulk);
    return is_seeding_good && is_bulk_good ? 0 : 1;
}
