// SPDX-License-Identifier: GPL-2.0-or-later
// Commands that show processor and memory usage.  What cannot be sampled is shown as 0%.
#include "diagd/system_cli/system_commands.hpp"

#include "diagd/core/command.hpp"
#include "diagd/core/text.hpp"
#include "diagd/system_cli/export/usage_samplers.hpp"
#include "diagd/system_cli/usage_parser.hpp"

#include "tq_api.h"

#include <string>

using diagd::line_end;

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
