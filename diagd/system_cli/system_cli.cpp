// SPDX-License-Identifier: GPL-2.0-or-later
// Commands that show the system: what its tools say, its load, its tasks.
// Failure policy: a tool that is missing or fails speaks for itself; what cannot be sampled is shown as 0%;
// the list of tasks ends at the first folder or command line that cannot be opened, with a line that says so.
#include "base/owner.hpp"
#include "diagd/core/command.hpp"
#include "diagd/core/text.hpp"
#include "diagd/system_cli/clock_cli.hpp"
#include "diagd/system_cli/task_list.hpp"
#include "diagd/system_cli/usage_parser.hpp"
#include "diagd/system_cli/usage_samplers.hpp"

#include "tq_api.h"

#include <cstdio>
#include <string>

using diagd::config_node;
using diagd::line_end;

// --- tools

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

// --- load

static void print_json(struct vty *vty, const char *key, int percent)
{
    const diagd::Json json = diagd::json_new_object();
    json_object_string_add(json.get(), key, (std::to_string(percent) + "%").c_str());
    diagd::json_print(vty, json);
}

DEFUN(show_sys_cpu_usage, show_sys_cpu_usage_cmd, "show sys cpu-usage [json]",
      "Show running system information\n"
      "Show sys\n"
      "Show cpu performance statistics.\n"
      "JavaScript Object Notation\n")
{
    float usage = 0.0F;
    get_cpu_usage(vty, &usage);
    const int percent = diagd::whole_percent(usage);
    if (use_json(argc, argv)) {
        print_json(vty, "cpuUsage", percent);
        return CMD_SUCCESS;
    }
    system_cmd(vty, "mpstat -P ALL 3 1");
    vty_out(vty, "%sCurrent CPU Usage:     %d%%%s", line_end, percent, line_end);
    return CMD_SUCCESS;
}

DEFUN(show_sys_mem, show_sys_mem_cmd, "show sys mem [json]",
      "Show running system information\n"
      "Show sys\n"
      "Show system memory information.\n"
      "JavaScript Object Notation\n")
{
    float usage = 0.0F;
    system_memory_usage_get(&usage);
    const int percent = diagd::whole_percent(usage);
    if (use_json(argc, argv)) {
        print_json(vty, "memoryUsage", percent);
        return CMD_SUCCESS;
    }
    vty_out(vty, "%sCurrent Memory Usage:   %d%%%s%s", line_end, percent, line_end, line_end);
    system_cmd(vty, "cat /proc/meminfo");
    return CMD_SUCCESS;
}

// --- tasks: every thread, its process first

DEFUN(show_task, show_task_cmd, "show task [running]",
      "Show running system information\n"
      "show system task\n"
      "running system taskk\n")
{
    const bool only_running = argc == 3;
    const base::Folder proc{opendir("/proc")};
    if (!proc) {
        std::perror("opendir fail");
        return CMD_SUCCESS;
    }
    vty_out(vty, "%-8s %-38s %-8s %-40s %s%s", "PPID", "CMD", "PID", "NAME", "Status", line_end);
    const std::string failed = diagd::for_each_task(proc.get(), [=](const diagd::Task &task) {
        if (only_running && task.status.state.find("running") == std::string::npos)
            return;
        vty_out(vty, "%-8d %-38s %-8u %-40s %s%s", static_cast<int>(task.process), task.command.c_str(),
                task.thread, task.status.name.c_str(), task.status.state.c_str(), line_end);
    });
    if (!failed.empty())
        vty_out(vty, "%s%s", failed.c_str(), line_end);
    return CMD_SUCCESS;
}

// --- install order

static constexpr diagd::InstallRow commands[] = {
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
};

int system_cmd_init()
{
    diagd::install_table(commands);
    diagd::clock_cmd_init();
    return 0;
}
