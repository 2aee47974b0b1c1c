// SPDX-License-Identifier: GPL-2.0-or-later
// Steps of the start order that belong to no unit.
#include "diagd/start_steps.hpp"

#include "diagd/core/frr.hpp"
#include "diagd/core/state.hpp"

#include "tq_api.h"

#include <malloc.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace {
constexpr int board_semaphore_key = 0x102410; // known to every user of the board's buses
}

void line_buffer_stdout()
{
    std::setvbuf(stdout, nullptr, _IOLBF, BUFSIZ);
}

void limit_kept_memory()
{
    constexpr int most_bytes = 1024 * 1024; // a listing of the full alarm log takes and frees less
    mallopt(M_TRIM_THRESHOLD, most_bytes);
}

void board_semaphore_init()
{
    if (semaphore_create(&diagm.sem_id, board_semaphore_key, 1) >= 0)
        return;
    // The log is not set up yet.
    constexpr char message[] = "diagd init semaphore failed";
    std::fwrite(message, 1, sizeof(message) - 1, stderr);
    std::exit(0);
}

void xtables_libdir_init()
{
    if (setenv("XTABLES_LIBDIR", "/usr/lib/xtables", 1) != 0)
        std::fprintf(stderr, "setenv XTABLES_LIBDIR failed: %s\n", std::strerror(errno));
}

void diagd_database_init()
{
    if (database_init(&g_diagd_db) < 0) {
        // Until the event loop runs, libfrr writes warnings and errors to standard error, too.
        zlog_err("DIAGD init database failed");
        std::exit(0);
    }
    diagd::register_database_debug();
}

void diagd_get_base_cfg()
{
    port_info = {};
    if (database_dev_get_port_info(&g_diagd_db, &port_info) < 0) {
        zlog_err("DIAGD: get port info from db failed!");
        port_info = {}; // whatever a failed read left there counts for nothing
        return;
    }
    port_init(&port_info, &intf);
}
