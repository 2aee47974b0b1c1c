// SPDX-License-Identifier: GPL-2.0-or-later
// Arguments of a command by the name that its grammar gives them.
#pragma once

#include "frr.hpp"

#include <cstdlib>
#include <optional>

namespace diagd {

// The number typed for the argument `name` ("REG_HEX"), in base 16 (with or without 0x) or 10; empty when the
// command was given without it.  As with strtoul, what is no number is 0 and what is too large is ULONG_MAX.
[[nodiscard]] inline std::optional<unsigned long> find_number(int argc, struct cmd_token *argv[],
                                                              const char *name, int base) noexcept
{
    int index = 0;
    if (argv_find(argv, argc, name, &index) == 0)
        return std::nullopt;
    return std::strtoul(argv[index]->arg, nullptr, base);
}

} // namespace diagd
