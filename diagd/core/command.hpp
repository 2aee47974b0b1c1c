// SPDX-License-Identifier: GPL-2.0-or-later
// What a file of commands needs besides libfrr: the nodes that commands go into, the table that installs
// them, their arguments by name, and JSON as every command prints it.
#pragma once

#include "base/json.hpp"
#include "base/printable.hpp"
#include "diagd/core/frr.hpp"
#include "diagd/core/text.hpp"

#include <cstdlib>
#include <optional>
#include <span>

namespace diagd {

// Command nodes.  The numbers are shared with the box's vty shell; the diagnostics node belongs to the
// platform's libfrr, which installs it, the daemon only installs commands into it.
inline constexpr auto config_node = CONFIG_NODE;
inline constexpr auto fan_node = static_cast<enum node_type>(97);
inline constexpr auto gpon_node = static_cast<enum node_type>(124);
inline constexpr auto xgpon_node = static_cast<enum node_type>(125);
inline constexpr auto diagnose_node = static_cast<enum node_type>(133);
inline constexpr auto alarm_log_node = static_cast<enum node_type>(155);
static_assert(config_node == 4);

// A command is one row of its unit's constant table.
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

using base::Json;

[[nodiscard]] inline Json json_new_object() noexcept
{
    return Json{json_object_new_object()};
}
[[nodiscard]] inline Json json_new_array() noexcept
{
    return Json{json_object_new_array()};
}

// One document in json-c's pretty layout, then the line end.  Texts from outside may be in it.
inline void json_print(struct vty *vty, const Json &json) noexcept
{
    const char *const document = json_object_to_json_string_ext(json.get(), JSON_C_TO_STRING_PRETTY);
    vty_out(vty, "%s%s", base::printable_json(document).c_str(), line_end);
}

// libfrr sends what a command prints only when the command is done and the event loop runs again; a command
// that blocks, or ends with the board going down, says its last words through this.
inline void flush_vty(struct vty *vty) noexcept
{
    if (vty->wfd >= 0)
        buffer_flush_available(vty->obuf, vty->wfd);
}

} // namespace diagd
