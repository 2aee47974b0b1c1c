// SPDX-License-Identifier: GPL-2.0-or-later
// The daemon's command frame: its nodes, and the install order of the alarm-log and basic commands.
#include "diagd/alarm_log/export/alarm_log_commands.hpp"
#include "diagd/core/command.hpp"
#include "diagd/diag_cli/basic_cmd.hpp"

using diagd::config_node;
using diagd::diagnose_node;
using diagd::gpon_node;
using diagd::xgpon_node;

namespace {

// Never entered: it exists to write its part of the running configuration.
struct cmd_node alarm_log_cmd_node = {
    .name = "alarm-log",
    .node = diagd::alarm_log_node,
    .prompt = "",
    .config_write = diagd::alarm_log_config_write,
};

// The trailing arguments of the prompts are the session's slot and port.
struct cmd_node gpon_cmd_node = {
    .name = "gpon",
    .node = diagd::gpon_node,
    .parent_node = CONFIG_NODE,
    .prompt = "%s(config-gpon-%d/%d)# ",
    .config_write = diagd::gpon_config_write,
};

struct cmd_node xgpon_cmd_node = {
    .name = "xgpon",
    .node = diagd::xgpon_node,
    .parent_node = CONFIG_NODE,
    .prompt = "%s(config-xgpon-%d/%d)# ",
    .config_write = diagd::xgpon_config_write,
};

constexpr diagd::InstallRow commands[] = {
    // Interfaces
    {config_node, &gpon_config_interface_cmd},
    {config_node, &xgpon_config_interface_cmd},

    // Alarm log: record view
    {config_node, &show_alarm_log_cmd},
    {config_node, &show_alarm_log_head_cmd},
    {config_node, &show_alarm_log_tail_cmd},
    {config_node, &clear_alarm_log_cmd},
    {config_node, &clear_syslog_cmd},

    // Alarm log: remote servers and flash
    {config_node, &enable_alarm_log_server_cmd},
    {config_node, &config_alarm_log_server_ipv4_cmd},
    {config_node, &config_syslog_server_ipv4_cmd},
    {config_node, &delete_alarm_log_server_ipv4_cmd},
    {config_node, &delete_syslog_server_ipv4_cmd},
    {config_node, &config_alarm_log_server_ipv6_cmd},
    {config_node, &config_syslog_server_ipv6_cmd},
    {config_node, &delete_alarm_log_server_ipv6_cmd},
    {config_node, &delete_syslog_server_ipv6_cmd},
    {config_node, &show_alarm_log_server_cmd},
    {config_node, &config_alarm_log_flash_cmd},
    {config_node, &config_syslog_flash_cmd},
    {config_node, &show_alarm_log_flash_cmd},
    {config_node, &save_alarm_log_flash_cmd},
    {config_node, &clear_alarm_log_flash_cmd},

    // Alarm log: configuration of the alarms
    {config_node, &show_alarm_log_cfg_cmd},
    {config_node, &show_alarm_log_cfg_name_cmd},
    {config_node, &show_alarm_log_cfg_id_cmd},
    {config_node, &alarm_log_global_alarm_action_cmd},
    {config_node, &alarm_global_alarm_action_cmd},
    {config_node, &alarm_log_global_alarm_level_cmd},
    {config_node, &alarm_log_global_event_action_cmd},
    {config_node, &alarm_global_event_action_cmd},
    {config_node, &alarm_log_global_event_level_cmd},
    {config_node, &alarm_log_pon_alarm_action_cmd},
    {config_node, &alarm_pon_alarm_action_cmd},
    {config_node, &alarm_log_pon_alarm_level_cmd},
    {config_node, &alarm_log_pon_event_action_cmd},
    {config_node, &alarm_pon_event_action_cmd},
    {config_node, &alarm_log_pon_event_level_cmd},
    {config_node, &alarm_log_onu_alarm_action_cmd},
    {config_node, &alarm_onu_alarm_action_cmd},
    {config_node, &alarm_log_onu_alarm_level_cmd},
    {config_node, &alarm_log_onu_event_action_cmd},
    {config_node, &alarm_onu_event_action_cmd},
    {config_node, &alarm_log_onu_event_level_cmd},
    {config_node, &alarm_log_routing_alarm_action_cmd},
    {config_node, &alarm_routing_alarm_action_cmd},
    {config_node, &alarm_log_routing_alarm_level_cmd},
    {config_node, &alarm_log_routing_event_action_cmd},
    {config_node, &alarm_routing_event_action_cmd},
    {config_node, &alarm_log_routing_event_level_cmd},
    {config_node, &alarm_log_all_action_cmd},
    {config_node, &alarm_all_action_cmd},
    {config_node, &alarm_name_action_cmd},
    {config_node, &alarm_event_all_action_cmd},
    {config_node, &alarm_event_default_action_cmd},

    // Alarm log: board thresholds and running configuration
    {config_node, &alarm_log_global_threshold_set_cmd},
    {config_node, &alarm_log_global_threshold_unset_cmd},
    {config_node, &alarm_global_threshold_set_cmd},
    {config_node, &alarm_global_threshold_unset_cmd},
    {config_node, &show_alarm_log_running_config_cmd},

    // Alarm log: test records
    {config_node, &alarm_log_debug_cmd},

    // Thresholds of a PON interface, each command into both interface nodes
    {gpon_node, &alarm_log_pon_threshold_enable_cmd},
    {xgpon_node, &alarm_log_pon_threshold_enable_cmd},
    {gpon_node, &alarm_log_pon_threshold_disable_cmd},
    {xgpon_node, &alarm_log_pon_threshold_disable_cmd},
    {gpon_node, &cli_pon_alarm_disable_cmd},
    {xgpon_node, &cli_pon_alarm_disable_cmd},
    {gpon_node, &cli_pon_alarm_enable_cmd},
    {xgpon_node, &cli_pon_alarm_enable_cmd},
    {gpon_node, &alarm_log_no_pon_threshold_enable_cmd},
    {xgpon_node, &alarm_log_no_pon_threshold_enable_cmd},
    {gpon_node, &alarm_log_pon_threshold_show_cmd},
    {xgpon_node, &alarm_log_pon_threshold_show_cmd},

    // Board
    {diagnose_node, &show_debugging_cmd},
    {diagnose_node, &pon_reset_cmd},
    {diagnose_node, &gpio_system_reset_cmd},
    {config_node, &show_version_cmd},

    // Monitor switches
    {diagnose_node, &fan_monitor_set_cmd},
    {diagnose_node, &usb_monitor_set_cmd},
    {diagnose_node, &power_monitor_set_cmd},
    {diagnose_node, &transceiver_monitor_set_cmd},
    {diagnose_node, &show_diag_monitor_cmd},
};

} // namespace

int diag_cmd_init()
{
    install_node(&alarm_log_cmd_node);
    install_node(&gpon_cmd_node);
    install_node(&xgpon_cmd_node);
    diagd::install_table(commands);
    return 0;
}
