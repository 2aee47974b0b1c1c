// SPDX-License-Identifier: GPL-2.0-or-later
// The start order of the diagnostics daemon.  The command line is not parsed: libfrr takes the program's name
// from it and everything else runs with the library's defaults.
#include "diagd/core/frr.hpp"
#include "diagd/core/lock_wait.hpp"
#include "diagd/core/state.hpp"
#include "diagd/leftovers.hpp"
#include "diagd/start_steps.hpp"
#include "diagd/units.hpp"

int main(int argc, char **argv)
{
    line_buffer_stdout();
    limit_kept_memory();

    board_records_init();
    board_semaphore_init();
    xtables_libdir_init();
    diagd_database_init();
    alarm_log_database_init();
    diagd_get_base_cfg();
    cpld_bus_init();

    clear_leftovers();
    frr_preinit(&diagd_di, argc, argv);
    diagm.master = frr_init();
    pon_mode_init();

    service_bus_init();
    diag_zclient_init(diagm.master);
    diag_port_init();

    alarm_store_init();
    initial_alarm_log_config();

    fan_init();
    usb_init();
    power_init();
    reset_init();

    phy_cmd_init();
    i2c_cmd_init();
    diag_cmd_init();
    cpld_init();
    system_cmd_init();
    transceiver_cmd_init();

    lock_wait_init();
    start_report_init();
    frr_config_fork();
    frr_run(diagm.master);
    return 0;
}
