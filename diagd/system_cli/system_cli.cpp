// SPDX-License-Identifier: GPL-2.0-or-later
// Install order of the system information commands.
#include "install.hpp"
#include "system_commands.hpp"

#include "nodes.hpp"

using diagd::config_node;

namespace {

constexpr diagd::InstallRow commands[] = {
    {config_node, &show_sys_cpu_usage_cmd},
    {config_node, &show_sys_mem_cmd},
};

} // namespace

int system_cmd_init()
{
    diagd::install_table(commands);
    return 0;
}
