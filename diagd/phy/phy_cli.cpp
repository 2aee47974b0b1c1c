// SPDX-License-Identifier: GPL-2.0-or-later
// PHY register commands.
#include "install.hpp"

#include <array>

namespace {
constexpr std::array<diagd::InstallRow, 0> commands{};
}

int phy_cmd_init()
{
    diagd::install_table(commands);
    return 0;
}
