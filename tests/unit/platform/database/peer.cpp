// SPDX-License-Identifier: GPL-2.0-or-later
// A second user of the database, for tests.  Says "ready" once its database is open; then
//   level ID LEVEL     sets the level of an alarm, prints the code
//   hear ID LEVEL      waits until the alarm has this level, prints "heard"
//   hold               takes the apply lock, prints the code, waits to be killed
//   write              changes alarms until it is killed
//   idle               waits to be killed
#include "tq_database.h"

#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <thread>

namespace {

std::string level_of(tq_database_t &db, std::uint16_t id)
{
    char level[16];
    int len = sizeof level;
    return db_olt_alarm_log_get_alarm_level(id, &db, level, &len) == 0 ? level : "";
}

void write_for_ever(tq_database_t &db)
{
    for (unsigned n = 0;; ++n)
        for (std::uint16_t id = 0; id < TQ_ALARM_COUNT; ++id)
            db_olt_alarm_log_set_alarm_level(id, &db, n % 2 ? "alert" : "info", 16, 1);
}

} // namespace

int main(int argc, char **argv)
{
    setvbuf(stdout, nullptr, _IOLBF, 0);
    const std::string verb = argc > 1 ? argv[1] : "";
    const auto id = static_cast<std::uint16_t>(argc > 2 ? std::strtoul(argv[2], nullptr, 10) : 0);
    tq_database_t db{};
    if (const int code = database_init(&db); code != 0) {
        std::printf("code %d\n", code);
        return 1;
    }
    std::puts("ready");
    if (verb == "level")
        std::printf("%d\n", db_olt_alarm_log_set_alarm_level(id, &db, argv[3], 16, 1));
    else if (verb == "hear") {
        while (level_of(db, id) != argv[3])
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        std::puts("heard");
    } else if (verb == "write") {
        write_for_ever(db);
    } else {
        if (verb == "hold")
            std::printf("%d\n", db_apply_lock(&db));
        for (;;)
            pause();
    }
    database_disconnect(&db);
}
