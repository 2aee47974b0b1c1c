// SPDX-License-Identifier: GPL-2.0-or-later
// The system information commands, for the install order.
#pragma once

#include "diagd/core/frr.hpp"

extern const struct cmd_element show_top_cmd;
extern const struct cmd_element show_task_cmd;
extern const struct cmd_element show_sys_ps_cmd;
extern const struct cmd_element show_sys_arp_cmd;
extern const struct cmd_element show_ipv6_neigh_table_cmd;
extern const struct cmd_element show_sys_cpu_cmd;
extern const struct cmd_element show_sys_cpu_usage_cmd;
extern const struct cmd_element show_sys_mem_cmd;
extern const struct cmd_element show_sys_ipcs_cmd;
extern const struct cmd_element show_sys_netstat_cmd;
extern const struct cmd_element show_sys_iptables_cmd;
extern const struct cmd_element show_sys_ip6tables_cmd;
extern const struct cmd_element config_time_cmd;
extern const struct cmd_element show_time_cmd;
extern const struct cmd_element show_sys_running_time_cmd;
