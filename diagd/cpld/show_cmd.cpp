// SPDX-License-Identifier: GPL-2.0-or-later
// Displays of the CPLD's registers, identification and power state, and the library's debug switch.
// Failure policy: a CPLD that cannot be opened makes the command a warning, without a word; one that does not
// answer a read of a register shows 0.
#include "diagd/cpld/cpld_cmd.hpp"

#include "diagd/board/registers.hpp"
#include "diagd/board/session.hpp"
#include "diagd/core/command.hpp"
#include "diagd/core/text.hpp"

#include <cstring>

using diagd::BoardSession;
using diagd::CpldRegister;
using diagd::line_end;
using diagd::SessionPolicy;

namespace {

constexpr unsigned supply_1 = 1U << 0;
constexpr unsigned supply_2 = 1U << 1;

// `name` is what stands before the value.
int show_register(struct vty *vty, const char *reason, CpldRegister reg, const char *name) noexcept
{
    const BoardSession board{reason, SessionPolicy::release_then_lower};
    if (!board)
        return CMD_WARNING;
    vty_out(vty, "%s: 0x%x%s", name, diagd::read_register(board.handle(), reg), line_end);
    return CMD_SUCCESS;
}

// A byte that the library reads by a call of its own; `name` stands before the value, `failure` in its place.
int show_identity(struct vty *vty, const char *reason, int (*get)(int, std::uint8_t *), const char *name,
                  const char *failure) noexcept
{
    const BoardSession board{reason, SessionPolicy::release_then_lower};
    if (!board)
        return CMD_WARNING;
    std::uint8_t value = 0;
    if (get(board.handle(), &value) == 0)
        vty_out(vty, "%s: 0x%x%s", name, value, line_end);
    else
        vty_out(vty, "%s%s", failure, line_end);
    return CMD_SUCCESS;
}

void show_power_text(struct vty *vty, unsigned state) noexcept
{
    vty_out(vty, " System power status(0x%02x): %s", state, line_end);
    vty_out(vty, " Power1 :  %s%s", (state & supply_1) != 0 ? "on" : "off", line_end);
    vty_out(vty, " Power2 :  %s%s", (state & supply_2) != 0 ? "on" : "off", line_end);
}

void show_power_json(struct vty *vty, unsigned state) noexcept
{
    const diagd::Json json = diagd::json_new_object();
    json_object_boolean_add(json.get(), "power1", (state & supply_1) != 0);
    json_object_boolean_add(json.get(), "power2", (state & supply_2) != 0);
    diagd::json_print(vty, json);
}

} // namespace

DEFUN(show_pon_led, show_pon_led_cmd, "show pon led",
      "Show running system information\n"
      "pon config.\n"
      "pon led.\n")
{
    return show_register(vty, "show_pon_led", CpldRegister::pon_led, "PON LED Status");
}

DEFUN(show_pon_power, show_pon_power_cmd, "show pon power",
      "Show running system information\n"
      "pon config.\n"
      "pon power.\n")
{
    return show_register(vty, "show_pon_power", CpldRegister::pon_power, "PON Power Status");
}

DEFUN(show_pon_tx, show_pon_tx_cmd, "show pon tx",
      "Show running system information\n"
      "pon config.\n"
      "pon tx.\n")
{
    return show_register(vty, "show_pon_tx", CpldRegister::pon_transmitter, "PON TX Status");
}

DEFUN(show_sfp_power, show_sfp_power_cmd, "show sfp power",
      "Show running system information\n"
      "sfp config.\n"
      "sfp power.\n")
{
    return show_register(vty, "show_sfp_power", CpldRegister::sfp_power, "SFP Power Status");
}

DEFUN(show_logic_version, show_logic_version_cmd, "show logic version",
      "Show running system information\n"
      "system logic information.\n"
      "system logic version information.\n")
{
    return show_identity(vty, "show_logic_version", misc_cpld_i2c_logic_version_get, "Current Logic Version",
                         "not get logic version");
}

DEFUN(show_device_type, show_device_type_cmd, "show device type",
      "Show running system information\n"
      "system device information.\n"
      "system device type information.\n")
{
    return show_identity(vty, "show_device_type", misc_cpld_i2c_device_type_get, "Current device is",
                         "not get device type");
}

DEFUN(show_system_power, show_system_power_cmd, "show sys power [json]",
      "show information.\n"
      "system information.\n"
      "system power status.\n"
      "JavaScript Object Notation\n")
{
    const BoardSession board{"show_system_power", SessionPolicy::release_then_lower};
    if (!board)
        return CMD_WARNING;
    std::uint8_t state = 0;
    const bool known = misc_cpld_i2c_power_state_get(board.handle(), &state) == 0;
    if (argc > 3)
        show_power_json(vty, known ? state : 0U);
    else if (known)
        show_power_text(vty, state);
    else
        vty_out(vty, "not get power state%s", line_end);
    return CMD_SUCCESS;
}

DEFUN(debug_cpld, debug_cpld_cmd, "[no] debug cpld",
      "Negate a command or set its defaults\n"
      "Debugging functions\n"
      "CPLD DEBUG\n")
{
    misc_cpld_debug_set(std::strcmp(argv[0]->text, "no") == 0 ? 0 : 1);
    return CMD_SUCCESS;
}
