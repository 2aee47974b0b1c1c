// SPDX-License-Identifier: GPL-2.0-or-later
// Commands that show what a tool of the system says, and nothing else: a tool that is missing or fails speaks
// for itself.
#include "diagd/system_cli/system_commands.hpp"

#include "tq_api.h"

DEFUN(show_top, show_top_cmd, "show top",
      "Show running system information\n"
      "show system task\n")
{
    system_cmd(vty, "top -n1");
    return CMD_SUCCESS;
}

DEFUN(show_sys_ps, show_sys_ps_cmd, "show sys ps",
      "Show running system information\n"
      "Show sys\n"
      "Show system process and pthread information.\n")
{
    system_cmd(vty, "ps");
    return CMD_SUCCESS;
}

DEFUN(show_sys_arp, show_sys_arp_cmd, "show sys arp",
      "Show running system information\n"
      "Show sys\n"
      "Show system arp information.\n")
{
    system_cmd(vty, "cat /proc/net/arp");
    return CMD_SUCCESS;
}

DEFUN(show_ipv6_neigh_table, show_ipv6_neigh_table_cmd, "show ipv6 neighbors",
      "Show running system information\n"
      "IPv6 information\n"
      "Show IPv6 neighbor cache entries.\n")
{
    system_cmd(vty, "ip -6 neigh show");
    return CMD_SUCCESS;
}

DEFUN(show_sys_cpu, show_sys_cpu_cmd, "show sys cpu",
      "Show running system information\n"
      "Show sys\n"
      "Show system cpu information.\n")
{
    system_cmd(vty, "cat /proc/cpuinfo");
    return CMD_SUCCESS;
}

DEFUN(show_sys_ipcs, show_sys_ipcs_cmd, "show ipcs",
      "Show running system information\n"
      "Show information on IPC facilities.\n")
{
    system_cmd(vty, "ipcs");
    return CMD_SUCCESS;
}

DEFUN(show_sys_netstat, show_sys_netstat_cmd, "show netstat",
      "Show running system information\n"
      "Show all sockets information.\n")
{
    system_cmd(vty, "netstat -nal");
    return CMD_SUCCESS;
}

DEFUN(show_sys_iptables, show_sys_iptables_cmd, "show iptables",
      "Show running system information\n"
      "Show iptable rules information.\n")
{
    system_cmd(vty, "iptables -L -n");
    return CMD_SUCCESS;
}

DEFUN(show_sys_ip6tables, show_sys_ip6tables_cmd, "show ip6tables",
      "Show running system information\n"
      "Show ip6table rules information.\n")
{
    system_cmd(vty, "ip6tables -L -n");
    return CMD_SUCCESS;
}
