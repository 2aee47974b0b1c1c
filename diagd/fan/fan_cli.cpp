// SPDX-License-Identifier: GPL-2.0-or-later
// Fan commands, and the start of what watches the board's temperature.
// Failure policy: without its sensor the board's temperature reads as 0.
#include "board_sensor.hpp"
#include "install.hpp"
#include "privileges.hpp"

#include <array>

namespace {
constexpr std::array<diagd::InstallRow, 0> commands{};
}

int fan_init()
{
    diagd::install_table(commands);
    const diagd::Privileges raised{"fan_monitor_init"};
    diagd::open_board_sensor();
    return 0;
}
