// SPDX-License-Identifier: GPL-2.0-or-later
// Steps of the start order that belong to no unit.
#include "diagd/start_steps.hpp"

#include "diagd/core/configuration_reading.hpp"
#include "diagd/core/frr.hpp"
#include "diagd/core/privileges.hpp"
#include "diagd/core/start_report.hpp"
#include "diagd/core/state.hpp"
#include "diagd/units.hpp"

#include "tq_api.h"
#include "tq_board.h"
#include "util_cpld.h"

#include <malloc.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <optional>
#include <string>

namespace {

constexpr int board_semaphore_key = 0x102410; // known to every user of the board's buses
constexpr int highest_bus = 20;               // what the CPLD's place may name

std::optional<diagd::ConfigurationReading> reading;

int configuration_begins(struct thread_master *) noexcept
{
    reading.emplace();
    return 0;
}

int configuration_is_read(struct thread_master *) noexcept
{
    if (reading->file_is_missing())
        diagd::goes_without("configuration", config_default);
    if (reading->backup_is_used())
        diagd::goes_without(
            "newest configuration",
            (std::string(config_default) + " could not be opened: its .sav is in its place").c_str());
    if (const unsigned lines = reading->refused_lines(); lines > 0)
        diagd::goes_without("lines of the configuration", (std::to_string(lines) + " refused").c_str());
    diagd::report_start(); // also on standard error when something is missing
    reading.reset();
    return 0;
}

} // namespace

void line_buffer_stdout()
{
    std::setvbuf(stdout, nullptr, _IOLBF, BUFSIZ);
}

void limit_kept_memory()
{
    constexpr int most_bytes = 1024 * 1024; // a listing of the full alarm log takes and frees less
    mallopt(M_TRIM_THRESHOLD, most_bytes);
}

void board_records_init()
{
    diagd::goes_without_if_failed("board records", board_mmap_init(BOARD_REGIONS, BOARD_REC_SIZE));
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
    if (setenv("XTABLES_LIBDIR", "/usr/lib/xtables", 1) == 0)
        return;
    const char *const reason = std::strerror(errno);
    std::fprintf(stderr, "setenv XTABLES_LIBDIR failed: %s\n", reason);
    diagd::goes_without("XTABLES_LIBDIR", reason);
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
    const int code = database_dev_get_port_info(&g_diagd_db, &port_info);
    if (code < 0) {
        zlog_err("DIAGD: get port info from db failed!");
        diagd::goes_without_if_failed("port record", code);
        port_info = {}; // whatever a failed read left there counts for nothing
        return;
    }
    diagd::goes_without_if_failed("interface table", port_init(&port_info, &intf));
}

void cpld_bus_init()
{
    diagd::goes_without_if_failed("place of the CPLD",
                                  misc_cpld_i2c_init(&diagm.cpld_i2c_bus, &diagm.cpld_i2c_addr, highest_bus));
}

void pon_mode_init()
{
    const int mode = pon_mode_get();
    diagd::goes_without_if_failed("PON mode", mode);
    diagm.pon_mode = static_cast<std::uint32_t>(mode);
}

void service_bus_init()
{
    diagd::goes_without_if_failed("service bus", diag_sclient_init(diagm.master, 0, &diagd_privs));
}

void alarm_store_init()
{
    diagd::goes_without_if_failed("alarm store", tq_alarm_log_init());
}

void start_report_init()
{
    hook_register(frr_config_pre, configuration_begins);
    hook_register(frr_config_post, configuration_is_read);
}
