// SPDX-License-Identifier: GPL-2.0-or-later
// The alarm-log commands and writers, for the install order.
#pragma once

#include "diagd/core/frr.hpp"

extern const struct cmd_element show_alarm_log_cmd;
extern const struct cmd_element show_alarm_log_head_cmd;
extern const struct cmd_element show_alarm_log_tail_cmd;
extern const struct cmd_element clear_alarm_log_cmd;
extern const struct cmd_element clear_syslog_cmd;

extern const struct cmd_element enable_alarm_log_server_cmd;
extern const struct cmd_element config_alarm_log_server_ipv4_cmd;
extern const struct cmd_element config_syslog_server_ipv4_cmd;
extern const struct cmd_element delete_alarm_log_server_ipv4_cmd;
extern const struct cmd_element delete_syslog_server_ipv4_cmd;
extern const struct cmd_element config_alarm_log_server_ipv6_cmd;
extern const struct cmd_element config_syslog_server_ipv6_cmd;
extern const struct cmd_element delete_alarm_log_server_ipv6_cmd;
extern const struct cmd_element delete_syslog_server_ipv6_cmd;
extern const struct cmd_element show_alarm_log_server_cmd;
extern const struct cmd_element config_alarm_log_flash_cmd;
extern const struct cmd_element config_syslog_flash_cmd;
extern const struct cmd_element show_alarm_log_flash_cmd;
extern const struct cmd_element save_alarm_log_flash_cmd;
extern const struct cmd_element clear_alarm_log_flash_cmd;

extern const struct cmd_element show_alarm_log_cfg_cmd;
extern const struct cmd_element show_alarm_log_cfg_name_cmd;
extern const struct cmd_element show_alarm_log_cfg_id_cmd;

extern const struct cmd_element alarm_log_global_alarm_action_cmd;
extern const struct cmd_element alarm_global_alarm_action_cmd;
extern const struct cmd_element alarm_log_global_alarm_level_cmd;
extern const struct cmd_element alarm_log_global_event_action_cmd;
extern const struct cmd_element alarm_global_event_action_cmd;
extern const struct cmd_element alarm_log_global_event_level_cmd;

extern const struct cmd_element alarm_log_pon_alarm_action_cmd;
extern const struct cmd_element alarm_pon_alarm_action_cmd;
extern const struct cmd_element alarm_log_pon_alarm_level_cmd;
extern const struct cmd_element alarm_log_pon_event_action_cmd;
extern const struct cmd_element alarm_pon_event_action_cmd;
extern const struct cmd_element alarm_log_pon_event_level_cmd;

extern const struct cmd_element alarm_log_onu_alarm_action_cmd;
extern const struct cmd_element alarm_onu_alarm_action_cmd;
extern const struct cmd_element alarm_log_onu_alarm_level_cmd;
extern const struct cmd_element alarm_log_onu_event_action_cmd;
extern const struct cmd_element alarm_onu_event_action_cmd;
extern const struct cmd_element alarm_log_onu_event_level_cmd;

extern const struct cmd_element alarm_log_routing_alarm_action_cmd;
extern const struct cmd_element alarm_routing_alarm_action_cmd;
extern const struct cmd_element alarm_log_routing_alarm_level_cmd;
extern const struct cmd_element alarm_log_routing_event_action_cmd;
extern const struct cmd_element alarm_routing_event_action_cmd;
extern const struct cmd_element alarm_log_routing_event_level_cmd;

extern const struct cmd_element alarm_log_all_action_cmd;
extern const struct cmd_element alarm_all_action_cmd;
extern const struct cmd_element alarm_name_action_cmd;
extern const struct cmd_element alarm_event_all_action_cmd;
extern const struct cmd_element alarm_event_default_action_cmd;

extern const struct cmd_element alarm_log_global_threshold_set_cmd;
extern const struct cmd_element alarm_log_global_threshold_unset_cmd;
extern const struct cmd_element alarm_global_threshold_set_cmd;
extern const struct cmd_element alarm_global_threshold_unset_cmd;
extern const struct cmd_element show_alarm_log_running_config_cmd;

extern const struct cmd_element alarm_log_debug_cmd;

extern const struct cmd_element alarm_log_pon_threshold_enable_cmd;
extern const struct cmd_element alarm_log_pon_threshold_disable_cmd;
extern const struct cmd_element cli_pon_alarm_disable_cmd;
extern const struct cmd_element cli_pon_alarm_enable_cmd;
extern const struct cmd_element alarm_log_no_pon_threshold_enable_cmd;
extern const struct cmd_element alarm_log_pon_threshold_show_cmd;

namespace diagd {

// Writers of the running configuration, for the nodes: the alarm log's settings, and the optical thresholds
// of each PON port.
int alarm_log_config_write(struct vty *vty) noexcept;
int gpon_config_write(struct vty *vty) noexcept;
int xgpon_config_write(struct vty *vty) noexcept;

} // namespace diagd
