// SPDX-License-Identifier: GPL-2.0-or-later
// "show task": every thread, its process first.
#include "diagd/system_cli/system_commands.hpp"

#include "diagd/core/text.hpp"
#include "diagd/system_cli/task_list.hpp"

#include <cstdio>

using diagd::line_end;

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
