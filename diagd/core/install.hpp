// SPDX-License-Identifier: GPL-2.0-or-later
// Installing commands: each unit has one constant table, and a command is one row of it.
#pragma once

#include "diagd/core/frr.hpp"

#include <span>

namespace diagd {

struct InstallRow {
    enum node_type node;
    const struct cmd_element *command;
};

// In the order of the table: where two commands share words, libfrr shows the help of the first.
inline void install_table(std::span<const InstallRow> table) noexcept
{
    for (const InstallRow &row : table)
        _install_element(row.node, row.command);
}

} // namespace diagd
