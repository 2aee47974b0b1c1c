// SPDX-License-Identifier: GPL-2.0-or-later
// Arguments of a command by the name that its grammar gives them.
#pragma once

#include "diagd/core/frr.hpp"

#include <cstdlib>
#include <optional>

namespace diagd {

// What was typed for the argument `name` ("REG_HEX"); NULL when the command was given without it.
[[nodiscard]] inline const char *find_word(int argc, struct cmd_token *argv[], const char *name) noexcept
{
    int index = 0;
    return argv_find(argv, argc, name, &index) != 0 ? argv[index]->arg : nullptr;
}

// The same as a hexadecimal number, with or without 0x; empty without it.  As with strtoul, what is no number
// is 0 and what is too large is ULONG_MAX.
[[nodiscard]] inline std::optional<unsigned long> find_hex(int argc, struct cmd_token *argv[],
                                                           const char *name) noexcept
{
    const char *const word = find_word(argc, argv, name);
    return word != nullptr ? std::optional{std::strtoul(word, nullptr, 16)} : std::nullopt;
}

// The same as a decimal number, which may be negative; what is too large is LONG_MAX.
[[nodiscard]] inline std::optional<long> find_decimal(int argc, struct cmd_token *argv[],
                                                      const char *name) noexcept
{
    const char *const word = find_word(argc, argv, name);
    return word != nullptr ? std::optional{std::strtol(word, nullptr, 10)} : std::nullopt;
}

} // namespace diagd
