// SPDX-License-Identifier: GPL-2.0-or-later
// The start order of the diagnostics daemon.  The command line is not parsed: libfrr takes the program's name
// from it and everything else runs with the library's defaults.
#include "diagd/core/privileges.hpp"
#include "diagd/core/state.hpp"
#include "diagd/start_steps.hpp"
#include "diagd/units.hpp"

#include "tq_api.h"
#include "util_cpld.h"

int main(int argc, char **argv)
{
    line_buffer_stdout();
    limit_kept_memory();

    board_mmap_init(BOARD_REGIONS, BOARD_REC_SIZE);
    board_semaphore_init();
    xtables_libdir_init();
    diagd_database_init();
    alarm_log_database_init();
    diagd_get_base_cfg();
    misc_cpld_i2c_init(&diagm.cpld_i2c_bus, &diagm.cpld_i2c_addr, 20);

    frr_preinit(&diagd_di, argc, argv);
    diagm.master = frr_init();
    diagm.pon_mode = static_cast<std::uint32_t>(pon_mode_get());

    diag_sclient_init(diagm.master, 0, &diagd_privs);
    diag_zclient_init(diagm.master);
    diag_port_init();

    tq_alarm_log_init();
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

    frr_config_fork();
    frr_run(diagm.master);
    return 0;
}
