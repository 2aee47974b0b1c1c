// SPDX-License-Identifier: GPL-2.0-or-later
// Install order of the system information commands.
#include "diagd/core/command.hpp"
#include "diagd/system_cli/system_commands.hpp"

using diagd::config_node;

namespace {

constexpr diagd::InstallRow commands[] = {
    {config_node, &show_top_cmd},
    {config_node, &show_task_cmd},
    {config_node, &show_sys_ps_cmd},
    {config_node, &show_sys_arp_cmd},
    {config_node, &show_ipv6_neigh_table_cmd},
    {config_node, &show_sys_cpu_cmd},
    {config_node, &show_sys_cpu_usage_cmd},
    {config_node, &show_sys_mem_cmd},
    {config_node, &show_sys_ipcs_cmd},
    {config_node, &show_sys_netstat_cmd},
    {config_node, &show_sys_iptables_cmd},
    {config_node, &show_sys_ip6tables_cmd},
    {config_node, &config_time_cmd},
    {config_node, &show_time_cmd},
    {config_node, &show_sys_running_time_cmd},
};

} // namespace

int system_cmd_init()
{
    diagd::install_table(commands);
    return 0;
}
