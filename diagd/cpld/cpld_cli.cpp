// SPDX-License-Identifier: GPL-2.0-or-later
// Board controls: the install order of their commands, reboot by command, and what is switched on at the
// start. Failure policy: what cannot be switched on at the start stays as it is; the daemon runs on.
#include "diagd/cpld/cpld_cmd.hpp"

#include "diagd/board/session.hpp"
#include "diagd/core/alarm_record.hpp"
#include "diagd/core/command.hpp"
#include "diagd/core/text.hpp"
#include "diagd/cpld/port_switch.hpp"
#include "diagd/monitors/reset_button/system_reset.hpp"
#include "diagd/transceiver/optical_cmd.hpp"

#include <cstdio>

using diagd::config_node;
using diagd::diagnose_node;
using diagd::gpon_node;
using diagd::xgpon_node;

// The peers are not told of a reboot, and the board itself is reset by what ends the daemons.
DEFUN(reboot_device, reboot_device_cmd, "reboot", "reboot device\n")
{
    diagd::file_alarm(TQ_ALARM_RESET, diagd::AlarmState::event, "reset by command");
    system_backup();
    system_reboot();
    vty_out(vty, "Restarting system...%s", diagd::line_end);
    std::puts("Resetting ...\r");
    return CMD_SUCCESS;
}

// For scripts: no record, and not a word.
DEFUN_HIDDEN(reboot_system, reboot_system_cmd, "reload", "reboot device\n")
{
    system_backup();
    system_reboot();
    return CMD_SUCCESS;
}

namespace {

constexpr diagd::InstallRow commands[] = {
    {config_node, &reboot_device_cmd},
    {config_node, &reboot_system_cmd},
    {diagnose_node, &system_led_cmd},
    {diagnose_node, &usb_led_cmd},
    {diagnose_node, &pon_led_cmd},
    {diagnose_node, &pon_power_config_cmd},
    {diagnose_node, &pon_tx_config_cmd},
    {diagnose_node, &sfp_power_config_cmd},
    {diagnose_node, &show_pon_led_cmd},
    {diagnose_node, &show_pon_power_cmd},
    {diagnose_node, &show_pon_tx_cmd},
    {diagnose_node, &show_sfp_power_cmd},
    {diagnose_node, &show_port_laser_cmd},
    {diagnose_node, &show_xgpon_laser_cmd},
    {config_node, &show_transceiver_optical_cmd},
    {config_node, &show_xgpon_transceiver_optical_cmd},
    {gpon_node, &show_pon_transceiver_optical_cmd},
    {xgpon_node, &show_pon_transceiver_optical_cmd},
    {diagnose_node, &fan_mode_cmd},
    {diagnose_node, &fan_speed_cmd},
    {diagnose_node, &show_logic_version_cmd},
    {diagnose_node, &show_device_type_cmd},
    {config_node, &show_system_power_cmd},
    {diagnose_node, &show_system_power_cmd},
    {diagnose_node, &cpld_upgrade_tftp_cmd},
    {diagnose_node, &cpld_upgrade_ftp_cmd},
    {diagnose_node, &cpld_upgrade_by_usb_cmd},
    {diagnose_node, &cpld_restore_cmd},
    {diagnose_node, &cpld_erase_cmd},
    {diagnose_node, &debug_cpld_cmd},
};

// Without the board's semaphore: nothing else writes this register while the daemon starts.  And a board that
// does not take register commands yet has its cages supplied, too.
void switch_sfp_power_on() noexcept
{
    const diagd::BoardSession board{"cpld_init", diagd::SessionPolicy::lock_free};
    if (board)
        diagd::switch_every_port(board.handle(), diagd::CpldRegister::sfp_power, diagd::PortGroup::sfp,
                                 diagd::RecordTest::in_service, true);
}

} // namespace

int cpld_init()
{
    diagd::install_table(commands);
    diagd::switch_system_led_on();
    switch_sfp_power_on();
    return 0;
}
